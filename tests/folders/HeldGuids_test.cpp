#include "folders/HeldGuids.h"

#include "tests/folders/FolderBuilders.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <random>
#include <utility>
#include <vector>

namespace qfc::test {
namespace {

// Enough for a set to pay at once, when it is asked often enough.
constexpr unsigned kManyItems = 200;
constexpr int kOftenEnough = 100;

bool PlainScan(CQFolder& folder, const GUID& guid) {
    const CQFolder::ItemArray* items = folder.GetItemArray();
    return items != nullptr && std::any_of(items->begin(), items->end(), [&](const CQItem* item) {
               return item != nullptr && item->GetUniqueID() == guid;
           });
}

// Looks as AddItemDb does; HasItem must agree.
bool Looks(CQFolder& folder, const GUID& guid) {
    const bool before = folder.HasItem(guid, 0) != 0;
    const bool held = HeldGuids::HasBeforeAdd(folder, guid);
    EXPECT_EQ(before, held);
    EXPECT_EQ(folder.HasItem(guid, 0) != 0, held);
    return held;
}

class FullFolder : public testing::Test {
protected:
    FullFolder() {
        for (unsigned i = 0; i < kManyItems; ++i) AddNew(m_folder, i);
        for (int i = 0; i < kOftenEnough; ++i) EXPECT_FALSE(Looks(m_folder, GuidOf(kManyItems)));
    }
    // Items that one question looks at.
    std::uint64_t VisitsOf(const GUID& guid) {
        const std::uint64_t before = HeldGuids::VisitsSoFar();
        HeldGuids::HasBeforeAdd(m_folder, guid);
        return HeldGuids::VisitsSoFar() - before;
    }
    CQItem* Item(int position) { return m_folder.GetItemArray()->GetAt(position); }

    CQFolder m_folder;
};

TEST_F(FullFolder, AskedOften_IsNoLongerComparedItemByItem) {
    EXPECT_EQ(VisitsOf(GuidOf(kManyItems)), 0u);
    EXPECT_EQ(VisitsOf(GuidOf(7)), 0u);
    EXPECT_TRUE(Looks(m_folder, GuidOf(7)));
    EXPECT_FALSE(Looks(m_folder, GuidOf(kManyItems)));
}

// Looking alone changes nothing: what several threads look at needs no lock.
TEST(HeldGuids, AskedWithoutAdding_TakeNoStock) {
    CQFolder folder;
    for (unsigned i = 0; i < kManyItems; ++i) AddNew(folder, i);
    const std::uint64_t before = HeldGuids::VisitsSoFar();
    for (int i = 0; i < kOftenEnough; ++i) EXPECT_FALSE(folder.HasItem(GuidOf(kManyItems), 0));
    EXPECT_EQ(HeldGuids::VisitsSoFar() - before, std::uint64_t{kOftenEnough} * kManyItems);
}

TEST_F(FullFolder, ItemsAddedAfterwardsAreKnownAtOnce) {
    AddNew(m_folder, kManyItems);
    EXPECT_EQ(VisitsOf(GuidOf(kManyItems)), 0u);
    EXPECT_TRUE(Looks(m_folder, GuidOf(kManyItems)));
}

TEST_F(FullFolder, AnItemThatGetsAnotherGuid_IsKnownByThatAlone) {
    Item(5)->SetUniqueID(GuidOf(1000));
    EXPECT_TRUE(Looks(m_folder, GuidOf(1000)));
    EXPECT_FALSE(Looks(m_folder, GuidOf(5)));
}

TEST_F(FullFolder, AGuidWrittenLaterThroughAReferenceThatWasKept_IsSeen) {
    GUID& kept = Item(5)->GetUniqueID();
    for (int i = 0; i < kOftenEnough; ++i) EXPECT_FALSE(Looks(m_folder, GuidOf(1000)));
    EXPECT_EQ(VisitsOf(GuidOf(1000)), 1u) << "only the item whose GUID was handed out is looked at";
    kept = GuidOf(1000);
    EXPECT_TRUE(Looks(m_folder, GuidOf(1000)));
    EXPECT_FALSE(Looks(m_folder, GuidOf(5)));
}

TEST_F(FullFolder, AReferenceFromBeforeTheItemWasAdded_IsSeenAsWell) {
    CQItem* item = NewItem(kManyItems);
    GUID& kept = item->GetUniqueID();
    m_folder.AddItem(item, 1);
    kept = GuidOf(1000);
    EXPECT_TRUE(Looks(m_folder, GuidOf(1000)));
    EXPECT_FALSE(Looks(m_folder, GuidOf(kManyItems)));
}

TEST_F(FullFolder, ChangesOfTheExposedArrayAreSeen) {
    CQFolder::ItemArray& items = *m_folder.GetItemArray();
    const std::unique_ptr<CQItem> removed(Item(5));
    items.RemoveAt(5);
    EXPECT_FALSE(Looks(m_folder, GuidOf(5)));
    const std::unique_ptr<CQItem> replaced(Item(6));
    items.SetAt(6, NewItem(1000));
    EXPECT_TRUE(Looks(m_folder, GuidOf(1000)));
    EXPECT_FALSE(Looks(m_folder, replaced->GetUniqueID()));
    items.InsertAt(0, NewItem(1001));
    EXPECT_TRUE(Looks(m_folder, GuidOf(1001)));
}

TEST_F(FullFolder, ItemsThatOnlyChangePlaces_StayKnownWhenThatIsNoted) {
    CQFolder::ItemArray& items = *m_folder.GetItemArray();
    const auto swapEnds = [&] {
        CQItem* const first = items.GetAt(0);
        items.SetAt(0, items.GetAt(items.GetUpperBound()));
        items.SetAt(items.GetUpperBound(), first);
    };
    const unsigned long long before = items.ModificationCount();
    swapEnds();
    HeldGuids::NoteReordered(m_folder, items, before);
    EXPECT_EQ(VisitsOf(GuidOf(kManyItems)), 0u);
    EXPECT_TRUE(Looks(m_folder, GuidOf(7)));

    const std::unique_ptr<CQItem> taken(Item(0));
    items.SetAt(0, nullptr);  // Not noted by anybody.
    const unsigned long long later = items.ModificationCount();
    swapEnds();
    HeldGuids::NoteReordered(m_folder, items, later);
    EXPECT_GT(VisitsOf(GuidOf(kManyItems)), 0u);
}

TEST_F(FullFolder, AWrittenPlaceOfTheArrayThatWasKept_IsSeen) {
    CObject*& kept = m_folder.GetItemArray()->CObArray::ElementAt(5);
    for (int i = 0; i < kOftenEnough; ++i) EXPECT_FALSE(Looks(m_folder, GuidOf(1000)));
    const std::unique_ptr<CQItem> replaced(Item(5));
    kept = NewItem(1000);
    EXPECT_TRUE(Looks(m_folder, GuidOf(1000)));
    EXPECT_FALSE(Looks(m_folder, GuidOf(5)));
}

TEST_F(FullFolder, AnotherArrayIsLookedAtAnew) {
    const std::unique_ptr<CQFolder::ItemArray> former(m_folder.GetItemArray());
    auto* array = new CQFolder::ItemArray;
    for (unsigned i = 0; i < kManyItems; ++i) array->Add(NewItem(1000 + i));
    m_folder.SetItemArray(array);
    EXPECT_TRUE(Looks(m_folder, GuidOf(1000)));
    EXPECT_FALSE(Looks(m_folder, GuidOf(5)));
    for (CQItem* item : *former) delete item;
}

// A folder with containers of its own, which it may replace at any time.
class FolderOfOwnArray : public CQFolder {
public:
    ItemArray* GetItemArray() override { return &*m_items; }
    void Replace(unsigned first) {
        if (m_items) {
            for (CQItem* item : *m_items) delete item;
        }
        m_items.emplace();  // At the same address, with the same number of changes.
        for (unsigned i = 0; i < kManyItems; ++i) m_items->Add(NewItem(first + i));
    }
    ~FolderOfOwnArray() override {
        for (CQItem* item : *m_items) delete item;
        m_items->RemoveAll();
    }

private:
    std::optional<ItemArray> m_items;
};

TEST(HeldGuidsOfADerivedFolder, AnArrayReplacedAtTheSameAddress_IsLookedAtAnew) {
    FolderOfOwnArray folder;
    folder.Replace(0);
    for (int i = 0; i < kOftenEnough; ++i) EXPECT_TRUE(Looks(folder, GuidOf(5)));
    folder.Replace(1000);
    EXPECT_FALSE(Looks(folder, GuidOf(5)));
    EXPECT_TRUE(Looks(folder, GuidOf(1005)));
}

TEST(HeldGuids, AnItemInTwoFolders_IsFollowedByBoth) {
    CQFolder first;
    CQFolder second;
    for (unsigned i = 0; i < kManyItems; ++i) {
        CQItem* item = AddNew(first, i);
        second.AddItem(item, 0);
    }
    for (int i = 0; i < kOftenEnough; ++i) {
        EXPECT_TRUE(Looks(first, GuidOf(5)));
        EXPECT_TRUE(Looks(second, GuidOf(5)));
    }
    first.GetItemArray()->GetAt(5)->SetUniqueID(GuidOf(1000));
    for (CQFolder* folder : {&first, &second}) {
        EXPECT_FALSE(Looks(*folder, GuidOf(5)));
        EXPECT_TRUE(Looks(*folder, GuidOf(1000)));
    }
    second.GetItemArray()->RemoveAll();
}

// Long enough for sets to be made, given up and made again; small numbers, so that GUIDs come twice.
TEST(HeldGuids, OnRandomHistories_AnswerLikeThePlainScan) {
    std::mt19937 random(31);
    for (int round = 0; round < 30; ++round) {
        CQFolder folder;
        std::vector<std::unique_ptr<CQItem>> takenOut;
        std::vector<GUID*> kept;
        const auto any = [&] { return GuidOf(static_cast<unsigned>(random() % 300)); };
        for (int i = 0; i < 60; ++i) folder.AddItem(NewItem(static_cast<unsigned>(random() % 300)), 1);
        const bool handsOutPlaces = round % 5 == 4;
        for (int step = 0; step < 3000; ++step) {
            CQFolder::ItemArray& items = *folder.GetItemArray();
            const int position = items.IsEmpty() ? 0 : static_cast<int>(random() % 1000) % items.GetSize();
            switch (items.IsEmpty() ? 0 : random() % 200) {
                case 0:
                case 1:
                case 2:
                    folder.AddItem(NewItem(static_cast<unsigned>(random() % 300)), static_cast<int>(random() % 2));
                    break;
                case 3:
                    items.GetAt(position)->SetUniqueID(any());
                    break;
                case 4:
                    kept.push_back(&items.GetAt(position)->GetUniqueID());
                    break;
                case 5:
                case 6:
                    if (!kept.empty()) *kept[random() % kept.size()] = any();
                    break;
                case 7:
                    takenOut.emplace_back(items.GetAt(position));
                    items.RemoveAt(position);
                    break;
                case 8:
                    takenOut.emplace_back(items.GetAt(position));
                    items.SetAt(position, NewItem(static_cast<unsigned>(random() % 300)));
                    break;
                case 9:
                    items.InsertAt(position, NewItem(static_cast<unsigned>(random() % 300)));
                    break;
                case 10:
                    folder.SortingAllItem(0, 1);
                    break;
                case 11:
                    if (handsOutPlaces) std::swap(items.CObArray::ElementAt(0), items.CObArray::ElementAt(position));
                    break;
                default:
                    break;
            }
            const GUID asked = any();
            ASSERT_EQ(Looks(folder, asked), PlainScan(folder, asked)) << "round " << round << " step " << step;
        }
    }
}

TEST(HeldGuids, FiftyThousandItemsAddedToOneFolder_AreNotComparedWithAllBefore) {
    constexpr unsigned kItems = 50000;
    const std::uint64_t before = HeldGuids::VisitsSoFar();
    CQGallery gallery;
    CQFolder* folder = AddSub(gallery, "A");
    for (unsigned i = 0; i < kItems; ++i) {
        auto item = std::unique_ptr<CQItem>(NewItem(i));
        ASSERT_EQ(folder->AddItemDb(item.get(), 0), 1);
        static_cast<void>(item.release());
    }
    EXPECT_LE(HeldGuids::VisitsSoFar() - before, 2 * kItems);
    const std::unique_ptr<CQItem> again(NewItem(kItems / 2));
    EXPECT_EQ(folder->AddItemDb(again.get(), 0), 0);
}

TEST(HeldGuids, RemovingAndAddingInTurn_MakesNoSetEachTime) {
    CQFolder folder;
    for (unsigned i = 0; i < kManyItems; ++i) AddNew(folder, i);
    constexpr unsigned kTurns = 640;
    const std::uint64_t before = HeldGuids::VisitsSoFar();
    for (unsigned turn = 0; turn < kTurns; ++turn) {
        const std::unique_ptr<CQItem> gone(folder.GetItemArray()->GetAt(0));
        folder.GetItemArray()->RemoveAt(0);
        EXPECT_FALSE(HeldGuids::HasBeforeAdd(folder, GuidOf(kManyItems + turn)));
        AddNew(folder, kManyItems + turn);
    }
    EXPECT_LE(HeldGuids::VisitsSoFar() - before, std::uint64_t{kTurns} * kManyItems * 11 / 10);
}

}  // namespace
}  // namespace qfc::test
