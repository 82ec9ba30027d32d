#include "folders/HeldGuids.h"
#include "service/operations/AddItem_Filter.h"
#include "service/operations/AddItem_Transition.h"
#include "service/operations/UpdateFilterOptionAsync.h"
#include "tests/service/EntriesEffectsTest.h"
#include "tests/support/GateOperation.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace qfc::test;
using qfc::ToHandle;

// --- Filters --------------------------------------------------------------------------------------------------------

TEST_F(EntriesEffects, AddFilter_StoresItemAndRecordAndTellsTheCallback) {
    CQItem* const pItem = NewItem("Glow", kFilterType);
    const GUID guid = pItem->GetUniqueID();
    EXPECT_EQ(AddFilterOf(MakeFilterFile("glow.so", {guid}), pItem, {"More", "Clips"}), 1);
    ASSERT_EQ(m_seen.size(), 1u);
    EXPECT_EQ(m_seen[0].guidItem, guid);
    EXPECT_EQ(m_seen[0].nFolderId, m_pMore->GetDBId());
    Restart();
    ASSERT_EQ(FilterFiles().size(), 1u);
    EXPECT_EQ(FilterFiles()[0].strFileName, "glow.so");
    ASSERT_EQ(FilterFiles()[0].filters.size(), 1u);
    EXPECT_EQ(FilterFiles()[0].filters[0].guidItem, guid);
    ASSERT_NE(m_pClips->GetItemByGUID(guid), nullptr);
    EXPECT_EQ(m_pClips->GetItemByGUID(guid)->GetItemType(), kFilterType);
}

TEST_F(EntriesEffects, AddFilter_ReturnsBeforeItIsDoneAndKeepsACopyOfTheRecord) {
    CQItem* const pItem = NewItem("Glow", kFilterType);
    {
        Gate gate;
        DS_Filter_File_Record file = MakeFilterFile("glow.so", {pItem->GetUniqueID()});
        EXPECT_EQ(Manager::fnAddItemAsync_Filter(file, 0, m_hMedia, {"Clips"}, pItem, 0), 1);
        file = MakeFilterFile("changed.so", {});
        EXPECT_EQ(CountRows("FLT_TABLE"), 0);
    }
    Settle();
    EXPECT_EQ(FilterFiles().at(0).strFileName, "glow.so");
}

TEST_F(EntriesEffects, AddFilter_ASingleEntryWithoutItemIsTheAddedOnes) {
    CQItem* const pItem = NewItem("Glow", kFilterType);
    const GUID guid = pItem->GetUniqueID();
    const DS_Filter_File_Record file = MakeFilterFile("glow.so", {kOther, GUID_NULL});
    EXPECT_EQ(AddFilterOf(file, pItem), 1);
    EXPECT_EQ(file.filters[1].guidItem, GUID_NULL);  // Its own copy was changed, not the caller's record.
    ASSERT_EQ(FilterFiles().at(0).filters.size(), 2u);
    EXPECT_EQ(FilterFiles()[0].filters[0].guidItem, kOther);
    EXPECT_EQ(FilterFiles()[0].filters[1].guidItem, guid);
}

TEST_F(EntriesEffects, AddFilter_TwoEntriesWithoutItemFailAndNothingIsAdded) {
    const std::unique_ptr<CQItem> item(NewItem("Glow", kFilterType));
    EXPECT_EQ(AddFilterOf(MakeFilterFile("glow.so", {GUID_NULL, GUID_NULL}), item.get()), 1);
    EXPECT_TRUE(m_seen.empty());
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 0);
    EXPECT_EQ(m_pClips->HasItem(item->GetUniqueID(), 0), 0);
}

TEST_F(EntriesEffects, AddFilter_WhoseRecordIsRefused_KeepsTheItemAndRaisesNoCallback) {
    RefuseWrites("FLT_TABLE");
    CQItem* const pItem = NewItem("Glow", kFilterType);
    EXPECT_EQ(AddFilterOf(MakeFilterFile("glow.so", {pItem->GetUniqueID()}), pItem), 1);
    EXPECT_TRUE(m_seen.empty());
    EXPECT_EQ(m_pClips->HasItem(pItem->GetUniqueID(), 0), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 0);
}

TEST_F(EntriesEffects, AddFilter_ToNoExistingFolder_StillStoresTheRecord) {
    const std::unique_ptr<CQItem> item(NewItem("Glow", kFilterType));
    EXPECT_EQ(AddFilterOf(MakeFilterFile("glow.so", {item->GetUniqueID()}), item.get(), {"Nowhere"}), 1);
    ASSERT_EQ(m_seen.size(), 1u);
    EXPECT_EQ(m_seen[0].nFolderId, -1);
    EXPECT_EQ(CountRows("FLT_TABLE"), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
}

TEST_F(EntriesEffects, AddFilter_SeveralFiltersOfAFile_AreOneRecordAndSeveralItems) {
    CQItem* const items[] = {NewItem("Red", kFilterType), NewItem("Blue", kFilterType)};
    for (CQItem* const pItem : items) {
        DS_Filter_File_Record file = MakeFilterFile("tint.so", {pItem->GetUniqueID()});
        file.nFilterCount = 2;
        EXPECT_EQ(AddFilterOf(file, pItem), 1);
    }
    ASSERT_EQ(FilterFiles().size(), 1u);
    EXPECT_EQ(FilterFiles()[0].nFilterCount, 2);
    EXPECT_EQ(FilterFiles()[0].filters.size(), 2u);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 2);
}

TEST_F(EntriesEffects, AddOperations_WithoutDatabaseGalleryPathsOrItem_Fail) {
    const std::unique_ptr<CQItem> item(NewItem("Glow", kFilterType));
    const GUID guid = item->GetUniqueID();
    const auto file = MakeFilterFile("glow.so", {guid});
    const auto transition = MakeTransitionRecord("mix.so", guid);
    using Filter = LibraryOperation_AddItem_Filter;
    using Transition = LibraryOperation_AddItem_Transition;
    EXPECT_EQ(Filter(file, 0, m_hMedia, {"Clips"}, item.get(), nullptr).execute(), 0);
    EXPECT_EQ(Filter(file, 0, 0, {"Clips"}, item.get(), Tools()).execute(), 0);
    EXPECT_EQ(Filter(file, 0, m_hMedia, {}, item.get(), Tools()).execute(), 0);
    EXPECT_EQ(Filter(file, 0, m_hMedia, {"Clips"}, nullptr, Tools()).execute(), 0);
    EXPECT_EQ(Transition(transition, m_hMedia, {"Clips"}, item.get(), nullptr).execute(), 0);
    EXPECT_EQ(Transition(transition, 0, {"Clips"}, item.get(), Tools()).execute(), 0);
    EXPECT_EQ(Transition(transition, m_hMedia, {}, item.get(), Tools()).execute(), 0);
    EXPECT_EQ(Transition(transition, m_hMedia, {"Clips"}, nullptr, Tools()).execute(), 0);
    for (const char* table : {"ITEM_TABLE", "FLT_FILE_TABLE", "FLT_TABLE", "TRANSITION_TABLE"}) {
        EXPECT_EQ(CountRows(table), 0);
    }
}

TEST_F(EntriesEffects, TheOptionValueIsCarried) {
    const LibraryOperation_AddItem_Filter add({}, 0xFFFFFFFF, m_hMedia, {"Clips"}, nullptr, nullptr);
    const LibraryOperation_UpdateFilterOptionAsync update(m_hMedia, {}, 7, nullptr, nullptr, GUID_NULL);
    EXPECT_EQ(add.OptionValue(), 0xFFFFFFFFu);
    EXPECT_EQ(update.OptionValue(), 7u);
}

TEST_F(EntriesEffects, AnAddOfLowPriority_ComesBehindFourOthers) {
    std::string order;
    Listen("order", [&](QFCLibCallbackParam* pParam) {
        const CQItem* const pItem = qfc::AsGallery(m_hMedia)->GetItemByGUID(pParam->guidItem);
        if (pItem != nullptr) order += std::string(pItem->GetItemName()) + " ";
        return 1;
    });
    {
        Gate gate;
        Manager::fnAddItemAsync_Filter({}, 0, m_hMedia, {"Clips"}, NewItem("late"), 1);
        Manager::fnAddItemAsync_Transition(MakeTransitionRecord("x"), m_hMedia, {"Clips"}, NewItem("later"), 1);
        for (const char* name : {"a", "b"}) {
            Manager::fnAddItemAsync_Filter({}, 0, m_hMedia, {"Clips"}, NewItem(name), 0);
        }
        for (const char* name : {"c", "d", "e"}) {
            Manager::fnAddItemAsync_Transition(MakeTransitionRecord("x"), m_hMedia, {"Clips"}, NewItem(name), 0);
        }
    }
    Settle();
    EXPECT_EQ(order, "a b c d late e later ");
}

// --- Transitions ----------------------------------------------------------------------------------------------------

TEST_F(EntriesEffects, AddTransition_StoresItemAndRecordAndTellsTheCallback) {
    CQItem* const pItem = NewItem("Fade", kTransitionType);
    const GUID guid = pItem->GetUniqueID();
    EXPECT_EQ(AddTransitionOf(MakeTransitionRecord("fade.so"), pItem), 1);
    ASSERT_EQ(m_seen.size(), 1u);
    EXPECT_EQ(m_seen[0].guidItem, guid);
    EXPECT_EQ(m_seen[0].nFolderId, m_pClips->GetDBId());
    Restart();
    ASSERT_EQ(TransitionRecords().size(), 1u);
    EXPECT_EQ(TransitionRecords()[0].strFileName, "fade.so");
    EXPECT_EQ(TransitionRecords()[0].descriptor, std::vector<BYTE>(60, 7));
    EXPECT_EQ(TransitionRecords()[0].guidItem, guid);  // The record named none.
    EXPECT_EQ(m_pClips->HasItem(guid, 0), 1);
}

TEST_F(EntriesEffects, AddTransition_ARecordThatNamesAnItemKeepsIt) {
    CQItem* const pItem = NewItem("Fade", kTransitionType);
    EXPECT_EQ(AddTransitionOf(MakeTransitionRecord("fade.so", kOther), pItem), 1);
    EXPECT_EQ(TransitionRecords().at(0).guidItem, kOther);
}

TEST_F(EntriesEffects, AddTransition_SortsEveryNamedFolderByTheBytesOfTheNames) {
    for (const char* name : {"wipe", "Fade", "\xC3\x84rger", "_", "fade"}) {
        CQItem* const pItem = NewItem(name, kTransitionType);
        EXPECT_EQ(AddTransitionOf(MakeTransitionRecord(name), pItem, {"Clips", "Nowhere", "More"}), 1);
    }
    EXPECT_EQ(NamesIn(*m_pClips), "Fade _ fade wipe \xC3\x84rger ");
    EXPECT_EQ(NamesIn(*m_pMore), "Fade _ fade wipe \xC3\x84rger ");
    Restart();
    EXPECT_EQ(NamesIn(*m_pClips), "wipe Fade \xC3\x84rger _ fade ");  // That order is not stored.
}

TEST_F(EntriesEffects, AddTransition_SortsAFolderThatIsInAnotherOrderWhole) {
    for (const char* name : {"c", "a", "d", "b"}) AddItem(name);
    AddTransition("aa");
    EXPECT_EQ(NamesIn(*m_pClips), "a aa b c d ");
}

// Items as names and GUIDs: sorts look at the names, and the GUIDs tell which of equal names is where.
using Named = std::vector<std::pair<std::string, std::string>>;

Named NamedItemsIn(CQFolder& folder) {
    Named items;
    for (const CQItem* const pItem : *folder.GetItemArray()) {
        items.emplace_back(pItem->GetItemName(), qfc::GuidToText(pItem->GetUniqueID()));
    }
    return items;
}

// The sort as it is told: for each position every later item that compares smaller is swapped in.
void SortLiterally(Named& items) {
    for (std::size_t position = 0; position < items.size(); ++position) {
        for (std::size_t later = position + 1; later < items.size(); ++later) {
            if (items[later].first < items[position].first) std::swap(items[later], items[position]);
        }
    }
}

void SortStably(Named& items) {
    std::stable_sort(items.begin(), items.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
}

TEST_F(EntriesEffects, AddTransition_ItemsOfEqualNames_ComeIntoTheOrderOfTheLiteralSort) {
    Named literal;
    Named stable;
    for (int number = 0; number < 40; ++number) {
        const std::string name = "n" + std::to_string(number * 7 % 11 % 5);
        const std::string guid = qfc::GuidToText(AddTransition(name.c_str()));
        literal.emplace_back(name, guid);
        stable.emplace_back(name, guid);
        SortLiterally(literal);
        SortStably(stable);
        ASSERT_EQ(NamedItemsIn(*m_pClips), literal) << "item " << number;
    }
    EXPECT_NE(literal, stable);
}

TEST_F(EntriesEffects, AddTransition_ToAFolderInAnotherOrderWithEqualNames_SortsItLiterally) {
    for (const char* name : {"c", "c", "b", "c", "a", "b", "a", "b", "c", "a"}) AddItem(name);
    Named literal = NamedItemsIn(*m_pClips);
    literal.emplace_back("b", qfc::GuidToText(AddTransition("b")));
    Named stable = literal;
    SortLiterally(literal);
    SortStably(stable);
    EXPECT_EQ(NamedItemsIn(*m_pClips), literal);
    EXPECT_NE(literal, stable);
}

// What the folder knows of its items outlives the sorting: no add looks at all items before it for its GUID.
TEST_F(EntriesEffects, AddTransition_ManyToOneFolder_DoNotCompareEachWithAllBefore) {
    constexpr int kMany = 600;
    const auto add = [&](int number) {
        CQItem* const pItem = NewItem(("t" + std::to_string(number * 7919 % 997)).c_str(), kTransitionType);
        ASSERT_EQ(Manager::fnAddItemAsync_Transition(MakeTransitionRecord("many.so"), m_hMedia, {"Clips"}, pItem, 0),
                  1);
    };
    for (int number = 0; number < 300; ++number) add(number);
    Settle();
    const std::uint64_t before = qfc::HeldGuids::VisitsSoFar();
    for (int number = 300; number < kMany; ++number) add(number);
    Settle();
    ASSERT_EQ(m_pClips->GetItemsCount(), kMany);
    EXPECT_LT(qfc::HeldGuids::VisitsSoFar() - before, 300u * 100u);
}

TEST_F(EntriesEffects, AddFilter_LeavesTheOrderOfTheItems) {
    for (const char* name : {"c", "a", "b"}) AddFilter(name);
    EXPECT_EQ(NamesIn(*m_pClips), "c a b ");
}

TEST_F(EntriesEffects, AddTransition_WhoseRecordIsRefused_KeepsItemAndOrderAndRaisesNoCallback) {
    AddItem("z");
    RefuseWrites("TRANSITION_TABLE");
    EXPECT_EQ(AddTransitionOf(MakeTransitionRecord("a.so"), NewItem("a", kTransitionType)), 1);
    EXPECT_TRUE(m_seen.empty());
    EXPECT_EQ(NamesIn(*m_pClips), "a z ");
    EXPECT_EQ(CountRows("TRANSITION_TABLE"), 0);
}

// A folder that keeps its items elsewhere, and has none.
class FolderWithoutArray : public CQFolder {
public:
    using CQFolder::CQFolder;
    ItemArray* GetItemArray() override { return nullptr; }
};

TEST_F(EntriesEffects, AddTransition_ToAFolderThatYieldsNoArray_FailsAndStoresNoRecord) {
    CQGallery gallery;
    gallery.AddFolder(new FolderWithoutArray("Bare", 0, 0, 0), 0, 1);
    const std::unique_ptr<CQItem> item(NewItem("a", kTransitionType));
    LibraryOperation_AddItem_Transition operation(MakeTransitionRecord("a.so"), ToHandle(&gallery), {"Bare"},
                                                  item.get(), Tools());
    EXPECT_EQ(operation.execute(), 0);
    EXPECT_EQ(CountRows("TRANSITION_TABLE"), 0);
}

}  // namespace
