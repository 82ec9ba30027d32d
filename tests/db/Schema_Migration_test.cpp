// A file from before folders had an order.
#include "db/CppSQLite3.h"
#include "tests/db/DbTestSupport.h"
#include "tests/db/StoredTables.h"
#include "tests/support/SqlTrace.h"

#include <filesystem>
#include <optional>
#include <sqlite3.h>

namespace {

using qfc::test::RawDb;
using qfc::test::SqlTrace;
using qfc::test::StoredTables;
using qfc::test::TempFolder;

class OldLibraryTest : public testing::Test {
protected:
    void SetUp() override {
        std::filesystem::copy_file(QFCLIB_TEST_DATA "/library-before-folder-order.db", m_path);
        bool ok = false;
        m_tools = std::make_unique<DBTools>(CString(m_path.c_str()), ok);
        ASSERT_TRUE(ok);
    }

    TempFolder m_folder;
    std::string m_path = m_folder / "old.db";
    SqlTrace m_trace;
    std::unique_ptr<DBTools> m_tools;
};

TEST_F(OldLibraryTest, OpeningAloneLeavesItsFolderTableAsItIs) {
    EXPECT_EQ(StoredTables(m_path)["FOLDER_TABLE"].find("ORDER_INDEX"), std::string::npos);
}

TEST_F(OldLibraryTest, MigrationAddsTheColumnWithDefaultMinusOne) {
    EXPECT_NE(m_tools->AddFolderOrderIndexColumn(), 0);
    EXPECT_EQ(RawDb(m_path).Rows("select ID, ORDER_INDEX, typeof(ORDER_INDEX) from FOLDER_TABLE order by ID"),
              (std::vector<RawDb::Row>{{"1", "-1", "'integer'"}, {"2", "-1", "'integer'"}}));
    EXPECT_EQ(StoredTables(m_path)["FOLDER_TABLE"],
              "CREATE TABLE FOLDER_TABLE( VERSION TEXT, PREDEFINED_ID INTEGER, FOLDER_NAME TEXT, ADOPT_TYPE INTEGER, "
              "TRUSTY_TYPE INTEGER, TYPE_EXTRA INTEGER, PARENT_ID INTEGER, EXPAND_TYPE INTEGER, ID INTEGER PRIMARY "
              "KEY AUTOINCREMENT, ORDER_INDEX INTEGER DEFAULT '-1')");
}

TEST_F(OldLibraryTest, SecondMigrationChangesNothing) {
    ASSERT_NE(m_tools->AddFolderOrderIndexColumn(), 0);
    const std::string before = qfc::test::DumpOf(m_path);
    EXPECT_NE(m_tools->AddFolderOrderIndexColumn(), 0);
    EXPECT_EQ(qfc::test::DumpOf(m_path), before);
}

TEST_F(OldLibraryTest, MigratedFoldersCanBeWritten) {
    ASSERT_NE(m_tools->AddFolderOrderIndexColumn(), 0);
    int folder = 2;
    EXPECT_TRUE(m_tools->InsertOrUpdateFolder("1.0", 0, "new", 1, 2, 3, 1, 4, 5, folder));
    EXPECT_EQ(RawDb(m_path).Cell("select ORDER_INDEX from FOLDER_TABLE where ID = 2"), "5");
}

TEST_F(OldLibraryTest, MigrationSendsTheGivenTexts) {
    m_trace.Clear();
    m_tools->AddFolderOrderIndexColumn();
    const char* const query = "SELECT * FROM sqlite_master WHERE name = 'FOLDER_TABLE' AND SQL LIKE '%ORDER_INDEX%';";
    EXPECT_EQ(m_trace.Count(query), 1);
    EXPECT_EQ(m_trace.Count("ALTER TABLE FOLDER_TABLE ADD COLUMN ORDER_INDEX INTEGER DEFAULT '-1';"), 1);
    m_trace.Clear();
    m_tools->AddFolderOrderIndexColumn();
    EXPECT_EQ(m_trace.Statements(), (std::vector<std::string>{"BEGIN TRANSACTION;", query, "END TRANSACTION;"}));
}

TEST_F(OldLibraryTest, MigrationWithoutFolderTableFails) {
    RawDb(m_path).Exec("DROP TABLE FOLDER_TABLE");
    EXPECT_EQ(m_tools->AddFolderOrderIndexColumn(), 0);
}

// Folders are read, but none is written: a start without the column is of use, and the next one tries again.
TEST_F(OldLibraryTest, WithoutMigration_FoldersAreReadOnly) {
    CppSQLite3Query query;
    EXPECT_TRUE(m_tools->QueryFolder(2, query));
    EXPECT_FALSE(query.eof());
    int folder = 2;
    EXPECT_FALSE(m_tools->InsertOrUpdateFolder("1.0", 0, "new", 1, 2, 3, 1, 4, 5, folder));
}

// --- Beside another writer ---

// Who waits for its turn gets it, behind what the writer still does; who is refused at once does not.
class OldLibraryBesideAWriter : public OldLibraryTest {
protected:
    void SetUp() override {
        OldLibraryTest::SetUp();
        sqlite3_busy_handler(m_trace.Connection(), &LetGo, this);
        m_writer.emplace(m_path);
        m_writer->Exec("BEGIN IMMEDIATE");
    }
    static int LetGo(void* test, int nCalls) {
        auto& self = *static_cast<OldLibraryBesideAWriter*>(test);
        if (nCalls != 0 || self.m_last.empty()) return 0;
        self.m_writer->Exec(self.m_last);
        return 1;
    }
    std::string ColumnsNamedOrderIndex() const {
        return RawDb(m_path).Cell("select count(*) from pragma_table_info('FOLDER_TABLE') where name = 'ORDER_INDEX'");
    }

    // What the writer does before it ends; it never does when empty.
    std::string m_last;
    std::optional<RawDb> m_writer;
};

TEST_F(OldLibraryBesideAWriter, MigrationWaitsForIt) {
    m_last = "INSERT INTO FOLDER_TABLE(FOLDER_NAME, PARENT_ID) VALUES('theirs', -1); COMMIT";
    EXPECT_NE(m_tools->AddFolderOrderIndexColumn(), 0);
    EXPECT_EQ(RawDb(m_path).Cell("select count(*) from FOLDER_TABLE where ORDER_INDEX = -1"), "3");
}

TEST_F(OldLibraryBesideAWriter, MigrationThatItMadeIsNotMadeAgain) {
    m_last = "ALTER TABLE FOLDER_TABLE ADD COLUMN ORDER_INDEX INTEGER DEFAULT '-1'; COMMIT";
    EXPECT_NE(m_tools->AddFolderOrderIndexColumn(), 0);
    EXPECT_EQ(ColumnsNamedOrderIndex(), "1");
}

TEST_F(OldLibraryBesideAWriter, WithoutShortcuts_MigrationSendsTheGivenTextsOnceAndFails) {
    m_last = "COMMIT";
    m_tools->SetShortcuts(false);
    m_trace.Clear();
    EXPECT_EQ(m_tools->AddFolderOrderIndexColumn(), 0);
    EXPECT_EQ(m_trace.CountStartingWith("BEGIN"), 1);
    EXPECT_EQ(m_trace.CountStartingWith("Delete"), 0);
}

TEST_F(OldLibraryBesideAWriter, MigrationThatNeverGetsItsTurnFails) {
    EXPECT_EQ(m_tools->AddFolderOrderIndexColumn(), 0);
    m_writer->Exec("COMMIT");
    EXPECT_EQ(ColumnsNamedOrderIndex(), "0");
    EXPECT_NE(m_tools->AddFolderOrderIndexColumn(), 0) << "the next time it does";
    EXPECT_EQ(ColumnsNamedOrderIndex(), "1");
}

}  // namespace
