#include "db/DBTools.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace {

// Where a virtual member stands in the table of its class: the Itanium ABI stores 1 plus the offset in the pointer.
template <typename Member>
int SlotOf(Member member) {
    std::uintptr_t word = 0;
    std::memcpy(&word, &member, sizeof(word));
    return (word & 1) != 0 ? static_cast<int>((word - 1) / sizeof(void*)) : -1;
}

template <typename Tools>
std::vector<int> Slots() {
    return {
        SlotOf(&Tools::InsertGallery),        SlotOf(&Tools::LoadFilterFiles),
        SlotOf(&Tools::LoadTransitions),      SlotOf(&Tools::GetGalleryIdByFolder),
        SlotOf(&Tools::QueryFolder),          SlotOf(&Tools::QueryChildFolders),
        SlotOf(&Tools::QueryFolderItems),     SlotOf(&Tools::QueryItem),
        SlotOf(&Tools::QueryItemTags),        SlotOf(&Tools::QueryItemByName),
        SlotOf(&Tools::QueryCacheData),       SlotOf(&Tools::QueryCacheDataByType),
        SlotOf(&Tools::DeleteCacheData),      SlotOf(&Tools::DeleteAllCacheData),
        SlotOf(&Tools::DeleteItemRow),        SlotOf(&Tools::DeleteRelation),
        SlotOf(&Tools::DeleteFolderRow),      SlotOf(&Tools::ExportDatabase),
        SlotOf(&Tools::ClearDatabase),        SlotOf(&Tools::IsItemAutoLoaded),
        SlotOf(&Tools::InsertAutoLoadedItem), SlotOf(&Tools::IsFileAutoLoaded),
        SlotOf(&Tools::InsertAutoLoadedFile),
    };
}

// The destructor comes first and takes two entries; then every operation follows the one before.
std::vector<int> Consecutive() {
    std::vector<int> slots;
    for (int slot = 2; slot < 25; ++slot) slots.push_back(slot);
    return slots;
}

TEST(DBToolsSlots, InternalOperationsStandInTheirOrder) { EXPECT_EQ(Slots<DBToolsInternal>(), Consecutive()); }

TEST(DBToolsSlots, GuardedOperationsTakeTheSlotsOfThoseTheyGuard) { EXPECT_EQ(Slots<DBTools>(), Consecutive()); }

TEST(DBToolsSlots, InsertOrUpdateFolderIsTheLastAndOnDBToolsOnly) {
    EXPECT_EQ(SlotOf(&DBTools::InsertOrUpdateFolder), 25);
}

}  // namespace
