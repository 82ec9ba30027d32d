// What the rows of a library may be found to be.
#include "db/LibraryCheck.h"

#include "tags/TagRecords.h"
#include "tests/db/LibraryCheckTest.h"

#include <algorithm>
#include <filesystem>

namespace {

using namespace qfc::test;
using qfc::LibraryFinding;
using Kind = qfc::LibraryFindingKind;

const std::string kItem1 = qfc::GuidToText(MakeGuid(1));
const std::string kItem2 = qfc::GuidToText(MakeGuid(2));

TEST_F(LibraryCheckTest, SoundLibraryHasNoFindings) { EXPECT_TRUE(Check().empty()); }

TEST_F(LibraryCheckTest, NewAndClearedLibrariesHaveNoFindings) {
    Open();
    ASSERT_TRUE(m_tools->ClearDatabase());
    EXPECT_TRUE(Check().empty());
    Open();
    EXPECT_TRUE(Check().empty());
}

TEST_F(LibraryCheckTest, LibraryOfBeforeFolderOrderHasNoFindings) {
    std::vector<LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(QFCLIB_TEST_DATA "/library-before-folder-order.db", findings), 1);
    EXPECT_TRUE(findings.empty());
}

TEST_F(LibraryCheckTest, MissingFileIsNotExaminedAndNotMade) {
    std::vector<LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary((m_folder / "missing.db").c_str(), findings), 0);
    EXPECT_EQ(fnCheckLibrary(m_folder.Path().c_str(), findings), 0);
    EXPECT_EQ(fnCheckLibrary(nullptr, findings), 0);
    EXPECT_TRUE(findings.empty());
    EXPECT_EQ(m_folder.Entries(), std::vector<std::string>{"library.db"});
}

TEST_F(LibraryCheckTest, FileThatIsNoDatabaseIsNotExamined) {
    std::vector<LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(m_folder.Write("text", std::string(3000, 'x')).c_str(), findings), 0);
    EXPECT_TRUE(findings.empty());
}

TEST_F(LibraryCheckTest, DatabaseOfSomethingElseIsNoLibrary) {
    const std::string path = m_folder / "other.db";
    RawDb(path).Exec("CREATE TABLE NOTES(N)");
    std::vector<LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(path.c_str(), findings), 1);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].kind, Kind::kNoLibrary);
}

TEST_F(LibraryCheckTest, RelationWithoutItem) {
    ExpectFindings("INSERT INTO RELATION_TABLE VALUES(" + std::to_string(m_deep) + ", " + Literal(MakeGuid(9)) + ", 0)",
                   {{Kind::kRelationWithoutItem, qfc::GuidToText(MakeGuid(9))}});
}

TEST_F(LibraryCheckTest, RelationWithoutFolder) {
    ExpectFindings("INSERT INTO RELATION_TABLE VALUES(999, " + Literal(MakeGuid(1)) + ", 0)",
                   {{Kind::kRelationWithoutFolder, kItem1}});
}

TEST_F(LibraryCheckTest, ItemThatNoFolderHolds) {
    ExpectFindings("DELETE FROM RELATION_TABLE WHERE ITEM_ID = " + Literal(MakeGuid(2)),
                   {{Kind::kItemWithoutFolder, kItem2}});
}

TEST_F(LibraryCheckTest, PayloadWithoutItem) {
    ExpectFindings(
        "UPDATE CACHE_DATA_TABLE SET ITEM_ID = " + Literal(MakeGuid(9)) + " WHERE ITEM_ID = " + Literal(MakeGuid(2)),
        {{Kind::kPayloadWithoutItem, qfc::GuidToText(MakeGuid(9))}});
}

TEST_F(LibraryCheckTest, PayloadsThatDoNotUnpackToTheirSize) {
    const std::string of1 = " WHERE ITEM_ID = " + Literal(MakeGuid(1));
    for (const char* damage :
         {"PRE_COMPRESSED_SIZE = 2999", "PRE_COMPRESSED_SIZE = 2147483647", "PRE_COMPRESSED_SIZE = -1",
          "PRE_COMPRESSED_SIZE = NULL", "COMPRESSED_SIZE = COMPRESSED_SIZE + 1", "COMPRESSED_SIZE = -5",
          "COMPRESSED_DATA = x''", "COMPRESSED_DATA = NULL", "COMPRESSED_DATA = randomblob(100), COMPRESSED_SIZE = 100",
          "COMPRESSED_SIZE = 0"}) {
        const std::string kept = m_folder / "kept.db";
        std::filesystem::copy_file(m_path, kept);
        ExpectFindings("UPDATE CACHE_DATA_TABLE SET " + std::string(damage) + of1,
                       {{Kind::kPayloadUnreadable, kItem1}});
        std::filesystem::rename(kept, m_path);
    }
}

TEST_F(LibraryCheckTest, FolderWithoutParent) {
    ExpectFindings("INSERT INTO FOLDER_TABLE(ID, PARENT_ID) VALUES(70, 999), (71, NULL), (72, 70)",
                   {{Kind::kFolderWithoutParent, "70"}, {Kind::kFolderWithoutParent, "71"}});
}

TEST_F(LibraryCheckTest, CyclesOfParentsAreReportedOnceEach) {
    ExpectFindings(
        "INSERT INTO FOLDER_TABLE(ID, PARENT_ID) VALUES(70, 72), (71, 70), (72, 71), (73, 72), (80, 80), (81, 80)",
        {{Kind::kFolderCycle, "70"}, {Kind::kFolderCycle, "80"}});
}

TEST_F(LibraryCheckTest, GalleryIdStoredTwice) {
    ExpectFindings("INSERT INTO GALLERY_TABLE VALUES(2, 555), (2, 556)", {{Kind::kGalleryIdTwice, "2"}});
}

TEST_F(LibraryCheckTest, GuidsOfAWrongLengthOrType) {
    ExpectFindings(
        "INSERT INTO TAG_ITEM_RELATION_TABLE VALUES(x'01', 'text');"
        "INSERT INTO LIB_TAG_TABLE(TAG_GUID, CATEGORY_GUID) VALUES(NULL, zeroblob(17));"
        "INSERT INTO ITEM_AUTO_LOADED_TABLE VALUES(1, zeroblob(15), '')",
        {{Kind::kBadGuid, "ITEM_AUTO_LOADED_TABLE"},
         {Kind::kBadGuid, "LIB_TAG_TABLE"},
         {Kind::kBadGuid, "LIB_TAG_TABLE"},
         {Kind::kBadGuid, "TAG_ITEM_RELATION_TABLE"},
         {Kind::kBadGuid, "TAG_ITEM_RELATION_TABLE"}});
}

TEST_F(LibraryCheckTest, LinkWithoutTag) {
    ExpectFindings("INSERT INTO TAG_ITEM_RELATION_TABLE SELECT ITEM_ID, zeroblob(16) FROM ITEM_TABLE LIMIT 1",
                   {{Kind::kLinkWithoutTag, qfc::GuidToText(GUID_NULL)}});
}

TEST_F(LibraryCheckTest, LinkWithoutItem) {
    ExpectFindings(
        "INSERT INTO LIB_TAG_CATEGORY_TABLE(CATEGORY_GUID) VALUES(x'00112233445566778899AABBCCDDEEFF');"
        "INSERT INTO LIB_TAG_TABLE(TAG_GUID, CATEGORY_GUID) VALUES(zeroblob(16), x'00112233445566778899AABBCCDDEEFF');"
        "INSERT INTO TAG_ITEM_RELATION_TABLE VALUES(x'FFEEDDCCBBAA99887766554433221100', zeroblob(16))",
        {{Kind::kLinkWithoutItem, "CCDDEEFF-AABB-8899-7766-554433221100"}});
}

TEST_F(LibraryCheckTest, TagWithoutCategory) {
    ExpectFindings("INSERT INTO LIB_TAG_TABLE(TAG_GUID, CATEGORY_GUID) VALUES(zeroblob(16), zeroblob(16))",
                   {{Kind::kTagWithoutCategory, qfc::GuidToText(GUID_NULL)}});
}

TEST_F(LibraryCheckTest, TextOf16CharactersInATagTableIsABadGuidOnly) {
    ExpectFindings(
        "INSERT INTO TAG_ITEM_RELATION_TABLE VALUES('0123456789abcdef', 'fedcba9876543210');"
        "INSERT INTO LIB_TAG_TABLE(TAG_GUID, CATEGORY_GUID) VALUES(zeroblob(16), '0123456789abcdef')",
        {{Kind::kBadGuid, "LIB_TAG_TABLE"},
         {Kind::kBadGuid, "TAG_ITEM_RELATION_TABLE"},
         {Kind::kBadGuid, "TAG_ITEM_RELATION_TABLE"}});
}

// Removing an item leaves its links, deleting a category its tags: leftovers, as specified, not damage.
TEST_F(LibraryCheckTest, OrdinaryRemovalsLeaveLinksWithoutItemAndTagsWithoutCategory) {
    Open();
    CTagCategory category;
    category.m_guid = MakeGuid(200);
    CLibTag& tag = category.m_tags.emplace_back();
    tag.m_guid = MakeGuid(201);
    tag.m_guidCategory = category.m_guid;
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({category}));
    ASSERT_TRUE(m_tools->InsertTag2Item(MakeGuid(1), tag.m_guid));
    EXPECT_TRUE(Check().empty());
    ASSERT_TRUE(m_tools->DeleteItemFromFolder(MakeGuid(1), m_deep));
    ASSERT_TRUE(m_tools->DeleteItemFromFolder(MakeGuid(1), m_root));
    ASSERT_TRUE(m_tools->DeleteCategories({&category.m_guid, 1}));
    m_tools.reset();
    ExpectFindings("", {{Kind::kLinkWithoutItem, kItem1}, {Kind::kTagWithoutCategory, qfc::GuidToText(tag.m_guid)}});
}

TEST_F(LibraryCheckTest, TagTablesWithoutTheirColumnsAreDamage) {
    ExpectFindings(
        "CREATE TABLE OTHER AS SELECT 1 AS N; DROP TABLE LIB_TAG_TABLE; ALTER TABLE OTHER RENAME TO LIB_TAG_TABLE",
        {{Kind::kDamagedFile, "LIB_TAG_TABLE"}});
}

TEST_F(LibraryCheckTest, ItemWithoutAGuid) {
    ExpectFindings("INSERT INTO ITEM_TABLE(ITEM_NAME, ITEM_ID) VALUES('nobody', NULL)",
                   {{Kind::kItemWithoutFolder, "NULL"}, {Kind::kBadGuid, "ITEM_TABLE"}});
}

TEST(LibraryFindingName, IsDistinctForEveryKind) {
    std::vector<std::string> names;
    for (int kind = 0; kind <= static_cast<int>(Kind::kWriteAheadLog); ++kind) {
        names.emplace_back(qfc::LibraryFindingName(static_cast<Kind>(kind)));
        EXPECT_NE(names.back(), "unknown");
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
    EXPECT_STREQ(qfc::LibraryFindingName(Kind::kFolderCycle), "folder-cycle");
    EXPECT_STREQ(qfc::LibraryFindingName(static_cast<Kind>(99)), "unknown");
}

TEST_F(LibraryCheckTest, RowNumbersThatAreNone) {
    ExpectFindings(
        "INSERT INTO FOLDER_TABLE(ID, PARENT_ID) VALUES(4294967297, -1), (70, 'text');"
        "INSERT INTO GALLERY_TABLE VALUES(5, 8589934593), (6, 2.5);"
        "INSERT INTO RELATION_TABLE VALUES(4294967297, " +
            Literal(MakeGuid(1)) + ", 0)",
        {{Kind::kFolderWithoutParent, "70"},
         {Kind::kBadRowNumber, "4294967297"},
         {Kind::kBadRowNumber, "70"},
         {Kind::kBadRowNumber, "5"},
         {Kind::kBadRowNumber, "6"},
         {Kind::kBadRowNumber, kItem1}});
}

TEST_F(LibraryCheckTest, GalleryIdsThatAreNone) {
    ExpectFindings("INSERT INTO GALLERY_TABLE VALUES(4294967297, 11), (NULL, 12), ('abc', 13), (NULL, 14)",
                   {{Kind::kBadRowNumber, "4294967297"},
                    {Kind::kBadRowNumber, "NULL"},
                    {Kind::kBadRowNumber, "abc"},
                    {Kind::kBadRowNumber, "NULL"}});
}

TEST_F(LibraryCheckTest, FoldersBeyond32BitsCloseNoCycleWithOthers) {
    ExpectFindings("INSERT INTO FOLDER_TABLE(ID, PARENT_ID) VALUES(70, -1), (4294967366, 70)",
                   {{Kind::kBadRowNumber, "4294967366"}});
}

TEST_F(LibraryCheckTest, TableWithoutAColumnIsDamage) {
    Exec("ALTER TABLE CACHE_DATA_TABLE DROP COLUMN COMPRESSED_SIZE");
    const auto findings = Check();
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].kind, Kind::kDamagedFile);
    EXPECT_EQ(findings[0].row, "CACHE_DATA_TABLE");
}

// The column of the other table of the same name would stand in for the missing one, and nothing would be found.
TEST_F(LibraryCheckTest, TableWithoutTheColumnThatOthersPointAtIsDamage) {
    ExpectFindings("CREATE TABLE OTHER AS SELECT 1 AS N; DROP TABLE ITEM_TABLE; ALTER TABLE OTHER RENAME TO ITEM_TABLE",
                   {{Kind::kDamagedFile, "ITEM_TABLE"}});
}

TEST_F(LibraryCheckTest, TableThatSeveralRulesCannotReadIsNamedOnce) {
    ExpectFindings(
        "CREATE TABLE OTHER AS SELECT 1 AS N; DROP TABLE FOLDER_TABLE; ALTER TABLE OTHER RENAME TO FOLDER_TABLE",
        {{Kind::kDamagedFile, "FOLDER_TABLE"}});
}

TEST_F(LibraryCheckTest, EachTableThatCannotBeReadIsNamed) {
    ExpectFindings(
        "ALTER TABLE RELATION_TABLE RENAME COLUMN ITEM_ID TO OTHER_ID; ALTER TABLE ITEM_TABLE RENAME COLUMN ITEM_ID TO"
        " OTHER_ID",
        {{Kind::kDamagedFile, "ITEM_TABLE"}, {Kind::kDamagedFile, "RELATION_TABLE"}});
}

// An index in an order that only another program knows: the check itself ends with an error, not with an answer.

}  // namespace
