#include "tests/folders/LoadFixture.h"

#include <gtest/gtest.h>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

class CQFolder_DbLoad : public LoadFixture {};

TEST_P(CQFolder_DbLoad, TranslatedNameOfAnotherNameIsForgotten) {
    CString& translated = gallery.*&OpenFolder::m_strTranslateName;
    gallery.GetFolderName() = "Before";
    translated = "Davor";
    ASSERT_EQ(Load(), 1);
    EXPECT_STREQ(gallery.GetFolderName(), "Root");
    EXPECT_STREQ(translated, "");
    translated = "Wurzel";
    ASSERT_EQ(Load(), 1);
    EXPECT_STREQ(translated, "Wurzel");
}

TEST_P(CQFolder_DbLoad, Tree_NeedsAnIdAToolsObjectAGalleryRowAndARootRow) {
    CQGallery none;
    EXPECT_EQ(none.LoadTreeFromDb(), 0);
    none.SetFolderID(kGallery);
    EXPECT_EQ(none.LoadTreeFromDb(), 0);
    none.SetDBTools(library.Tools());
    none.SetFolderID(0);
    EXPECT_EQ(none.LoadTreeFromDb(), 0);
    none.SetFolderID(77);
    EXPECT_EQ(none.LoadTreeFromDb(), 0);
    Sql("insert into GALLERY_TABLE values(78, NULL), (79, 500)");
    none.SetFolderID(78);
    EXPECT_EQ(none.LoadTreeFromDb(), 0);
    none.SetFolderID(79);
    EXPECT_EQ(none.LoadTreeFromDb(), 0);
}

TEST_P(CQFolder_DbLoad, Folder_TakesEveryColumn) {
    Sql("update FOLDER_TABLE set VERSION = '7974943A-25B8-405B-A276-A6037A049880', PREDEFINED_ID = 9, "
        "FOLDER_NAME = 'Gr\xC3\xBC\xC3\x9F"
        "e', ADOPT_TYPE = 3, TRUSTY_TYPE = 64, TYPE_EXTRA = 5, EXPAND_TYPE = 6, "
        "ORDER_INDEX = 7 where ID = 1");
    ASSERT_EQ(Load(), 1);
    EXPECT_EQ(gallery.GetDBId(), kRoot);
    EXPECT_EQ(gallery.GetVersion(), 4);
    EXPECT_EQ(gallery.GetFolderID(), 9u);
    EXPECT_STREQ(gallery.GetFolderName(),
                 "Gr\xC3\xBC\xC3\x9F"
                 "e");
    EXPECT_EQ(gallery.GetAdopt(), 3u);
    EXPECT_EQ(gallery.GetTrusty(), 64u);
    EXPECT_EQ(gallery.GetExtra(), 5u);
    EXPECT_EQ(gallery.GetExpandStatus(), 6);
    EXPECT_EQ(gallery.GetIndex(), 7);
}

TEST_P(CQFolder_DbLoad, Folder_ReadsNullsAsTheirDefaults) {
    Sql("insert into FOLDER_TABLE(ID, PARENT_ID) values(2, 1)");
    ASSERT_EQ(Load(), 1);
    CQFolder* folder = gallery.GetFirstSubFolder();
    ASSERT_NE(folder, nullptr);
    EXPECT_STREQ(FolderInside::Version(*folder), "");
    EXPECT_EQ(folder->GetFolderID(), 0xFFFFFFFFu);
    EXPECT_STREQ(folder->GetFolderName(), "");
    EXPECT_EQ(folder->GetAdopt(), 0xFFFFFFFFu);
    EXPECT_EQ(folder->GetTrusty(), 0xFFFFFFFFu);
    EXPECT_EQ(folder->GetExtra(), 0xFFFFFFFFu);
    EXPECT_EQ(folder->GetExpandStatus(), -1);
    EXPECT_EQ(folder->GetIndex(), -1);
}

TEST_P(CQFolder_DbLoad, Folder_OfATableWithoutTheOrderColumnHasNoIndex) {
    Sql("alter table FOLDER_TABLE drop column ORDER_INDEX");
    Sql("insert into FOLDER_TABLE(ID, PARENT_ID, FOLDER_NAME) values(2, 1, 'old')");
    ASSERT_EQ(Load(), 1);
    EXPECT_EQ(gallery.GetFolderByName("old")->GetIndex(), -1);
}

TEST_P(CQFolder_DbLoad, KeyFormNames_GetTrustyBits1And4) {
    const struct {
        const char* name;
        DWORD trusty;
    } rows[] = {
        {"Clips--Old", 5}, {"--Old", 0}, {"a--", 5}, {"--Old--New", 5}, {"a-b", 0}, {"", 0}, {"-", 0}, {"---", 5},
    };
    int id = 2;
    for (const auto& row : rows) AddFolderRow(id++, kRoot, row.name);
    ASSERT_EQ(Load(), 1);
    for (const auto& row : rows) EXPECT_EQ(gallery.GetFolderByName(row.name)->GetTrusty(), row.trusty) << row.name;
}

TEST_P(CQFolder_DbLoad, KeyFormBits_AreAddedToTheStoredOnes) {
    AddFolderRow(2, kRoot, "Clips--Old");
    Sql("update FOLDER_TABLE set TRUSTY_TYPE = 66 where ID = 2");
    Load();
    EXPECT_EQ(gallery.GetFirstSubFolder()->GetTrusty(), 71u);
}

TEST_P(CQFolder_DbLoad, SubFolders_StandByIndexAndByRowAmongEqualOnes) {
    AddFolderRow(2, kRoot, "b", 2);
    AddFolderRow(3, kRoot, "a", 1);
    AddFolderRow(4, kRoot, "c", 2);
    AddFolderRow(5, kRoot, "d", 1);
    AddFolderRow(6, 3, "deep", 1);
    ASSERT_EQ(Load(), 1);
    EXPECT_EQ(Names(gallery.GetFolderList()), (Texts{"a", "d", "b", "c"}));
    EXPECT_EQ(Names(gallery.GetFolderByName("a")->GetFolderList()), Texts{"deep"});
    const CQFolder* deep = gallery.GetFolderByPath("a\\deep");
    EXPECT_EQ(deep->GetDBId(), 6);
    EXPECT_EQ(deep->GetDBTools(), library.Tools());
    EXPECT_EQ(deep->GetParent()->GetDBId(), 3);
}

TEST_P(CQFolder_DbLoad, ManySubFoldersOfFewIndexes_StandByRowAmongEqualOnes) {
    const TiedFolders tied = ManyTiedFolders();
    int row = kRoot;
    for (const auto& [name, index] : tied.folders) AddFolderRow(++row, kRoot, name, index);
    ASSERT_EQ(Load(), 1);
    EXPECT_EQ(Names(gallery.GetFolderList()), tied.sorted);
}

TEST_P(CQFolder_DbLoad, SubFolders_GetStorageNumbersInTheOrderTheyAreAdded) {
    AddFolderRow(2, kRoot, "a", 9);
    AddFolderRow(3, kRoot, "b", 1);
    AddFolderRow(4, 2, "a1");
    Load();
    EXPECT_EQ(FolderInside::StorageNumber(*gallery.GetFolderByName("a")), 1u);
    EXPECT_EQ(FolderInside::StorageNumber(*gallery.GetFolderByName("b")), 2u);
    EXPECT_EQ(FolderInside::StorageNumber(*gallery.GetFolderByPath("a\\a1")), 3u);
}

TEST_P(CQFolder_DbLoad, Items_StandByTheirIndexWithFieldsAndTags) {
    AddFolderRow(2, kRoot, "A");
    AddItemRow(1, "last");
    AddItemRow(2, "first");
    Place(1, 2, 5);
    Place(2, 2, 1);
    Sql("insert into TAG_ITEM_RELATION_TABLE values(" + BlobLiteral(GuidOf(1)) + ", " + BlobLiteral(GuidOf(90)) + ")");
    ASSERT_EQ(Load(), 1);
    CQFolder* folder = gallery.GetFolderByName("A");
    EXPECT_EQ(ItemNames(folder->GetItemArray()), (Texts{"first", "last"}));
    CQItem* item = folder->GetItemArray()->GetAt(1);
    EXPECT_TRUE(item->IsTagExist(GuidOf(90)));
    EXPECT_EQ(item->fnGetDbTools(), library.Tools());
    EXPECT_EQ(item->GetParentFolder(), folder);
    EXPECT_EQ(item->GetNumber(), 1u);
    EXPECT_EQ(folder->GetAdopt() & 2u, 2u);
    EXPECT_TRUE(item->IsExistInGalleryItemMap());
}

TEST_P(CQFolder_DbLoad, ItemsOfTheRoot_AreNotLoaded) {
    AddItemRow(1, "own");
    Place(1, kRoot, 0);
    ASSERT_EQ(Load(), 1);
    EXPECT_EQ(gallery.GetItemArray(), nullptr);
}

TEST_P(CQFolder_DbLoad, SharedItem_IsOneObjectWhoseParentIsTheFolderLoadedFirst) {
    AddFolderRow(2, kRoot, "loaded first", 9);
    AddFolderRow(3, kRoot, "shown first", 1);
    AddItemRow(1, "shared");
    Place(1, 2, 0);
    Place(1, 3, 0);
    ASSERT_EQ(Load(), 1);
    CQFolder* first = gallery.GetFolderByName("loaded first");
    CQFolder* second = gallery.GetFolderByName("shown first");
    CQItem* item = first->GetItemArray()->GetAt(0);
    EXPECT_EQ(second->GetItemArray()->GetAt(0), item);
    EXPECT_EQ(item->GetParentFolder(), first);
    EXPECT_EQ(gallery.GetItemParentList(GuidOf(1)), (std::list<ULONGLONG>{reinterpret_cast<std::uintptr_t>(first),
                                                                          reinterpret_cast<std::uintptr_t>(second)}));
}

TEST_P(CQFolder_DbLoad, DepthFirst_TheItemsOfAFolderComeBeforeThoseOfItsSubFolders) {
    AddFolderRow(2, kRoot, "A");
    AddFolderRow(3, kRoot, "B");
    AddFolderRow(4, 2, "below A");
    AddItemRow(1, "in B and below A");
    AddItemRow(2, "in A and below A");
    Place(1, 3, 0);
    Place(1, 4, 0);
    Place(2, 2, 0);
    Place(2, 4, 1);
    Load();
    EXPECT_EQ(gallery.GetItemByGUID(GuidOf(1))->GetParentFolder()->GetDBId(), 4);
    EXPECT_EQ(gallery.GetItemByGUID(GuidOf(2))->GetParentFolder()->GetDBId(), 2);
}

TEST_P(CQFolder_DbLoad, LoadSubItems_Answers0AlsoAfterLoadingAll) {
    AddFolderRow(2, kRoot, "A");
    AddItemRow(1, "one");
    Load();
    Place(1, 2, 0);
    CQFolder* folder = gallery.GetFolderByName("A");
    EXPECT_EQ(folder->LoadSubItemsFromDb(), 0);
    EXPECT_EQ(folder->GetItemsCount(), 1);
    EXPECT_EQ(folder->LoadSubItemsFromDb(), 0);
    EXPECT_EQ(folder->GetItemsCount(), 1);
    EXPECT_EQ(CQFolder().LoadSubItemsFromDb(), 0);
}

TEST_P(CQFolder_DbLoad, APlacementWithoutItemRow_StillGivesAnItem) {
    AddFolderRow(2, kRoot, "A");
    Place(1, 2, 0);
    Load();
    ASSERT_EQ(gallery.GetFirstSubFolder()->GetItemsCount(), 1);
    EXPECT_TRUE(gallery.GetFirstSubFolder()->HasItem(GuidOf(1), 0));
}

TEST_P(CQFolder_DbLoad, ItemsOfAnotherDatabase_AreSeparateAndOutsideTheMap) {
    AddFolderRow(2, kRoot, "A");
    AddFolderRow(3, kRoot, "B");
    AddItemRow(1, "shared");
    Place(1, 2, 0);
    Place(1, 3, 0);
    SetCurrentDBTools(nullptr);
    ASSERT_EQ(Load(), 1);
    CQItem* inA = gallery.GetFolderByName("A")->GetItemArray()->GetAt(0);
    CQItem* inB = gallery.GetFolderByName("B")->GetItemArray()->GetAt(0);
    EXPECT_NE(inA, inB);
    EXPECT_TRUE(gallery.GetItemParentList(GuidOf(1)).empty());
    // Clearing leaves them alone: they are whoever's loaded them.
    gallery.Clear();
    EXPECT_TRUE(inA->GetItemName() == "shared");
    delete inA;
    delete inB;
}

TEST_P(CQFolder_DbLoad, TreeOfAnUnknownGallery_KeepsTheNegativeAnswer) {
    gallery.SetFolderID(77);
    gallery.SetDBTools(library.Tools());
    FolderInside::DbId(gallery) = 5;
    EXPECT_EQ(gallery.LoadTreeFromDb(), 0);
    EXPECT_LT(gallery.GetDBId(), 0);
}

TEST_P(CQFolder_DbLoad, FolderWithoutRow_Gives0) {
    CQFolder folder;
    EXPECT_EQ(folder.LoadFolderFromDb(), 0);
    EXPECT_EQ(folder.LoadSubFoldersFromDb(), 0);
    folder.SetDBTools(library.Tools());
    FolderInside::DbId(folder) = 999;
    folder.GetFolderName() = "before";
    EXPECT_EQ(folder.LoadFolderFromDb(), 0);
    EXPECT_TRUE(folder.GetFolderName() == "before");
}

INSTANTIATE_TEST_SUITE_P(Shortcuts, CQFolder_DbLoad, testing::Bool());

}  // namespace
}  // namespace qfc::test
