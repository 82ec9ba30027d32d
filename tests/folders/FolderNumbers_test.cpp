#include "folders/FolderNumbers.h"

#include "tests/folders/FolderBuilders.h"

#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <set>

namespace qfc::test {
namespace {

constexpr DWORD kLast = std::numeric_limits<DWORD>::max();

TEST(NumberRuns, AgreeWithAPlainSet) {
    std::mt19937 random(3);
    for (int round = 0; round < 200; ++round) {
        NumberRuns runs;
        std::set<DWORD> plain;
        const DWORD base = round % 2 == 0 ? 0 : kLast - 30;
        for (int i = 0; i < 40; ++i) {
            const DWORD number = base + static_cast<DWORD>(random() % 31);
            runs.Add(number);
            plain.insert(number);
        }
        for (DWORD step = 0; step < 33; ++step) {
            const DWORD from = base + step;
            DWORD free = from;
            while (plain.contains(free)) ++free;
            EXPECT_EQ(runs.FirstFree(from), free) << from;
            EXPECT_EQ(runs.Has(from), plain.contains(from)) << from;
        }
    }
}

TEST(StreamNumbers, StartAt0AndNeedAnItemArray) {
    CQFolder folder;
    EXPECT_EQ(folder.GetNewItemStreamNumber(), 0u);
    EXPECT_EQ(FolderInside::NextItemNumber(folder), 0u);
    AddNew(folder, 1);
    EXPECT_EQ(folder.GetNewItemStreamNumber(), 1u);
    EXPECT_EQ(FolderInside::NextItemNumber(folder), 2u);
}

TEST(StreamNumbers, AreNeverReusedWhileAnItemHoldsThem) {
    CQFolder folder;
    for (unsigned i = 0; i < 4; ++i) AddNew(folder, i + 1);
    folder.RemoveItem2(1, 1);
    FolderInside::NextItemNumber(folder) = 0;
    EXPECT_EQ(folder.GetNewItemStreamNumber(), 1u);
    EXPECT_EQ(folder.GetNewItemStreamNumber(), 4u);
}

TEST(StreamNumbers, WrapAroundThroughZero) {
    CQFolder folder;
    AddNew(folder, 1);
    FolderInside::NextItemNumber(folder) = kLast;
    AddNew(folder, 2);
    EXPECT_EQ(folder.GetItemArray()->GetAt(1)->GetNumber(), kLast);
    EXPECT_EQ(folder.GetNewItemStreamNumber(), 1u);
}

TEST(StreamNumbers, SeeItemsPutIntoTheArrayByHand) {
    CQFolder other;
    AddNew(other, 1);
    CQItem* numbered = AddNew(other, 2);
    ASSERT_EQ(numbered->GetNumber(), 1u);
    other.GetItemArray()->RemoveAt(1);
    CQFolder folder;
    AddNew(folder, 3);
    folder.GetItemArray()->Add(numbered);
    EXPECT_EQ(folder.GetNewItemStreamNumber(), 2u);
}

TEST(StreamNumbers, SeeANumberThatAnotherFolderGaveToASharedItem) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQFolder* b = AddSub(root, "B");
    AddNew(*a, 1);
    CQItem* shared = NewItem(2);
    a->AddItem(shared, 0);
    AddNew(*a, 3);
    AddNew(*b, 4);
    const DWORD next = FolderInside::NextItemNumber(*a);
    FolderInside::NextItemNumber(*b) = next;
    b->AddItem(shared, 1);
    ASSERT_EQ(shared->GetNumber(), next);
    EXPECT_EQ(a->GetNewItemStreamNumber(), next + 1);
}

// The search of the texts.
DWORD LiteralStreamNumber(const CQFolder::ItemArray& items, DWORD counter) {
    const auto used = [&](DWORD number) {
        return std::any_of(items.begin(), items.end(),
                           [=](const CQItem* item) { return item != nullptr && item->GetNumber() == number; });
    };
    while (used(counter)) ++counter;
    return counter;
}

TEST(StreamNumbers, OnRandomHistories_AreThoseOfTheLiteralSearch) {
    std::mt19937 random(17);
    for (int round = 0; round < 40; ++round) {
        CQFolder root;
        std::vector<CQFolder*> folders{AddSub(root, "A"), AddSub(root, "B"), AddSub(root, "C")};
        unsigned guid = 0;
        for (CQFolder* folder : folders) AddNew(*folder, ++guid);
        for (int step = 0; step < 120; ++step) {
            CQFolder* folder = folders[random() % 3];
            CQFolder* other = folders[random() % 3];
            CQFolder::ItemArray* items = folder->GetItemArray();
            switch (random() % 6) {
                case 0:
                    AddNew(*folder, ++guid);
                    break;
                case 1:
                    folder->AddItem(NewItem(++guid), 0);
                    break;
                case 2:
                    if (!items->IsEmpty()) {
                        CQItem* item = items->GetAt(static_cast<int>(random()) & (items->GetSize() - 1) & 0x7fff);
                        if (!other->HasItem(item->GetUniqueID(), 0)) other->AddItem(item, 1);
                    }
                    break;
                case 3:
                    FolderInside::NextItemNumber(*folder) = static_cast<DWORD>(random() % 20);
                    break;
                case 4:
                    if (items->GetSize() > 1) std::swap(items->CObArray::ElementAt(0), items->CObArray::ElementAt(1));
                    break;
                default:
                    break;
            }
            const DWORD expected = LiteralStreamNumber(*items, FolderInside::NextItemNumber(*folder));
            EXPECT_EQ(folder->GetNewItemStreamNumber(), expected);
            EXPECT_EQ(FolderInside::NextItemNumber(*folder), expected + 1);
        }
    }
}

TEST(StreamNumbers, FiftyThousandItems_AreNotCountedAnewForEach) {
    constexpr unsigned kItems = 50000;
    const std::uint64_t before = FolderNumbers::VisitsSoFar();
    CQFolder folder;
    for (unsigned i = 0; i < kItems; ++i) AddNew(folder, i);
    EXPECT_LE(FolderNumbers::VisitsSoFar() - before, 2 * kItems);
    EXPECT_EQ(folder.GetItemArray()->GetAt(kItems - 1)->GetNumber(), kItems - 1);
}

TEST(StorageNumbers, AreTheFirstFreeFromTheCounterOn) {
    CQFolder root;
    for (const DWORD number : {1u, 2u, 4u}) AddSub(root, "F")->SetStorageNumber(number);
    FolderInside::NextFolderNumber(root) = 1;
    EXPECT_EQ(root.GetNewFolderStorageNumber(), 3u);
    EXPECT_EQ(FolderInside::NextFolderNumber(root), 4u);
    EXPECT_EQ(root.GetNewFolderStorageNumber(), 5u);
}

TEST(StorageNumbers, StartAt1AndSkip0WhenTheyWrap) {
    CQFolder root;
    EXPECT_EQ(root.GetNewFolderStorageNumber(), 1u);
    FolderInside::NextFolderNumber(root) = kLast;
    EXPECT_EQ(root.GetNewFolderStorageNumber(), kLast);
    EXPECT_EQ(root.GetNewFolderStorageNumber(), 1u);
    AddSub(root, "F")->SetStorageNumber(kLast);
    root.SetStorageNumber(5);
    FolderInside::NextFolderNumber(root) = kLast;
    EXPECT_EQ(root.GetNewFolderStorageNumber(), 1u);
}

TEST(StorageNumbers, OfFoldersWithAFileOfTheirOwnDoNotCount) {
    CQFolder root;
    CQFolder* linked = AddSub(root, "linked");
    linked->SetStorageNumber(1);
    AddSub(*linked, "below")->SetStorageNumber(2);
    EXPECT_TRUE(root.SearchFolderNumRecursive(1));
    EXPECT_TRUE(root.SearchFolderNumRecursive(2));
    FolderInside::FilePath(*linked) = "C:\\linked";
    EXPECT_FALSE(root.SearchFolderNumRecursive(1));
    EXPECT_FALSE(root.SearchFolderNumRecursive(2));
    EXPECT_TRUE(linked->SearchFolderNumRecursive(1));
    EXPECT_TRUE(root.SearchFolderNumRecursive(0));
    EXPECT_EQ(root.GetNewFolderStorageNumber(), 1u);
    FolderInside::FilePath(*linked).Empty();
}

DWORD LiteralStorageNumber(CQFolder& root, DWORD counter) {
    if (counter == 0) counter = 1;
    while (root.SearchFolderNumRecursive(counter)) {
        if (++counter == 0) counter = 1;
    }
    return counter;
}

TEST(StorageNumbers, OnRandomHistories_AreThoseOfTheLiteralSearch) {
    std::mt19937 random(23);
    for (int round = 0; round < 40; ++round) {
        CQFolder root;
        std::vector<CQFolder*> folders{&root};
        const auto any = [&] { return folders[random() % folders.size()]; };
        for (int step = 0; step < 80; ++step) {
            switch (random() % 6) {
                case 0: {
                    auto* child = new CQFolder;
                    if (random() % 3 == 0) child->SetStorageNumber(static_cast<DWORD>(random() % 12));
                    const DWORD expected = LiteralStorageNumber(root, FolderInside::NextFolderNumber(root));
                    any()->AddFolder(child, 1, 1);
                    // A number the child brought along counts while its new one is looked for.
                    EXPECT_GE(FolderInside::StorageNumber(*child), expected);
                    folders.push_back(child);
                    break;
                }
                case 1:
                    any()->SetStorageNumber(static_cast<DWORD>(random() % 12));
                    break;
                case 2: {
                    auto* child = new CQFolder;
                    child->SetStorageNumber(static_cast<DWORD>(random() % 12));
                    AddSub(*child, "below")->SetStorageNumber(static_cast<DWORD>(random() % 12));
                    CQFolder* parent = any();
                    // By hand, past every function of the folder.
                    if (parent->GetFolderList() != nullptr) {
                        parent->GetFolderList()->AddTail(child);
                    } else {
                        delete child;
                    }
                    break;
                }
                case 3:
                    FolderInside::NextFolderNumber(root) = static_cast<DWORD>(random() % 12);
                    break;
                case 4: {
                    CQFolder* leaf = any();
                    if (leaf != &root && leaf->GetFolderList() == nullptr && leaf->DetachParent(0) != 0) {
                        std::erase(folders, leaf);
                        delete leaf;
                    }
                    break;
                }
                default:
                    break;
            }
            const DWORD expected = LiteralStorageNumber(root, FolderInside::NextFolderNumber(root));
            EXPECT_EQ(root.GetNewFolderStorageNumber(), expected);
            EXPECT_EQ(FolderInside::NextFolderNumber(root), expected + 1);
        }
    }
}

TEST(StorageNumbers, TwentyThousandFolders_AreNotCountedAnewForEach) {
    constexpr int kFolders = 20000;
    std::mt19937 random(1);
    const std::uint64_t before = FolderNumbers::VisitsSoFar();
    CQFolder root;
    std::vector<CQFolder*> folders{&root};
    for (int i = 0; i < kFolders; ++i) {
        auto* child = new CQFolder;
        folders[random() % folders.size()]->AddFolder(child, 1, 1);
        folders.push_back(child);
    }
    EXPECT_LE(FolderNumbers::VisitsSoFar() - before, 2u * kFolders);
    EXPECT_EQ(FolderInside::NextFolderNumber(root), static_cast<DWORD>(kFolders + 1));
}

}  // namespace
}  // namespace qfc::test
