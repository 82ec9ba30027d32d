#include "folders/FolderConstants.h"
#include "folders/GlobalProc.h"
#include "folders/ImportPort.h"
#include "folders/TreeChanges.h"
#include "items/ItemTypes.h"
#include "tests/folders/StoredItemsFixture.h"
#include "tests/support/SqlTrace.h"

#include <gtest/gtest.h>
#include <memory>
#include <utility>

// In which order folder operations do their steps, and how far they reach.
namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

// Writes down its end.
class NotedItem : public CQItem {
public:
    NotedItem(Texts& ends, const char* name) : CQItem(name), m_ends(ends) {}
    ~NotedItem() override { m_ends.emplace_back(GetItemName().View()); }

private:
    Texts& m_ends;
};

// --- In memory -----------------------------------------------------------------------------------------------------

TEST(OrderOfSteps, RemoveSubFolder_EndsOwnItemsBeforeThoseOfSubFolders) {
    Texts ends;
    CQFolder root;
    AddSub(root, "A")->AddItem(new NotedItem(ends, "below"), 1);
    root.AddItem(new NotedItem(ends, "own"), 1);
    root.RemoveSubFolder();
    EXPECT_EQ(ends, (Texts{"own", "below"}));
}

TEST(OrderOfSteps, Clear_EndsItemsOfSubFoldersBeforeOwnOnes) {
    Texts ends;
    CQFolder root;
    root.AddItem(new NotedItem(ends, "own"), 1);
    AddSub(root, "A")->AddItem(new NotedItem(ends, "below"), 1);
    root.Clear();
    EXPECT_EQ(ends, (Texts{"below", "own"}));
}

TEST(OrderOfSteps, AddFolderAtTheHead_MarksTheTreeModified) {
    CQFolder root;
    for (const int tail : {0, 1}) {
        SetTreeModified(false);
        root.AddFolder(new CQFolder, 0, tail);
        EXPECT_TRUE(IsTreeModified()) << tail;
    }
}

TEST(OrderOfSteps, AddFolder_DrawsTheNumberFromTheNearestFileRoot) {
    CQFolder root;
    CQFolder* linked = AddSub(root, "linked");
    FolderInside::FilePath(*linked) = "linked.gal";
    FolderInside::NextFolderNumber(root) = 30;
    FolderInside::NextFolderNumber(*linked) = 7;
    CQFolder* middle = AddSub(*linked, "middle");
    auto* child = new CQFolder;
    middle->AddFolder(child, 1, 1);
    EXPECT_EQ(FolderInside::StorageNumber(*child), 7u);
    EXPECT_EQ(FolderInside::NextFolderNumber(*linked), 8u);
    EXPECT_EQ(FolderInside::NextFolderNumber(root), 30u);
}

TEST(OrderOfSteps, RemoveAllItems_ClosesTheStorageWhetherItDeletesOrNot) {
    for (const int del : {0, 1}) {
        RecordedFile file;
        CQFolder root("r", 0, 0, 0);
        FolderInside::FilePath(root) = "lib.gal";
        const std::unique_ptr<CQItem> item(NewItem(1));
        if (del == 0) root.AddItem(item.get(), 1);
        if (del != 0) AddNew(root, 2);
        EXPECT_EQ(root.RemoveAllItems(del), 1);
        EXPECT_EQ(std::count(file.calls.begin(), file.calls.end(), "close r"), 1) << del;
        FolderInside::FilePath(root).Empty();
    }
}

struct SeenCopy {
    const CQFolder* parent;
    int count;
    int dbId;
    GUID guid;
};
std::vector<SeenCopy> g_seen;

int NoteCopy(DWORD, ULONGLONG folder, std::int64_t item, void*) {
    const auto* copy = reinterpret_cast<const CQItem*>(static_cast<std::intptr_t>(item));
    auto* target = reinterpret_cast<CQFolder*>(static_cast<std::uintptr_t>(folder));
    g_seen.push_back({copy->GetParentFolder(), target->GetItemsCount(), copy->GetDBID(), copy->GetUniqueID()});
    return 0;
}

TEST(OrderOfSteps, CopyItems_AnnouncesTheFinishedCopyBeforeItIsAdded) {
    g_seen.clear();
    CQFolder source("s", kTrustyAnnounceCopies, 0, 0);
    AddNew(source, 1)->SetDBID(9);
    CQFolder target;
    SetGlobalProc(NoteCopy);
    target.CopyItems(&source, 1);
    SetGlobalProc(nullptr);
    ASSERT_EQ(g_seen.size(), 1u);
    EXPECT_EQ(g_seen[0].parent, nullptr);
    EXPECT_EQ(g_seen[0].count, 0);
    EXPECT_EQ(g_seen[0].dbId, 0);
    EXPECT_TRUE(g_seen[0].guid == GuidOf(1));
    EXPECT_EQ(target.GetItemsCount(), 1);
}

TEST(OrderOfSteps, GetPreSubFolderByName_StopsBehindTheSubtree) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    AddSub(*a, "below");
    AddSub(root, "B");
    EXPECT_EQ(a->GetPreSubFolderByName("B"), nullptr);
    EXPECT_EQ(root.GetPreSubFolderByName("B")->GetFolderName(), "below");
}

TEST(OrderOfSteps, SortSubFolder_LeavesAListOfOneAsItIs) {
    CQFolder root;
    const std::unique_ptr<CQFolder> alone(AddSub(root, "A"));
    alone->DetachParent(0);
    root.GetFolderList()->AddTail(nullptr);
    EXPECT_EQ(root.SortSubFolder(), 1);
    EXPECT_EQ(Names(root.GetFolderList()), Texts{"-"});
}

// --- Which item is the same one --------------------------------------------------------------------------------------

TEST(ItemInFolder, PlainRootWithTheIdOfATemplatesGallery_IsNoGallery) {
    CQFolder root;
    root.SetFolderID(3);
    AddNew(root, 1)->SetFileName("C:\\one\\clip.avi");
    CQItem same;
    same.SetFileName("C:\\two\\clip.avi");
    CQItem* found = nullptr;
    EXPECT_EQ(root.IsItemInFolder(&root, &same, found, 0), 0);
    CQGallery gallery;
    gallery.SetFolderID(3);
    AddNew(gallery, 1)->SetFileName("C:\\one\\clip.avi");
    EXPECT_EQ(gallery.IsItemInFolder(&gallery, &same, found, 0), 1);
}

TEST(ItemInFolder, BaseClip_IsWrittenSoAndNotOtherwise) {
    CQFolder root;
    CQItem* held = AddNew(root, 1, "name");
    held->SetFileName("elsewhere");
    CQItem asked("name");
    CQItem* found = nullptr;
    asked.SetFileName("baseclip");
    EXPECT_EQ(root.IsItemInFolder(&root, &asked, found, 0), 0);
    asked.SetFileName("BaseClip");
    EXPECT_EQ(root.IsItemInFolder(&root, &asked, found, 0), 1);
    EXPECT_EQ(found, held);
}

// --- With the database -----------------------------------------------------------------------------------------------

class OrderInTheDatabase : public StoredItemsFixture {
protected:
    CQItem* Stored(CQFolder& folder, unsigned number) {
        CQItem* const item = NewCounted(number);
        item->SetDBID(static_cast<int>(number));
        EXPECT_EQ(folder.AddItemDb(item, 1), 1);
        return item;
    }
    std::string Cell(const std::string& sql) { return library.Raw().Cell(sql); }
    void RefusePlacementRemoval() { RefuseDeletes("RELATION_TABLE"); }
};

TEST_F(OrderInTheDatabase, RefusedRemoval_HasLeftArrayAndIndexAllTheSame) {
    RefusePlacementRemoval();
    for (const int way : {0, 1, 2}) {
        destroyed = 0;
        CQItem* item = Stored(a, 1);
        if (way == 0) {
            EXPECT_EQ(a.RemoveItemDB(GuidOf(1), 0), 0);
        } else if (way == 1) {
            EXPECT_EQ(a.RemoveItem(GuidOf(1), 1), 0);
        } else {
            a.GetItemArray()->RemoveAll();
            EXPECT_EQ(a.DeleteItemEx(item, nullptr), 0);
        }
        EXPECT_EQ(a.GetItemsCount(), 0) << way;
        EXPECT_TRUE(gallery.GetItemParentList(GuidOf(1)).empty()) << way;
        EXPECT_EQ(destroyed, 1) << way;
    }
}

TEST_F(OrderInTheDatabase, RefusedRemovalByIdOrNumber_RenumbersTheRestAllTheSame) {
    for (unsigned number = 1; number <= 3; ++number) Stored(a, number);
    RefusePlacementRemoval();
    const auto indexOf = [&](unsigned number) {
        return Cell("select ITEM_INDEX from RELATION_TABLE where ITEM_ID = " + BlobLiteral(GuidOf(number)));
    };
    EXPECT_EQ(a.RemoveItem(1, 1), 0);
    EXPECT_EQ(indexOf(2), "0");
    EXPECT_EQ(indexOf(3), "1");
    EXPECT_EQ(a.RemoveItem2(a.GetItemArray()->GetAt(0)->GetNumber(), 1), 0);
    EXPECT_EQ(indexOf(3), "0");
}

TEST_F(OrderInTheDatabase, UpdateItemDB_OfAnInnerFolderReachesItsSiblings) {
    AddSub(a, "below");
    const CQItem* item = Stored(b, 1);
    CQItem source("renamed");
    EXPECT_EQ(a.UpdateItemDB(&source, GuidOf(1), copy_mask::kFields), 1);
    EXPECT_EQ(item->GetItemName(), "renamed");
    EXPECT_EQ(Cell("select ITEM_NAME from ITEM_TABLE"), "'renamed'");
}

TEST_F(OrderInTheDatabase, UpdateItemDB_OfAFolderWithoutSubFoldersMeetsNobody) {
    const CQItem* item = Stored(b, 1);
    CQItem source("renamed");
    EXPECT_EQ(a.UpdateItemDB(&source, GuidOf(1), copy_mask::kFields), 1);
    EXPECT_EQ(item->GetItemName(), "i1");
}

TEST_F(OrderInTheDatabase, UpdateSubFolderIndexDB_StoresAFolderBeforeThoseBelowIt) {
    CQFolder* parent = AddSub(gallery, "parent");
    for (const char* name : {"x", "y"}) AddSub(*parent, name);
    ASSERT_EQ(gallery.UpdateSubFolderIndexDB(), 1);
    ASSERT_GE(parent->GetDBId(), 0);
    EXPECT_EQ(Cell("select count(*) from FOLDER_TABLE where PARENT_ID = " + std::to_string(parent->GetDBId())), "2");
}

TEST_F(OrderInTheDatabase, DeletedSubFolder_LosesItsContentBeforeItsRow) {
    Stored(a, 1);
    library.Raw().Exec(
        "create trigger refuse before delete on FOLDER_TABLE when exists (select 1 from RELATION_TABLE where "
        "PARENT_ID = old.ID) begin select raise(abort, 'filled'); end");
    const std::string row = std::to_string(a.GetDBId());
    EXPECT_EQ(gallery.DeleteFolderFromDb(a.GetDBId()), 1);
    EXPECT_EQ(Cell("select count(*) from FOLDER_TABLE where ID = " + row), "0");
}

TEST_F(OrderInTheDatabase, LoadedFolder_TakesItsRowBeforeItsItems) {
    Stored(a, 1)->SetItemType(2);
    a.GetItemArray()->GetAt(0)->UpdateItemDB();
    library.Raw().Exec("update FOLDER_TABLE set ADOPT_TYPE = 0");
    LoadedTree loaded(library.Tools());
    EXPECT_EQ(loaded.pA->GetAdopt(), 2u);
}

TEST_F(OrderInTheDatabase, ItemById_AsksOnceForEachPayload) {
    GiveBlackBox(*Stored(a, 1), Pattern(100));
    ASSERT_EQ(a.GetItemArray()->GetAt(0)->UpdateItemDB(), 1);
    SqlTrace trace;
    library.Open();
    SetCurrentDBTools(library.Tools());
    LoadedTree loaded(library.Tools());
    trace.Clear();
    EXPECT_NE(loaded.pA->GetItemByItemId(1), nullptr);
    EXPECT_EQ(trace.CountStartingWith("Select * from CACHE_DATA_TABLE"), 2);
}

int g_adds = 0;
int CountAdd(ULONGLONG, std::vector<CString>, CQItem*) { return ++g_adds; }

TEST_F(OrderInTheDatabase, ImportedItem_IsKnownByItsPathNotByItsGuid) {
    g_adds = 0;
    Stored(b, 1)->SetFileName("C:\\clip.avi");
    Stored(a, 2)->SetFileName("C:\\clip.avi");
    CQItem foreign;
    foreign.SetUniqueID(GuidOf(3));
    foreign.SetFileName("C:\\clip.avi");
    SetImportPort(CountAdd);
    EXPECT_EQ(a.AddItemFromImportLib(&foreign), 0);
    EXPECT_EQ(b.AddItemFromImportLib(&foreign), 0);
    EXPECT_EQ(g_adds, 0);
    // Base clips go by their names, whatever their paths.
    foreign.SetFileName("BaseClip");
    foreign.SetItemName("i1");
    EXPECT_EQ(b.AddItemFromImportLib(&foreign), 0);
    EXPECT_EQ(g_adds, 0);
    SetImportPort(nullptr);
}

// --- Copies of stored folders --------------------------------------------------------------------------------------

TEST_F(OrderInTheDatabase, RecursiveCopy_HasTheRowsOfItsSource) {
    CQFolder* below = AddSub(a, "below");
    ASSERT_EQ(below->InsertOrUpdateFolder(), 1);
    ASSERT_EQ(b.CopyRecursive(&a, 1), 1);
    CQFolder* copy = b.GetFolderByName("below");
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetDBId(), below->GetDBId());
    EXPECT_EQ(copy->UpdateFolderDb(), 1);
    EXPECT_EQ(Cell("select PARENT_ID from FOLDER_TABLE where FOLDER_NAME = 'below'"), std::to_string(b.GetDBId()));
}

// --- From gallery files and moved folders --------------------------------------------------------------------------

class FilmFile : public RecordedFile {
public:
    int LoadBlackBox(CQItem& item) override {
        GiveBlackBox(item, Pattern(300));
        return 1;
    }
    int LoadFilm(CQItem& item) override {
        GiveFilm(item, Pattern(900), 300);
        return 1;
    }
};

TEST_F(OrderInTheDatabase, ItemOfAGalleryFile_BringsItsPayloads) {
    FilmFile file;
    OpenFolder fileRoot;
    fileRoot.m_strFilePath = "lib.gal";
    CQItem* item = NewItem(1, "from a file");
    item->GetAttrib() = kAttribHasFilm;
    item->ChangeFilm(nullptr, 900, 300);
    item->SetParentFolder(&fileRoot);
    ASSERT_EQ(a.AddItemDb(item, 1), 1);
    EXPECT_EQ(Cell("select count(*) from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 2"), "1");
    EXPECT_EQ(Cell("select count(*) from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 1"), "1");
    fileRoot.m_strFilePath.Empty();
}

TEST_F(OrderInTheDatabase, FolderMovedInMemory_IsLoadedWithItsItemsAllTheSame) {
    for (const bool shortcuts : {false, true}) {
        library.Tools()->SetShortcuts(shortcuts);
        auto* moved = new CQFolder("moved", 0, 0, 0);
        a.AddFolder(moved, 0, 1);
        ASSERT_EQ(moved->InsertOrUpdateFolder(), 1);
        moved->DetachParent(0);
        b.AddFolder(moved, 0, 1);
        const auto number = static_cast<unsigned>(moved->GetDBId());
        library.Raw().Exec("insert into RELATION_TABLE(PARENT_ID, ITEM_ID, ITEM_INDEX) values(" +
                           std::to_string(number) + ", " + BlobLiteral(GuidOf(number)) + ", 0)");
        EXPECT_EQ(b.LoadSubFoldersFromDb(), 1);
        EXPECT_EQ(moved->GetItemsCount(), 1) << shortcuts;
    }
}

}  // namespace
}  // namespace qfc::test
