#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <memory>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;
using Row = RawDb::Row;

class CQFolder_DbWrite : public testing::Test {
protected:
    CQFolder* StoredSub(CQFolder& parent, const char* name, int index = -1) {
        CQFolder* folder = AddSub(parent, name);
        folder->SetIndex(index);
        EXPECT_EQ(folder->InsertOrUpdateFolder(), 1);
        return folder;
    }
    CQItem* StoredItem(CQFolder& folder, unsigned number) {
        auto* item = new CountedItem(destroyed);
        item->SetUniqueID(GuidOf(number));
        EXPECT_EQ(folder.AddItemDb(item, 1), 1);
        return item;
    }
    std::string Count(const std::string& tableAndCondition) {
        return library.Raw().Cell("select count(*) from " + tableAndCondition);
    }
    bool HasRow(int id) { return Count("FOLDER_TABLE where ID = " + std::to_string(id)) == "1"; }

    int destroyed = 0;
    CurrentLibrary library;
    StoredTree tree{library.Tools()};
    CQGallery& gallery = tree.Gallery();
};

TEST_F(CQFolder_DbWrite, InsertOrUpdateFolder_WritesEveryColumnAndReceivesTheRowNumber) {
    auto* folder = new OpenFolder("Name", 11, 12, 13);
    gallery.AddFolder(folder, 0, 1);
    folder->SetFolderID(14);
    folder->SetExpandStatus(15);
    folder->SetIndex(16);
    folder->m_strVersion = "7974943A-25B8-405B-A276-A6037A049880";
    ASSERT_EQ(folder->InsertOrUpdateFolder(), 1);
    EXPECT_EQ(folder->GetDBId(), 4);
    const auto select = [&] {
        return library.Raw().Rows(
            "select VERSION, PREDEFINED_ID, FOLDER_NAME, ADOPT_TYPE, TRUSTY_TYPE, TYPE_EXTRA, PARENT_ID, EXPAND_TYPE, "
            "ORDER_INDEX from FOLDER_TABLE where ID = 4");
    };
    EXPECT_EQ(select(), std::vector<Row>{(Row{"'7974943A-25B8-405B-A276-A6037A049880'", "14", "'Name'", "12", "11",
                                              "13", std::to_string(gallery.GetDBId()), "15", "16"})});
    folder->SetIndex(17);
    folder->GetFolderName() = "Renamed";
    ASSERT_EQ(folder->InsertOrUpdateFolder(), 1);
    EXPECT_EQ(folder->GetDBId(), 4);
    EXPECT_EQ(select().at(0).at(2), "'Renamed'");
    EXPECT_EQ(select().at(0).at(8), "17");
    EXPECT_EQ(Count("FOLDER_TABLE"), "4");
}

TEST_F(CQFolder_DbWrite, ANewFolder_StoresTheTagOfNoVersionAndARootHasParentMinusOne) {
    EXPECT_EQ(library.Raw().Cell("select VERSION from FOLDER_TABLE where ID = 2"),
              "'00000000-0000-0000-0000-000000000000'");
    EXPECT_EQ(library.Raw().Cell("select PARENT_ID from FOLDER_TABLE where ID = 1"), "-1");
}

TEST_F(CQFolder_DbWrite, WithoutDBTools_NothingIsWritten) {
    CQFolder folder;
    EXPECT_EQ(folder.InsertOrUpdateFolder(), 0);
    EXPECT_EQ(folder.InsertOrUpdateGallery(), 0);
    FolderInside::DbId(folder) = 5;
    EXPECT_EQ(folder.UpdateFolderDb(), 0);
}

TEST_F(CQFolder_DbWrite, UpdateFolderDb_NeedsARow) {
    CQFolder* folder = AddSub(gallery, "new");
    EXPECT_EQ(folder->UpdateFolderDb(), 0);
    EXPECT_EQ(Count("FOLDER_TABLE"), "3");
    tree.pA->GetFolderName() = "other";
    EXPECT_EQ(tree.pA->UpdateFolderDb(), 1);
    EXPECT_EQ(Count("FOLDER_TABLE where FOLDER_NAME = 'other'"), "1");
}

TEST_F(CQFolder_DbWrite, InsertOrUpdateGallery_TiesTheGalleryIdToTheRootRow) {
    EXPECT_EQ(library.Raw().Rows("select * from GALLERY_TABLE"), std::vector<Row>{(Row{"1", "1"})});
    EXPECT_EQ(gallery.InsertOrUpdateGallery(), 0);
}

TEST_F(CQFolder_DbWrite, UpdateSubFolderIndex_RewritesAllDescendants) {
    CQFolder* a1 = StoredSub(*tree.pA, "A1");
    CQFolder* a2 = StoredSub(*tree.pA, "A2");
    tree.pA->SetIndex(2);
    tree.pB->SetIndex(1);
    a1->SetIndex(8);
    a2->SetIndex(7);
    EXPECT_EQ(gallery.UpdateSubFolderIndexDB(), 1);
    EXPECT_EQ(library.Raw().Rows("select ORDER_INDEX from FOLDER_TABLE order by ID"),
              (std::vector<Row>{{"-1"}, {"2"}, {"1"}, {"8"}, {"7"}}));
}

TEST_F(CQFolder_DbWrite, UpdateSubFolderIndex_NeedsAListAndWritesNothingForASingleSubFolder) {
    EXPECT_EQ(tree.pA->UpdateSubFolderIndexDB(), 0);
    CQFolder* only = StoredSub(*tree.pA, "only");
    CQFolder* x = StoredSub(*only, "x");
    CQFolder* y = StoredSub(*only, "y");
    for (CQFolder* folder : {only, x, y}) folder->SetIndex(50);
    EXPECT_EQ(tree.pA->UpdateSubFolderIndexDB(), 1);
    EXPECT_EQ(gallery.UpdateSubFolderIndexDB(), 1);
    EXPECT_EQ(Count("FOLDER_TABLE where ORDER_INDEX = 50"), "0");
}

TEST_F(CQFolder_DbWrite, DeleteFolderFromDb_EmptiesTheFolderButLeavesItsRow) {
    CQFolder* below = StoredSub(*tree.pA, "below");
    StoredSub(*below, "deeper");
    StoredItem(*tree.pA, 1);
    StoredItem(*below, 2);
    EXPECT_EQ(tree.pA->DeleteFolderFromDb(), 1);
    EXPECT_EQ(Count("FOLDER_TABLE"), "3");
    EXPECT_TRUE(HasRow(tree.pA->GetDBId()));
    EXPECT_EQ(Count("RELATION_TABLE"), "0");
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_EQ(destroyed, 2);
    EXPECT_TRUE(tree.pA->GetFolderList()->IsEmpty());
    EXPECT_EQ(tree.pA->GetItemsCount(), 0);
}

TEST_F(CQFolder_DbWrite, DeleteFolderFromDb_KeepsItemsThatOtherFoldersHold) {
    CQItem* item = StoredItem(*tree.pA, 1);
    tree.pB->AddItemDb(item, 1);
    tree.pA->DeleteFolderFromDb();
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    EXPECT_EQ(item->GetParentFolder(), tree.pB);
}

TEST_F(CQFolder_DbWrite, DeleteFolderFromDb_DropsNullEntries) {
    StoredItem(*tree.pA, 1);
    tree.pA->GetItemArray()->InsertAt(0, nullptr);
    StoredSub(*tree.pA, "below");
    tree.pA->GetFolderList()->AddHead(nullptr);
    EXPECT_EQ(tree.pA->DeleteFolderFromDb(), 1);
    EXPECT_EQ(destroyed, 1);
    EXPECT_TRUE(tree.pA->GetFolderList()->IsEmpty());
}

TEST_F(CQFolder_DbWrite, DeleteFolderFromDb_TakesAFolderPutInByHandWithAllBelowIt) {
    StoredSub(*tree.pA, "first");
    auto* byHand = new CQFolder("by hand", 0, 0, 0);
    tree.pA->GetFolderList()->AddTail(byHand);
    byHand->SetDBTools(library.Tools());
    ASSERT_EQ(byHand->InsertOrUpdateFolder(), 1);
    CQFolder* below = StoredSub(*byHand, "below");
    StoredItem(*StoredSub(*tree.pA, "last"), 1);
    below->AddItem(NewItem(2), 1);
    AddSub(*StoredSub(*below, "deeper"), "without a row");
    ASSERT_EQ(Count("FOLDER_TABLE"), "8");
    EXPECT_EQ(tree.pA->DeleteFolderFromDb(), 1);
    EXPECT_TRUE(tree.pA->GetFolderList()->IsEmpty());
    EXPECT_EQ(Count("FOLDER_TABLE"), "3");
    EXPECT_EQ(Count("RELATION_TABLE"), "0");
    EXPECT_EQ(destroyed, 1);
}

TEST_F(CQFolder_DbWrite, DeleteFolderFromDb_EndsAlthoughEveryRemovalIsRefused) {
    for (unsigned number = 1; number <= 5; ++number) StoredItem(*tree.pA, number);
    library.Raw().Exec("create trigger refuse before delete on RELATION_TABLE begin select raise(abort, 'no'); end");
    EXPECT_EQ(tree.pA->DeleteFolderFromDb(), 1);
    EXPECT_EQ(tree.pA->GetItemsCount(), 0);
    EXPECT_EQ(Count("RELATION_TABLE"), "5");
    EXPECT_EQ(destroyed, 5);
}

TEST_F(CQFolder_DbWrite, DeleteFolderFromDb_OfAFolderWithoutRowEndsItsItems) {
    CQFolder* unstored = AddSub(gallery, "unstored");
    unstored->AddItem(new CountedItem(destroyed), 1);
    EXPECT_EQ(unstored->DeleteFolderFromDb(), 1);
    EXPECT_EQ(unstored->GetItemsCount(), 0);
    EXPECT_EQ(destroyed, 1);
}

TEST_F(CQFolder_DbWrite, DeleteSubFolder_TakesItsContentItsRowAndTheObject) {
    StoredItem(*tree.pA, 1);
    const int row = tree.pA->GetDBId();
    EXPECT_EQ(gallery.DeleteFolderFromDb(row), 1);
    EXPECT_FALSE(HasRow(row));
    EXPECT_EQ(Names(gallery.GetFolderList()), Texts{"B"});
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
}

TEST_F(CQFolder_DbWrite, DeleteSubFolder_OfAnUnknownRowTakesTheLastAndDeletesTheAskedRow) {
    StoredItem(*tree.pA, 1);
    StoredItem(*tree.pB, 2);
    const int rowOfB = tree.pB->GetDBId();
    library.Raw().Exec("insert into FOLDER_TABLE(ID, PARENT_ID) values(999, -1)");
    EXPECT_EQ(gallery.DeleteFolderFromDb(999), 1);
    EXPECT_EQ(Names(gallery.GetFolderList()), Texts{"A"});
    EXPECT_FALSE(HasRow(999));
    EXPECT_TRUE(HasRow(rowOfB));
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    EXPECT_EQ(destroyed, 1);
}

TEST_F(CQFolder_DbWrite, DeleteSubFolder_WithoutSubFoldersGives0) {
    EXPECT_EQ(tree.pA->DeleteFolderFromDb(5), 0);
    StoredSub(*tree.pA, "below");
    tree.pA->DeleteFolderFromDb();
    EXPECT_EQ(tree.pA->DeleteFolderFromDb(5), 0);
}

TEST_F(CQFolder_DbWrite, DetachParentWithData_EmptiesTheFolderInTheDatabaseAndLeavesItsRow) {
    StoredItem(*tree.pA, 1);
    const int row = tree.pA->GetDBId();
    const std::unique_ptr<CQFolder> detached(tree.pA);
    EXPECT_EQ(detached->DetachParent(1), 1);
    EXPECT_TRUE(HasRow(row));
    EXPECT_EQ(Count("RELATION_TABLE"), "0");
    EXPECT_EQ(destroyed, 1);
}

TEST_F(CQFolder_DbWrite, DetachParentWithoutData_LeavesTheDatabaseAlone) {
    StoredItem(*tree.pA, 1);
    const std::unique_ptr<CQFolder> detached(tree.pA);
    EXPECT_EQ(detached->DetachParent(0), 1);
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
}

TEST_F(CQFolder_DbWrite, RemoveSubFolder_EmptiesEverythingAndLeavesTheRowsOfTheFolders) {
    StoredItem(*tree.pA, 1);
    StoredItem(*StoredSub(*tree.pA, "below"), 2);
    EXPECT_EQ(gallery.RemoveSubFolder(), 1);
    EXPECT_EQ(Count("RELATION_TABLE"), "0");
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_EQ(Count("FOLDER_TABLE"), "4");
    EXPECT_EQ(destroyed, 2);
    EXPECT_TRUE(gallery.GetFolderList()->IsEmpty());
}

TEST_F(CQFolder_DbWrite, AStoredTree_IsReadBackAsItWas) {
    tree.pA->SetIndex(2);
    tree.pB->SetIndex(1);
    StoredSub(*tree.pA, "A1", 1);
    StoredItem(*tree.pB, 1);
    gallery.UpdateSubFolderIndexDB();
    LoadedTree loaded(library.Tools());
    EXPECT_EQ(Names(loaded.Gallery().GetFolderList()), (Texts{"B", "A"}));
    EXPECT_EQ(Names(loaded.pA->GetFolderList()), Texts{"A1"});
    EXPECT_NE(loaded.Item(1), nullptr);
}

}  // namespace
}  // namespace qfc::test
