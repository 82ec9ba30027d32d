#include "db/LibraryCheck.h"

#include "db/LibrarySnapshot.h"
#include "tags/TagRecords.h"
#include "tests/db/DbTestSupport.h"
#include "tests/support/MemoryFaults.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <sqlite3.h>

namespace {

using namespace qfc::test;
using qfc::LibraryFinding;
using Kind = qfc::LibraryFindingKind;

class LibraryCheckTest : public LibraryTest {
protected:
    // A sound library: two galleries, folders in folders, a shared item, payloads of all kinds.
    void SetUp() override {
        LibraryTest::SetUp();
        m_root = AddGallery(1);
        m_deep = AddFolder("b", AddFolder("a", m_root));
        ASSERT_TRUE(AddItem(1, m_deep, 0, Repeated(3000, 1)));
        ASSERT_TRUE(AddItem(1, m_root));
        ASSERT_TRUE(AddItem(2, AddGallery(2), 0, Noise(300)));
        m_tools.reset();
    }

    std::vector<LibraryFinding> Check() {
        std::vector<LibraryFinding> findings;
        EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 1);
        return findings;
    }

    // The damage leads to exactly these findings.
    void ExpectFindings(const std::string& damage, const std::vector<std::pair<Kind, std::string>>& expected) {
        Exec(damage);
        std::vector<std::pair<Kind, std::string>> found;
        for (const LibraryFinding& finding : Check()) {
            found.emplace_back(finding.kind, finding.row);
            EXPECT_FALSE(finding.sentence.empty());
        }
        EXPECT_EQ(found, expected) << damage;
    }

    void ExpectOnly(Kind kind) {
        const auto findings = Check();
        ASSERT_EQ(findings.size(), 1U);
        EXPECT_EQ(findings[0].kind, kind);
        EXPECT_EQ(findings[0].row, "");
    }

    int m_root = 0;
    int m_deep = 0;
};

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

TEST_F(LibraryCheckTest, DamagedPagesAreReported) {
    std::string bytes = ReadFile(m_path);
    for (std::size_t i = 8192; i < bytes.size(); i += 3) bytes[i] = static_cast<char>(bytes[i] ^ 0x55);
    m_folder.Write("library.db", bytes);
    const auto findings = Check();
    EXPECT_TRUE(std::any_of(findings.begin(), findings.end(),
                            [](const LibraryFinding& finding) { return finding.kind == Kind::kDamagedFile; }));
}

// A copy of file and journal in the middle of a commit is what a crash leaves.
TEST_F(LibraryCheckTest, HotJournalNeedsRecoveryAndIsLeftAlone) {
    const std::string torn = m_folder / "torn.db";
    {
        RawDb writer(m_path);
        writer.Exec(
            "PRAGMA cache_size = 1; PRAGMA cache_spill = 1; BEGIN EXCLUSIVE; DELETE FROM CACHE_DATA_TABLE;"
            "INSERT INTO CACHE_DATA_TABLE VALUES(1, 0, zeroblob(500000), 0, x'09')");
        std::filesystem::copy_file(m_path, torn);
        std::filesystem::copy_file(m_path + "-journal", torn + "-journal");
    }
    const std::string file = ReadFile(torn);
    const std::string journal = ReadFile(torn + "-journal");
    ASSERT_FALSE(journal.empty());
    std::vector<LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(torn.c_str(), findings), 1);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].kind, Kind::kNeedsRecovery);
    EXPECT_EQ(ReadFile(torn), file);
    EXPECT_EQ(ReadFile(torn + "-journal"), journal);
    EXPECT_EQ(fnSnapshotLibrary(torn.c_str(), (m_folder / "copy.db").c_str()), 0);
}

// Does something at the start of the n-th statement of every connection opened while it lives.
class AtStatement {
public:
    AtStatement(int n, std::function<void()> act) : m_left(n), m_act(std::move(act)) {
        s_current = this;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(&OnOpen));
    }
    ~AtStatement() {
        sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&OnOpen));
        s_current = nullptr;
    }
    AtStatement(const AtStatement&) = delete;
    AtStatement& operator=(const AtStatement&) = delete;

    bool HasActed() const { return m_left <= 0; }

private:
    static int OnOpen(sqlite3* connection, char**, const sqlite3_api_routines*) {
        return sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, &OnStatement, nullptr);
    }
    static int OnStatement(unsigned, void*, void*, void*) {
        if (s_current != nullptr && --s_current->m_left == 0) s_current->m_act();
        return 0;
    }

    static inline AtStatement* s_current = nullptr;
    int m_left;
    std::function<void()> m_act;
};

// Another host may crash at any moment of the examination. Whatever was found before is worthless then.
TEST_F(LibraryCheckTest, HotJournalThatAppearsDuringTheExamination_IsTheOnlyFinding) {
    Exec("INSERT INTO GALLERY_TABLE VALUES(2, 555)");
    std::string journal;
    {
        RawDb writer(m_path);
        writer.Exec(
            "PRAGMA cache_size = 1; PRAGMA cache_spill = 1; BEGIN EXCLUSIVE; DELETE FROM CACHE_DATA_TABLE;"
            "INSERT INTO CACHE_DATA_TABLE VALUES(1, 0, zeroblob(500000), 0, x'09')");
        journal = ReadFile(m_path + "-journal");
        writer.Exec("ROLLBACK");
    }
    ASSERT_FALSE(journal.empty());
    int examined = 0;
    for (int n = 1;; ++n) {
        std::filesystem::remove(m_path + "-journal");
        std::vector<LibraryFinding> findings;
        bool hasActed = false;
        {
            AtStatement crash(n, [&] { m_folder.Write("library.db-journal", journal); });
            EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 1) << "statement " << n;
            hasActed = crash.HasActed();
        }
        ASSERT_EQ(findings.size(), 1U) << "statement " << n;
        EXPECT_EQ(findings[0].kind, hasActed ? Kind::kNeedsRecovery : Kind::kGalleryIdTwice) << "statement " << n;
        if (!hasActed) break;
        EXPECT_EQ(ReadFile(m_path + "-journal"), journal);
        ++examined;
    }
    EXPECT_GT(examined, 10);
}

TEST_F(LibraryCheckTest, CheckNeverWrites) {
    Exec("INSERT INTO GALLERY_TABLE VALUES(2, 555)");
    const std::string before = ReadFile(m_path);
    Check();
    EXPECT_EQ(ReadFile(m_path), before);
    EXPECT_EQ(m_folder.Entries().size(), 1U);
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
TEST_F(LibraryCheckTest, FileWhoseCheckFailsIsDamageOfTheFile) {
    ExpectFindings(
        "CREATE TABLE FOREIGN_TABLE(N); CREATE INDEX FOREIGN_INDEX ON FOREIGN_TABLE(N); PRAGMA writable_schema = 1;"
        "UPDATE sqlite_master SET sql = 'CREATE INDEX FOREIGN_INDEX ON FOREIGN_TABLE(N COLLATE FOREIGN_ORDER)'"
        " WHERE name = 'FOREIGN_INDEX'",
        {{Kind::kDamagedFile, ""}});
}

TEST(LibraryCheck, FileThatWritesAheadIsReportedAndNothingIsLeftBesideIt) {
    const TempFolder folder;
    const std::string path = folder / "library.db";
    RawDb(path).Exec("PRAGMA journal_mode = WAL; CREATE TABLE ITEM_TABLE(ITEM_ID)");
    ASSERT_EQ(folder.Entries().size(), 1U);
    std::vector<LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(path.c_str(), findings), 1);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].kind, Kind::kWriteAheadLog);
    EXPECT_EQ(fnSnapshotLibrary(path.c_str(), (folder / "copy.db").c_str()), 0);
    EXPECT_EQ(folder.Entries().size(), 1U);
}

// SQLite reads a log that merely lies there, though the header knows of none.
TEST_F(LibraryCheckTest, FileWithALogBesideItIsReportedAndLeftAlone) {
    m_folder.Write("library.db-wal", "newer pages");
    ExpectOnly(Kind::kWriteAheadLog);
    EXPECT_EQ(m_folder.Entries().size(), 2U);
    EXPECT_EQ(ReadFile(m_path + "-wal"), "newer pages");
}

// A look for the log that failed has not seen that there is none.
TEST_F(LibraryCheckTest, FileWithALogBesideIt_FailingAtAnyCallIsNotExamined) {
    m_folder.Write("library.db-wal", "newer pages");
    for (int n = 1;; ++n) {
        std::vector<LibraryFinding> findings;
        m_disk.FailAt(n, false, FaultVfs::Counted::kEverything);
        const int result = fnCheckLibrary(m_path.c_str(), findings);
        const bool failed = m_disk.HasFailed();
        m_disk.Heal();
        // A fault at the close no longer matters.
        EXPECT_TRUE(result == 1 || failed) << "call " << n;
        EXPECT_EQ(findings.size(), result == 1 ? 1U : 0U) << "call " << n;
        EXPECT_TRUE(findings.empty() || findings[0].kind == Kind::kWriteAheadLog) << "call " << n;
        EXPECT_EQ(ReadFile(m_path + "-wal"), "newer pages") << "call " << n;
        if (HasFailure() || !failed) break;
    }
}

TEST_F(LibraryCheckTest, EmptyFileKeepsTheJournalBesideIt) {
    m_folder.Write("library.db", "");
    m_folder.Write("library.db-journal", "unfinished business");
    Check();
    EXPECT_EQ(ReadFile(m_path), "");
    EXPECT_EQ(ReadFile(m_path + "-journal"), "unfinished business");
}

TEST_F(LibraryCheckTest, FileThatWritesAhead_FailingAtAnyReadIsNotExamined) {
    MarkAsWritingAhead(m_path);
    for (int n = 1;; ++n) {
        std::vector<LibraryFinding> findings;
        m_disk.FailAt(n, false, FaultVfs::Counted::kEverything);
        const int result = fnCheckLibrary(m_path.c_str(), findings);
        const bool failed = m_disk.HasFailed();
        m_disk.Heal();
        // A fault at the close no longer matters.
        EXPECT_TRUE(result == 1 || failed) << "call " << n;
        EXPECT_EQ(findings.size(), result == 1 ? 1U : 0U) << "call " << n;
        EXPECT_TRUE(findings.empty() || findings[0].kind == Kind::kWriteAheadLog) << "call " << n;
        EXPECT_EQ(m_folder.Entries().size(), 1U) << "call " << n;
        if (HasFailure() || !failed) break;
    }
}

// A disk that fails while the file is read says nothing about the file.
TEST_F(LibraryCheckTest, FailingAtAnyReadIsNotDamage) {
    m_disk.FailAt(0, false, FaultVfs::Counted::kEverything);
    EXPECT_TRUE(Check().empty());
    const int calls = m_disk.Calls();
    for (const bool sticky : {false, true}) {
        for (int n = 1;; ++n) {
            std::vector<LibraryFinding> findings;
            m_disk.FailAt(n, sticky, FaultVfs::Counted::kEverything);
            const int result = fnCheckLibrary(m_path.c_str(), findings);
            const bool failed = m_disk.HasFailed();
            m_disk.Heal();
            EXPECT_TRUE(findings.empty()) << "call " << n << ": " << findings[0].sentence;
            // The last calls give up locks.
            EXPECT_TRUE(result == 0 || !sticky || n > calls - 3) << "call " << n << " of " << calls;
            if (HasFailure()) return;
            if (failed) continue;
            EXPECT_EQ(result, 1);
            EXPECT_GT(n, 5);
            break;
        }
    }
}

// SQLite's own check reports damage and pages that it could not read in one answer, and in the same way.
TEST_F(LibraryCheckTest, FailingAtAnyReadOfADamagedFileAddsNothingToItsDamage) {
    Open();
    ASSERT_TRUE(AddItem(3, m_deep, 0, Noise(20000)));
    ASSERT_TRUE(AddItem(4, m_deep, 1, Noise(20000)));
    ASSERT_TRUE(m_tools->DeleteItemFromFolder(MakeGuid(4), m_deep));
    m_tools.reset();
    std::string bytes = ReadFile(m_path);
    bytes[4096] = 0x55;  // The kind of the second page: the root of the first table.
    m_folder.Write("library.db", bytes);
    const auto sentences = [](const std::vector<LibraryFinding>& findings) {
        std::vector<std::string> all;
        for (const LibraryFinding& finding : findings) all.push_back(finding.sentence);
        return all;
    };
    const auto damage = sentences(Check());
    ASSERT_FALSE(damage.empty());
    for (int n = 1;; ++n) {
        std::vector<LibraryFinding> findings;
        m_disk.FailAt(n, false, FaultVfs::Counted::kEverything);
        const int result = fnCheckLibrary(m_path.c_str(), findings);
        const bool failed = m_disk.HasFailed();
        m_disk.Heal();
        EXPECT_EQ(sentences(findings), result == 1 ? damage : std::vector<std::string>{}) << "call " << n;
        if (HasFailure()) return;
        if (failed) continue;
        EXPECT_EQ(result, 1);
        EXPECT_GT(n, 15);
        break;
    }
}

TEST_F(LibraryCheckTest, WithoutMemoryAtAnyCallNothingIsFound) {
    const std::string before = ReadFile(m_path);
    for (const bool sticky : {false, true}) {
        for (int n = 1;; n += n < 200 ? 1 : 11) {
            std::vector<LibraryFinding> findings;
            bool failed = false;
            {
                const MemoryFaults faults(n, sticky);
                fnCheckLibrary(m_path.c_str(), findings);
                failed = faults.HasFailed();
            }
            ASSERT_TRUE(findings.empty()) << "call " << n << ": " << findings[0].sentence;
            if (!failed) break;
        }
    }
    EXPECT_EQ(ReadFile(m_path), before);
}

TEST_F(LibraryCheckTest, BusyLibraryIsNotExamined) {
    RawDb writer(m_path);
    writer.Exec("BEGIN EXCLUSIVE");
    m_disk.SkipWaits();
    std::vector<LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 0);
    EXPECT_TRUE(findings.empty());
    writer.Exec("ROLLBACK");
    EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 1);
    EXPECT_TRUE(findings.empty());
}

}  // namespace
