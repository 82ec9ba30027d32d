#include "db/Schema.h"

#include "platform/text/CodePages.h"
#include "tests/db/DbTestSupport.h"
#include "tests/db/StoredTables.h"
#include "tests/support/SqlTrace.h"

#include <bit>
#include <filesystem>
#include <sqlite3.h>
#include <utility>

namespace {

using qfc::test::Collapsed;
using qfc::test::LibraryTest;
using qfc::test::RawDb;
using qfc::test::SqlTrace;
using qfc::test::StoredTables;
using qfc::test::TempFolder;

struct ExpectedTable {
    const char* name;
    const char* create;
};

// The stored texts, with white space as single blanks and without the closing semicolon.
const ExpectedTable kExpected[] = {
    {"GALLERY_TABLE", "CREATE TABLE GALLERY_TABLE( GALLERY_FOLDER_ID INTEGER, GALLERY_ID INTEGER UNIQUE)"},
    {"FOLDER_TABLE",
     "CREATE TABLE FOLDER_TABLE( VERSION TEXT, PREDEFINED_ID INTEGER, FOLDER_NAME TEXT, ADOPT_TYPE INTEGER, "
     "TRUSTY_TYPE INTEGER, TYPE_EXTRA INTEGER, PARENT_ID INTEGER, EXPAND_TYPE INTEGER, ORDER_INDEX INTEGER, ID "
     "INTEGER PRIMARY KEY AUTOINCREMENT)"},
    {"ITEM_TABLE",
     "CREATE TABLE ITEM_TABLE( CUR_THUMB_FRAME_NUM INTEGER, ORG_THUMB_FRAME_NUM INTEGER, BBID INTEGER, ITEM_TYPE "
     "INTEGER, ITEM_NAME TEXT, DESCRIPTION TEXT, ANNOTATION TEXT, FILE_NAME TEXT, ATTRIB INTEGER, TEMPLATE_PATH "
     "TEXT, TIMESTAMP INTEGER, FRAME_SIZE INTEGER, FILM_SIZE INTEGER, DELETABLE INTEGER, ITEM_ID BLOB PRIMARY KEY)"},
    {"CACHE_DATA_TABLE",
     "CREATE TABLE CACHE_DATA_TABLE( PRE_COMPRESSED_SIZE INTEGER, COMPRESSED_SIZE INTEGER, COMPRESSED_DATA BLOB, "
     "CACHE_DATA_TYPE INTEGER, ITEM_ID BLOB NOT NULL, PRIMARY KEY(CACHE_DATA_TYPE, ITEM_ID))"},
    {"RELATION_TABLE",
     "CREATE TABLE RELATION_TABLE( PARENT_ID INTEGER NOT NULL, ITEM_ID BLOB NOT NULL, ITEM_INDEX INTEGER NOT NULL, "
     "PRIMARY KEY(PARENT_ID, ITEM_ID))"},
    {"DEL_TABLE", "CREATE TABLE DEL_TABLE( FILE_NAME TEXT, FOLDER_ID TEXT, PRIMARY KEY(FILE_NAME, FOLDER_ID))"},
    {"FLT_FILE_TABLE", "CREATE TABLE FLT_FILE_TABLE( FILE_NAME TEXT PRIMARY KEY, FILTER_COUNT INTEGER)"},
    {"FLT_TABLE",
     "CREATE TABLE FLT_TABLE( DSORVFT_DATA BLOB, DSVFTABLE_DATA BLOB, FILE_NAME TEXT, ITEM_ID BLOB PRIMARY KEY)"},
    {"TRANSITION_TABLE", "CREATE TABLE TRANSITION_TABLE( FILE_NAME TEXT, DSORVFX_DATA BLOB, ITEM_ID BLOB PRIMARY KEY)"},
    {"ITEM_AUTO_LOADED_TABLE",
     "CREATE TABLE ITEM_AUTO_LOADED_TABLE( FOLDER_ID INTEGER, ITEM_ID BLOB, FILE_PATH TEXT, PRIMARY KEY(FOLDER_ID, "
     "ITEM_ID, FILE_PATH))"},
    {"LIB_TAG_CATEGORY_TABLE",
     "CREATE TABLE LIB_TAG_CATEGORY_TABLE( CATEGORY_NAME TEXT, CATEGORY_GALLERY INTEGER, CATEGORY_DELETABLE INTEGER, "
     "CATEGORY_TYPE INTEGER, CATEGORY_GUID BLOB PRIMARY KEY)"},
    {"LIB_TAG_TABLE",
     "CREATE TABLE LIB_TAG_TABLE( TAG_NAME TEXT, CATEGORY_GUID BLOB, TAG_TYPE INTEGER, TAG_CHECKED INTEGER, "
     "TAG_DELETABLE INTEGER, TAG_PICTURE_SIZE INTEGER, TAG_PICTURE_DATA BLOB, TAG_GUID BLOB PRIMARY KEY)"},
    {"TAG_ITEM_RELATION_TABLE",
     "CREATE TABLE TAG_ITEM_RELATION_TABLE( ITEM_GUID BLOB, TAGS_GUID BLOB, PRIMARY KEY(ITEM_GUID, TAGS_GUID))"},
};

void DropSubset(CppSQLite3DB& db, unsigned subset) {
    for (std::size_t table = 0; table < std::size(kExpected); ++table) {
        if ((subset >> table & 1U) == 0) continue;
        db.execQuery(("DROP TABLE " + std::string(kExpected[table].name)).c_str());
    }
}

std::string ExistenceQuery(const std::string& table) {
    return "select tbl_name from sqlite_master where name='" + table + "' AND tbl_name='" + table + "';";
}

bool OpensAsLibrary(const std::string& path) {
    bool ok = false;
    const DBTools tools(CString(path.c_str()), ok);
    return ok;
}

using SchemaTest = LibraryTest;

TEST_F(SchemaTest, NewFileHasTheThirteenTablesAndSqlitesOwnOnly) {
    auto stored = StoredTables(m_path);
    EXPECT_EQ(stored.erase("sqlite_sequence"), 1U);
    for (const ExpectedTable& table : kExpected) {
        EXPECT_EQ(stored[table.name], table.create);
        stored.erase(table.name);
    }
    EXPECT_TRUE(stored.empty()) << "an additional table: " << stored.begin()->first;
}

TEST_F(SchemaTest, OnlyAutomaticIndexesAndNoViewsOrTriggers) {
    EXPECT_EQ(Cell("select count(*) from sqlite_master where type in ('view', 'trigger')"), "0");
    EXPECT_EQ(Cell("select count(*) from sqlite_master where type = 'index' and sql is not null"), "0");
}

TEST(Schema, NewFileIsAskedForAndGivenEachTableInOrder) {
    const TempFolder folder;
    SqlTrace trace;
    ASSERT_TRUE(OpensAsLibrary(folder / "new.db"));
    const auto sent = trace.Statements();
    ASSERT_EQ(sent.size(), 26U);
    for (std::size_t i = 0; i < 13; ++i) {
        EXPECT_EQ(sent[2 * i], ExistenceQuery(kExpected[i].name));
        EXPECT_EQ(Collapsed(sent[2 * i + 1]), kExpected[i].create);
        EXPECT_EQ(sent[2 * i + 1].back(), ';');
    }
}

TEST_F(SchemaTest, CompleteFileIsAskedThirteenTimesAndGivenNothing) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    const auto sent = trace.Statements();
    ASSERT_EQ(sent.size(), 13U);
    for (std::size_t i = 0; i < 13; ++i) EXPECT_EQ(sent[i], ExistenceQuery(kExpected[i].name));
}

TEST_F(SchemaTest, AnyMissingTableIsMadeAgain) {
    for (const ExpectedTable& table : kExpected) {
        m_tools.reset();
        Exec(std::string("DROP TABLE ") + table.name);
        Open();
        EXPECT_EQ(StoredTables(m_path)[table.name], table.create);
    }
}

TEST(Schema, ExistingTableIsNeverAltered) {
    const TempFolder folder;
    const std::string path = folder / "odd.db";
    RawDb(path).Exec("CREATE TABLE ITEM_TABLE(SOMETHING); INSERT INTO ITEM_TABLE VALUES(7)");
    ASSERT_TRUE(OpensAsLibrary(path));
    EXPECT_EQ(StoredTables(path)["ITEM_TABLE"], "CREATE TABLE ITEM_TABLE(SOMETHING)");
    EXPECT_EQ(RawDb(path).Cell("select SOMETHING from ITEM_TABLE"), "7");
}

TEST(Schema, FileThatIsNoDatabaseIsRefusedAndLeftAlone) {
    const TempFolder folder;
    const std::string text(5000, 'x');
    const std::string path = folder.Write("text.db", text);
    EXPECT_FALSE(OpensAsLibrary(path));
    EXPECT_EQ(qfc::test::ReadFile(path), text);
}

// --- Clearing ---

TEST_F(SchemaTest, ClearDropsTenTablesAndKeepsTheTags) {
    Exec(
        "INSERT INTO LIB_TAG_TABLE(TAG_NAME, TAG_GUID) VALUES('sun', x'01');"
        "INSERT INTO LIB_TAG_CATEGORY_TABLE(CATEGORY_NAME, CATEGORY_GUID) VALUES('sky', x'02');"
        "INSERT INTO TAG_ITEM_RELATION_TABLE VALUES(x'03', x'01')");
    EXPECT_TRUE(m_tools->ClearDatabase());
    auto stored = StoredTables(m_path);
    stored.erase("sqlite_sequence");
    EXPECT_EQ(stored.size(), 3U);
    EXPECT_EQ(Cell("select TAG_NAME from LIB_TAG_TABLE"), "'sun'");
    EXPECT_EQ(Cell("select CATEGORY_NAME from LIB_TAG_CATEGORY_TABLE"), "'sky'");
    EXPECT_EQ(Count("TAG_ITEM_RELATION_TABLE"), "1");
}

TEST_F(SchemaTest, ClearedTablesComeBackEmptyWithTheNextConnection) {
    AddItem(1, AddGallery(1));
    ASSERT_TRUE(m_tools->ClearDatabase());
    Open();
    for (const ExpectedTable& table : kExpected) EXPECT_EQ(Count(table.name), "0");
}

TEST_F(SchemaTest, ClearSendsTenDropsInOrderInOneTransaction) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    trace.Clear();
    ASSERT_TRUE(m_tools->ClearDatabase());
    const std::vector<std::string> drops{
        "BEGIN TRANSACTION;",
        "DROP TABLE IF EXISTS CACHE_DATA_TABLE;",
        "DROP TABLE IF EXISTS DEL_TABLE;",
        "DROP TABLE IF EXISTS FLT_FILE_TABLE;",
        "DROP TABLE IF EXISTS FLT_TABLE;",
        "DROP TABLE IF EXISTS FOLDER_TABLE;",
        "DROP TABLE IF EXISTS GALLERY_TABLE;",
        "DROP TABLE IF EXISTS ITEM_TABLE;",
        "DROP TABLE IF EXISTS RELATION_TABLE;",
        "DROP TABLE IF EXISTS TRANSITION_TABLE;",
        "DROP TABLE IF EXISTS ITEM_AUTO_LOADED_TABLE;",
        "END TRANSACTION;",
    };
    EXPECT_EQ(trace.Statements(), drops);
}

// --- Export ---

TEST_F(SchemaTest, ExportCopiesTheWholeLibrary) {
    AddItem(1, AddGallery(1), 0, qfc::test::Repeated(50000, 3));
    const std::string target = m_folder / "export.db";
    EXPECT_TRUE(m_tools->ExportDatabase(target.c_str()));
    EXPECT_EQ(qfc::test::DumpOf(target), qfc::test::DumpOf(m_path));
}

TEST_F(SchemaTest, ExportOverwritesAnExistingDatabase) {
    const std::string target = m_folder / "export.db";
    RawDb(target).Exec("CREATE TABLE OLD(N)");
    EXPECT_TRUE(m_tools->ExportDatabase(target.c_str()));
    EXPECT_EQ(qfc::test::DumpOf(target), qfc::test::DumpOf(m_path));
}

TEST_F(SchemaTest, ExportIntoAMissingFolderFails) {
    EXPECT_FALSE(m_tools->ExportDatabase((m_folder / "missing/export.db").c_str()));
    EXPECT_FALSE(m_tools->ExportDatabase(""));
}

TEST_F(SchemaTest, ExportOntoItselfFailsAndChangesNothing) {
    AddItem(1, AddGallery(1));
    const std::string before = qfc::test::DumpOf(m_path);
    EXPECT_FALSE(m_tools->ExportDatabase(m_path.c_str()));
    EXPECT_EQ(qfc::test::DumpOf(m_path), before);
    EXPECT_TRUE(AddItem(2, 1));
}

TEST_F(SchemaTest, ExportOntoATextFileFailsAndKeepsIt) {
    const std::string text = m_folder.Write("notes.txt", std::string(3000, 'x'));
    EXPECT_FALSE(m_tools->ExportDatabase(text.c_str()));
    EXPECT_EQ(qfc::test::ReadFile(text), std::string(3000, 'x'));
}

TEST_F(SchemaTest, ExportTargetIsInTheAnsiCodePage) {
    const std::string page = qfc::AnsiCodePage();
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_TRUE(m_tools->ExportDatabase((m_folder / "caf\xE9.db").c_str()));
    ASSERT_TRUE(qfc::SetAnsiCodePage(page.c_str()));
    EXPECT_EQ(qfc::test::DumpOf(m_folder / "caf\xC3\xA9.db"), qfc::test::DumpOf(m_path));
}

// --- Missing tables ---

// All 8,192 subsets of the tables are dropped and made again.
TEST_F(SchemaTest, AnySubsetOfTheTablesIsCompleted) {
    m_tools.reset();
    CppSQLite3DB db;
    db.open(m_path.c_str());
    const auto schema = [&] {
        constexpr char kAll[] =
            "select group_concat(sql, ';') from (select sql from sqlite_master where type = 'table' order by name)";
        return std::string(db.execQuery(kAll).getStringField(0));
    };
    const std::string complete = schema();
    for (unsigned subset = 0; subset < 1U << std::size(kExpected); ++subset) {
        db.beginTransaction();
        DropSubset(db, subset);
        ASSERT_EQ(schema() == complete, subset == 0);
        qfc::schema::Ensure(db);
        ASSERT_EQ(schema(), complete) << "subset " << subset;
        db.rollbackTransaction();
    }
}

// The same at a start, for each table alone, each pair, and every 97th of the others.
TEST_F(SchemaTest, StartCompletesASubsetOfTheTables) {
    const auto complete = StoredTables(m_path);
    for (unsigned subset = 0; subset < 1U << std::size(kExpected); ++subset) {
        if (std::popcount(subset) > 2 && subset % 97 != 0) continue;
        m_tools.reset();
        {
            CppSQLite3DB db;
            db.open(m_path.c_str());
            db.beginTransaction();
            DropSubset(db, subset);
            db.commitTransaction();
        }
        ASSERT_EQ(StoredTables(m_path) == complete, subset == 0);
        Open();
        ASSERT_EQ(StoredTables(m_path), complete) << "subset " << subset;
    }
}

// Another process makes the table between our look and our making of it.
class LostRace {
public:
    explicit LostRace(std::string other) : m_other(std::move(other)) {}

    static int OnStatement(unsigned, void* self, void* statement, void*) {
        auto& race = *static_cast<LostRace*>(self);
        const std::string_view sql = sqlite3_sql(static_cast<sqlite3_stmt*>(statement));
        if (race.m_other.empty() || sql != ExistenceQuery("ITEM_TABLE")) return 0;
        RawDb(std::exchange(race.m_path, {})).Exec(std::exchange(race.m_other, {}));
        return 0;
    }

    std::string m_path;
    std::string m_other;
};

class SchemaRace : public SchemaTest {
protected:
    // Ensures the tables of the file while the other process does what it does behind the look for the item table.
    void EnsureWhile(const char* other) {
        m_tools.reset();
        Exec("DROP TABLE ITEM_TABLE");
        CppSQLite3DB db;
        db.open(m_path.c_str());
        LostRace race(other);
        race.m_path = m_path;
        sqlite3_trace_v2(db.handle(), SQLITE_TRACE_PROFILE, &LostRace::OnStatement, &race);
        qfc::schema::Ensure(db);
        EXPECT_TRUE(race.m_other.empty()) << "the race was not run";
    }
};

TEST_F(SchemaRace, TableThatAnotherProcessMadeSinceTheLookIsTaken) {
    EXPECT_NO_THROW(EnsureWhile("CREATE TABLE ITEM_TABLE(FOREIGN_COLUMN)"));
    EXPECT_EQ(StoredTables(m_path)["ITEM_TABLE"], "CREATE TABLE ITEM_TABLE(FOREIGN_COLUMN)");
    EXPECT_EQ(StoredTables(m_path).size(), std::size(kExpected) + 1);
}

// An index of that name is no table, and none can be made beside it.
TEST_F(SchemaRace, TableThatIsStillMissingFailsTheStart) {
    EXPECT_THROW(EnsureWhile("CREATE TABLE OTHER_TABLE(N); CREATE INDEX ITEM_TABLE ON OTHER_TABLE(N)"),
                 CppSQLite3Exception);
}

}  // namespace
