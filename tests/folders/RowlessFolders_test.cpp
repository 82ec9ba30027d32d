#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <memory>

// Folders that are not in the database. Their row number, -1, is also what the database has as the parent of every
// gallery root, so asking for it would reach the other galleries.
namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

// With shortcuts (true) trees are read at once, without them row by row.
class RowlessFolders : public testing::TestWithParam<bool> {
protected:
    RowlessFolders() {
        library.Tools()->SetShortcuts(GetParam());
        EXPECT_EQ(tree.pA->AddItemDb(NewFilledItem(1), 1), 1);
        unstored = AddSub(tree.Gallery(), "unstored");
        EXPECT_EQ(unstored->GetDBId(), -1);
    }
    std::string Count(const std::string& table) { return library.Raw().Cell("select count(*) from " + table); }

    CurrentLibrary library;
    StoredTree tree{library.Tools()};
    CQFolder* unstored = nullptr;
};

TEST_P(RowlessFolders, LoadSubFolders_HasNothingToLoad) {
    EXPECT_EQ(unstored->LoadSubFoldersFromDb(), 0);
    EXPECT_EQ(unstored->GetFirstSubFolder(), nullptr);
    CQGallery root;
    root.SetDBTools(library.Tools());
    EXPECT_EQ(root.LoadSubFoldersFromDb(), 0);
    EXPECT_EQ(root.GetFirstSubFolder(), nullptr);
}

TEST_P(RowlessFolders, LoadBelowTheirParent_LeavesThemAsTheyAre) {
    CQGallery other;
    other.SetFolderID(2);
    other.SetDBTools(library.Tools());
    ASSERT_EQ(other.InsertOrUpdateFolder(), 1);
    unstored->GetFolderName() = "mine";
    unstored->SetAdopt(64);
    library.Raw().Exec("insert into FOLDER_TABLE(ID, PARENT_ID, FOLDER_NAME, ADOPT_TYPE) values(-1, 500, 'x', 1)");
    library.Raw().Exec("insert into RELATION_TABLE(PARENT_ID, ITEM_ID, ITEM_INDEX) values(-1, " +
                       BlobLiteral(GuidOf(8)) + ", 0)");
    EXPECT_EQ(tree.Gallery().LoadSubFoldersFromDb(), 1);
    EXPECT_EQ(unstored->GetFirstSubFolder(), nullptr);
    EXPECT_EQ(unstored->GetFolderName(), "mine");
    EXPECT_EQ(unstored->GetAdopt(), 64u);
    EXPECT_EQ(unstored->GetItemsCount(), 0);
}

TEST_P(RowlessFolders, DeletingOneAfterALoad_LeavesTheOtherGalleriesTheirContent) {
    CQGallery other;
    other.SetFolderID(2);
    other.SetDBTools(library.Tools());
    ASSERT_EQ(other.InsertOrUpdateFolder(), 1);
    ASSERT_EQ(other.InsertOrUpdateGallery(), 1);
    CQFolder* otherUnstored = AddSub(other, "unstored");
    other.LoadSubFoldersFromDb();
    otherUnstored->LoadSubFoldersFromDb();
    const std::string folders = Count("FOLDER_TABLE");
    EXPECT_EQ(other.DeleteFolderFromDb(-1), 1);
    EXPECT_EQ(Count("FOLDER_TABLE"), folders);
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
}

TEST_P(RowlessFolders, LoadFolderAndItems_TakeNoRowOfNumberMinusOne) {
    library.Raw().Exec("insert into FOLDER_TABLE(ID, PARENT_ID, FOLDER_NAME) values(-1, 500, 'x')");
    library.Raw().Exec("insert into RELATION_TABLE(PARENT_ID, ITEM_ID, ITEM_INDEX) values(-1, " +
                       BlobLiteral(GuidOf(8)) + ", 0)");
    EXPECT_EQ(unstored->LoadFolderFromDb(), 0);
    EXPECT_EQ(unstored->GetFolderName(), "unstored");
    EXPECT_EQ(unstored->LoadSubItemsFromDb(), 0);
    EXPECT_EQ(unstored->GetItemsCount(), 0);
}

TEST_P(RowlessFolders, FolderBelowOne_IsStoredBelowNobody) {
    CQFolder* below = AddSub(*unstored, "below");
    EXPECT_EQ(below->InsertOrUpdateFolder(), 1);
    EXPECT_EQ(library.Raw().Cell("select PARENT_ID from FOLDER_TABLE where FOLDER_NAME = 'below'"), "-1");
}

INSTANTIATE_TEST_SUITE_P(AtOnceAndRowByRow, RowlessFolders, testing::Bool());

}  // namespace
}  // namespace qfc::test
