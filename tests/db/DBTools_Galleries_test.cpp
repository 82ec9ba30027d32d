#include "tests/db/DbTestSupport.h"
#include "tests/support/SqlTrace.h"

#include <algorithm>
#include <array>
#include <sqlite3.h>

namespace {

using qfc::StoredGallery;
using qfc::test::Literal;
using qfc::test::MakeGuid;
using qfc::test::RawDb;
using qfc::test::SqlTrace;

class DBToolsGalleries : public qfc::test::LibraryTest {
protected:
    bool DeleteTrees(std::vector<int> galleryIds) { return m_tools->DeleteFolderTrees(galleryIds); }
    std::string Dump() const { return qfc::test::DumpOf(m_path); }
    std::vector<RawDb::Row> FolderRow(int folder) const {
        return RawDb(m_path).Rows("select * from FOLDER_TABLE where ID = " + std::to_string(folder));
    }
};

TEST_F(DBToolsGalleries, GalleryIdAndRootNumberGoToTheirColumns) {
    EXPECT_TRUE(m_tools->InsertGallery(6, 42));
    EXPECT_EQ(RawDb(m_path).Rows("select GALLERY_FOLDER_ID, GALLERY_ID from GALLERY_TABLE"),
              (std::vector<RawDb::Row>{{"6", "42"}}));
}

TEST_F(DBToolsGalleries, RootThatIsStoredAlreadyIsRefused) {
    ASSERT_TRUE(m_tools->InsertGallery(6, 42));
    const std::string before = Dump();
    EXPECT_FALSE(m_tools->InsertGallery(7, 42));
    EXPECT_EQ(Dump(), before);
}

TEST_F(DBToolsGalleries, SecondRowForAGalleryIdIsAccepted) {
    EXPECT_TRUE(m_tools->InsertGallery(6, 42));
    EXPECT_TRUE(m_tools->InsertGallery(6, 43));
    EXPECT_EQ(m_tools->GetGalleryIdByFolder(6), 42);
}

TEST_F(DBToolsGalleries, RootOfAnUnknownGalleryIsMinusOne) { EXPECT_EQ(m_tools->GetGalleryIdByFolder(99), -1); }

TEST_F(DBToolsGalleries, RootThatIsNullIsMinusOne) {
    Exec("INSERT INTO GALLERY_TABLE VALUES(6, NULL)");
    EXPECT_EQ(m_tools->GetGalleryIdByFolder(6), -1);
}

TEST_F(DBToolsGalleries, RootIsMinusOneWhenTheQueryFails) {
    Exec("DROP TABLE GALLERY_TABLE");
    EXPECT_EQ(m_tools->GetGalleryIdByFolder(6), -1);
}

TEST_F(DBToolsGalleries, ListingNamesEveryStoredGallery) {
    int root = -1;
    ASSERT_TRUE(m_tools->InsertOrUpdateFolder("1.0", 6, "Filters", -1, -1, 0, -1, 0, -1, root));
    ASSERT_TRUE(m_tools->InsertGallery(6, root));
    ASSERT_TRUE(m_tools->InsertGallery(1, 77));
    std::vector<StoredGallery> galleries;
    ASSERT_TRUE(m_tools->QueryGalleries(galleries));
    ASSERT_EQ(galleries.size(), 2U);
    EXPECT_EQ(galleries[0].galleryId, 1);
    EXPECT_EQ(galleries[0].rootFolder, 77);
    EXPECT_TRUE(galleries[0].name.IsEmpty());
    EXPECT_EQ(galleries[1].galleryId, 6);
    EXPECT_EQ(galleries[1].rootFolder, root);
    EXPECT_EQ(galleries[1].name, "Filters");
}

TEST_F(DBToolsGalleries, ListingIsOrderedByIdAndThenByRow) {
    ASSERT_TRUE(m_tools->InsertGallery(6, 10));
    ASSERT_TRUE(m_tools->InsertGallery(1, 30));
    ASSERT_TRUE(m_tools->InsertGallery(6, 5));
    ASSERT_TRUE(m_tools->InsertGallery(1, 20));
    Exec("INSERT INTO FOLDER_TABLE(ID, FOLDER_NAME) VALUES(5, NULL), (10, 'first')");
    std::vector<StoredGallery> galleries;
    ASSERT_TRUE(m_tools->QueryGalleries(galleries));
    ASSERT_EQ(galleries.size(), 4U);
    const int roots[] = {30, 20, 10, 5};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(galleries[i].rootFolder, roots[i]) << i;
    EXPECT_EQ(galleries[2].rootFolder, m_tools->GetGalleryIdByFolder(6)) << "the first one is loaded";
    EXPECT_EQ(galleries[2].name, "first");
    EXPECT_TRUE(galleries[3].name.IsEmpty());
}

// Cut to 32 bits, or read as numbers, they would be listed as galleries that nobody can load.
TEST_F(DBToolsGalleries, ListingLeavesOutIdsThatAreNone) {
    AddGallery(2);
    Exec("INSERT INTO GALLERY_TABLE VALUES(4294967297, 11), (NULL, 12), ('abc', 13), (2.5, 14), (-2147483648, 15)");
    std::vector<StoredGallery> galleries;
    ASSERT_TRUE(m_tools->QueryGalleries(galleries));
    ASSERT_EQ(galleries.size(), 2U);
    EXPECT_EQ(galleries[0].galleryId, -2147483647 - 1);
    EXPECT_EQ(galleries[1].galleryId, 2);
}

TEST_F(DBToolsGalleries, FailedListingLeavesTheListAsItWas) {
    Exec("DROP TABLE GALLERY_TABLE");
    std::vector<StoredGallery> galleries(3);
    EXPECT_FALSE(m_tools->QueryGalleries(galleries));
    EXPECT_EQ(galleries.size(), 3U);
}

TEST_F(DBToolsGalleries, NewFolderGetsItsRowNumber) {
    int first = -1;
    int second = -1;
    EXPECT_TRUE(m_tools->InsertOrUpdateFolder("1.0", 5, "Größe", 1, 2, 3, -1, 4, 6, first));
    EXPECT_TRUE(m_tools->InsertOrUpdateFolder("1.0", 5, "b", 1, 2, 3, first, 4, 6, second));
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_EQ(FolderRow(first),
              (std::vector<RawDb::Row>{{"'1.0'", "5", "'Größe'", "1", "2", "3", "-1", "4", "6", "1"}}));
}

TEST_F(DBToolsGalleries, KnownFolderIsUpdatedAndKeepsItsNumber) {
    const int folder = AddFolder("before", -1);
    int number = folder;
    EXPECT_TRUE(m_tools->InsertOrUpdateFolder("2.0", 9, "behind", 8, 7, 6, 5, 4, 3, number));
    EXPECT_EQ(number, folder);
    EXPECT_EQ(FolderRow(folder),
              (std::vector<RawDb::Row>{{"'2.0'", "9", "'behind'", "8", "7", "6", "5", "4", "3", "1"}}));
}

TEST_F(DBToolsGalleries, UpdateOfAnUnknownFolderMakesNoRow) {
    int number = 55;
    EXPECT_TRUE(m_tools->InsertOrUpdateFolder("1.0", 0, "x", 0, 0, 0, -1, 0, 0, number));
    EXPECT_EQ(number, 55);
    EXPECT_EQ(Count("FOLDER_TABLE"), "0");
}

TEST_F(DBToolsGalleries, FailedInsertKeepsTheNumber) {
    Exec("DROP TABLE FOLDER_TABLE");
    int number = -1;
    EXPECT_FALSE(m_tools->InsertOrUpdateFolder("1.0", 0, "x", 0, 0, 0, -1, 0, 0, number));
    EXPECT_EQ(number, -1);
}

TEST_F(DBToolsGalleries, NewFolderThatIsGoneAtOnceHasTheNumberMinusOne) {
    Exec("CREATE TRIGGER GONE AFTER INSERT ON FOLDER_TABLE BEGIN DELETE FROM FOLDER_TABLE; END");
    int number = -1;
    EXPECT_TRUE(m_tools->InsertOrUpdateFolder("1.0", 0, "x", 0, 0, 0, -1, 0, 0, number));
    EXPECT_EQ(number, -1);
}

// The number is asked for behind the insert: the authoriser lets everything pass but that.
TEST_F(DBToolsGalleries, NewFolderWhoseNumberCannotBeAskedForIsRolledBack) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    sqlite3* connection = trace.Connection();
    const auto refuseTheNumber = [](void*, int action, const char*, const char* name, const char*, const char*) {
        const bool refused = action == SQLITE_FUNCTION && std::string_view(name) == "last_insert_rowid";
        return refused ? SQLITE_DENY : SQLITE_OK;
    };
    sqlite3_set_authorizer(connection, refuseTheNumber, nullptr);
    int number = -1;
    EXPECT_FALSE(m_tools->InsertOrUpdateFolder("1.0", 0, "x", 0, 0, 0, -1, 0, 0, number));
    sqlite3_set_authorizer(connection, nullptr, nullptr);
    EXPECT_EQ(number, -1);
    EXPECT_EQ(trace.CountStartingWith("INSERT into FOLDER_TABLE"), 1);
    EXPECT_EQ(trace.Count("ROLLBACK TRANSACTION;"), 1);
    EXPECT_EQ(Count("FOLDER_TABLE"), "0");
}

TEST_F(DBToolsGalleries, FolderNumbersAreNeverReused) {
    const int folder = AddFolder("gone", -1);
    ASSERT_TRUE(m_tools->DeleteFolderRow(folder));
    EXPECT_GT(AddFolder("next", -1), folder);
}

TEST_F(DBToolsGalleries, FolderIsFoundByItsNumber) {
    const int folder = AddFolder("here", -1);
    CppSQLite3Query query;
    ASSERT_TRUE(m_tools->QueryFolder(folder, query));
    ASSERT_FALSE(query.eof());
    EXPECT_STREQ(query.getStringField("FOLDER_NAME"), "here");
    EXPECT_EQ(query.getIntField("ID"), folder);
    ASSERT_TRUE(m_tools->QueryFolder(folder + 1, query));
    EXPECT_TRUE(query.eof());
}

TEST_F(DBToolsGalleries, ChildrenAreFoundByTheirParent) {
    const int root = AddFolder("root", -1);
    const int first = AddFolder("a", root);
    const int second = AddFolder("b", root);
    AddFolder("below a", first);
    CppSQLite3Query query;
    ASSERT_TRUE(m_tools->QueryChildFolders(root, query));
    EXPECT_EQ(query.getIntField("ID"), first);
    query.nextRow();
    EXPECT_EQ(query.getIntField("ID"), second);
    query.nextRow();
    EXPECT_TRUE(query.eof());
}

TEST_F(DBToolsGalleries, DeletingAFolderRowLeavesItsChildrenAndPlacements) {
    const int root = AddGallery(1);
    const int folder = AddFolder("a", root);
    AddFolder("below", folder);
    ASSERT_TRUE(AddItem(1, folder));
    EXPECT_TRUE(m_tools->DeleteFolderRow(folder));
    EXPECT_EQ(Count("FOLDER_TABLE"), "2");
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
}

// --- Deleting whole trees ---

TEST_F(DBToolsGalleries, DeletedTreeTakesFoldersAndPlacementsButNoItems) {
    const int root = AddGallery(1);
    const int folder = AddFolder("a", root);
    const int deep = AddFolder("b", folder);
    ASSERT_TRUE(AddItem(1, deep));
    const int other = AddGallery(2);
    ASSERT_TRUE(AddItem(2, AddFolder("kept", other)));
    EXPECT_TRUE(DeleteTrees({1}));
    EXPECT_EQ(Cell("select group_concat(GALLERY_FOLDER_ID) from GALLERY_TABLE"), "'2'");
    EXPECT_EQ(Count("FOLDER_TABLE"), "2");
    EXPECT_EQ(Cell("select count(*) || ':' || max(hex(ITEM_ID)) from RELATION_TABLE"),
              "'1:02000000000000000000000000000077'");
    EXPECT_EQ(Count("ITEM_TABLE"), "2");
}

TEST_F(DBToolsGalleries, SeveralTreesGoInOneCall) {
    AddFolder("a", AddGallery(1));
    AddFolder("b", AddGallery(2));
    AddFolder("c", AddGallery(3));
    EXPECT_TRUE(DeleteTrees({1, 3}));
    EXPECT_EQ(Count("FOLDER_TABLE"), "2");
    EXPECT_EQ(m_tools->GetGalleryIdByFolder(2), 3);
}

// -1 is the parent of every root: gathering from it would take the whole library.
TEST_F(DBToolsGalleries, UnknownGalleryDeletesNothingOfTheOthers) {
    ASSERT_TRUE(AddItem(1, AddFolder("a", AddGallery(1))));
    ASSERT_TRUE(AddItem(2, AddFolder("b", AddGallery(2))));
    const std::string before = Dump();
    EXPECT_FALSE(DeleteTrees({99}));
    EXPECT_FALSE(DeleteTrees({1, 99}));
    EXPECT_FALSE(DeleteTrees({99, 1}));
    EXPECT_EQ(Dump(), before);
}

TEST_F(DBToolsGalleries, ChildrenThatCannotBeAskedForKeepTheWholeTree) {
    AddFolder("a", AddGallery(1));
    Exec("ALTER TABLE FOLDER_TABLE RENAME COLUMN PARENT_ID TO OTHER_ID");
    const std::string before = Dump();
    EXPECT_FALSE(DeleteTrees({1}));
    EXPECT_EQ(Dump(), before);
}

TEST_F(DBToolsGalleries, UnknownGalleryEndsTheCallBeforeAnythingIsGathered) {
    AddGallery(1);
    m_tools.reset();
    SqlTrace trace;
    Open();
    trace.Clear();
    EXPECT_FALSE(DeleteTrees({1, 99}));
    EXPECT_EQ(trace.Count("Select * from FOLDER_TABLE where PARENT_ID = ?"), 0);
    EXPECT_EQ(trace.Count("ROLLBACK TRANSACTION;"), 1);
}

// A row number that reads as a negative folder would gather the roots of all galleries.
TEST_F(DBToolsGalleries, ChildWhoseNumberWrapsToMinusOneDeletesNothing) {
    const int root = AddGallery(1);
    AddFolder("b", AddGallery(2));
    Exec("INSERT INTO FOLDER_TABLE(FOLDER_NAME, PARENT_ID, ID) VALUES('huge', " + std::to_string(root) +
         ", 4294967295)");
    const std::string before = Dump();
    EXPECT_FALSE(DeleteTrees({1}));
    EXPECT_EQ(Dump(), before);
}

TEST_F(DBToolsGalleries, CycleOfParentsIsGatheredOnce) {
    const int root = AddGallery(1);
    const int folder = AddFolder("a", root);
    const int deep = AddFolder("b", folder);
    Exec("UPDATE FOLDER_TABLE SET PARENT_ID = " + std::to_string(deep) + " WHERE ID = " + std::to_string(root));
    EXPECT_TRUE(DeleteTrees({1}));
    EXPECT_EQ(Count("FOLDER_TABLE"), "0");
}

TEST_F(DBToolsGalleries, FolderThatIsItsOwnParentIsGatheredOnce) {
    const int root = AddGallery(1);
    Exec("UPDATE FOLDER_TABLE SET PARENT_ID = ID WHERE ID = " + std::to_string(root));
    EXPECT_TRUE(DeleteTrees({1, 1}));
    EXPECT_EQ(Count("FOLDER_TABLE"), "0");
}

TEST_F(DBToolsGalleries, EmptyListDeletesNothingAndSucceeds) {
    AddGallery(1);
    EXPECT_TRUE(DeleteTrees({}));
    EXPECT_EQ(Count("FOLDER_TABLE"), "1");
}

TEST_F(DBToolsGalleries, FailureInTheMiddleOfADeletionRollsAllOfItBack) {
    const int root = AddGallery(1);
    ASSERT_TRUE(AddItem(1, AddFolder("a", root)));
    Exec("CREATE TRIGGER STOP BEFORE DELETE ON RELATION_TABLE BEGIN SELECT RAISE(FAIL, 'no'); END");
    const std::string before = Dump();
    EXPECT_FALSE(DeleteTrees({1}));
    EXPECT_EQ(Dump(), before);
}

TEST_F(DBToolsGalleries, DeletionGoesGalleriesFirstThenEachFolderWithItsPlacements) {
    AddFolder("a", AddGallery(1));
    m_tools.reset();
    SqlTrace trace;
    Open();
    m_tools->SetShortcuts(false);
    trace.Clear();
    ASSERT_TRUE(DeleteTrees({1}));
    const std::vector<std::string> expected{
        "BEGIN TRANSACTION;",
        "Select * from GALLERY_TABLE where GALLERY_FOLDER_ID = ?",
        "Select * from FOLDER_TABLE where PARENT_ID = ?",
        "Select * from FOLDER_TABLE where PARENT_ID = ?",
        "Delete from GALLERY_TABLE where GALLERY_FOLDER_ID = ?",
        "Delete from FOLDER_TABLE where id = ?",
        "Delete from RELATION_TABLE where PARENT_ID = ?",
        "Delete from FOLDER_TABLE where id = ?",
        "Delete from RELATION_TABLE where PARENT_ID = ?",
        "END TRANSACTION;",
    };
    EXPECT_EQ(trace.Statements(), expected);
}

// --- Row numbers beyond 32 bits: cut to their low half they would be the numbers of other rows ---

constexpr char kFolderBeyond32Bits[] = "INSERT INTO FOLDER_TABLE(ID, PARENT_ID) VALUES(4294967297, ";

TEST_F(DBToolsGalleries, RootBeyond32BitsIsNone) {
    Exec("INSERT INTO GALLERY_TABLE VALUES(6, 4294967297)");
    EXPECT_EQ(m_tools->GetGalleryIdByFolder(6), -1);
    std::vector<StoredGallery> galleries;
    ASSERT_TRUE(m_tools->QueryGalleries(galleries));
    ASSERT_EQ(galleries.size(), 1U);
    EXPECT_EQ(galleries[0].rootFolder, -1);
}

TEST_F(DBToolsGalleries, RootThatIsNoIntegerIsNone) {
    Exec("INSERT INTO GALLERY_TABLE VALUES(6, 1.5), (7, 'one'), (8, x'31')");
    for (const int gallery : {6, 7, 8}) EXPECT_EQ(m_tools->GetGalleryIdByFolder(gallery), -1) << gallery;
}

TEST_F(DBToolsGalleries, DeletingATreeWithARootBeyond32BitsTakesNothing) {
    ASSERT_EQ(AddGallery(1), 1);
    Exec("INSERT INTO GALLERY_TABLE VALUES(2, 4294967297)");
    const std::string before = Dump();
    EXPECT_FALSE(DeleteTrees({2}));
    EXPECT_EQ(Dump(), before);
}

TEST_F(DBToolsGalleries, DeletingATreeWithAFolderBeyond32BitsTakesNothingOfOtherTrees) {
    ASSERT_EQ(AddGallery(1), 1);
    const int root = AddGallery(2);
    Exec(kFolderBeyond32Bits + std::to_string(root) + ")");
    const std::string before = Dump();
    EXPECT_FALSE(DeleteTrees({2}));
    EXPECT_EQ(Dump(), before);
    EXPECT_TRUE(DeleteTrees({1}));
}

TEST_F(DBToolsGalleries, NewFolderThatWouldGetANumberBeyond32BitsIsRefused) {
    Exec(std::string(kFolderBeyond32Bits) + "-1)");
    const std::string before = Dump();
    int folder = -1;
    EXPECT_FALSE(m_tools->InsertOrUpdateFolder("1.0", 0, "late", -1, -1, 0, -1, 0, -1, folder));
    EXPECT_EQ(folder, -1);
    EXPECT_EQ(Dump(), before);
}

TEST_F(DBToolsGalleries, DeletingAGalleryWithoutARootOrWithANegativeOneTakesNothing) {
    AddGallery(1);
    Exec(
        "INSERT INTO GALLERY_TABLE VALUES(2, NULL), (3, -1), (4, -7); INSERT INTO FOLDER_TABLE(ID, PARENT_ID)"
        " VALUES(-7, -1)");
    const std::string before = Dump();
    for (const int gallery : {2, 3, 4}) {
        EXPECT_FALSE(DeleteTrees({1, gallery})) << gallery;
        EXPECT_EQ(Dump(), before) << gallery;
    }
}

}  // namespace
