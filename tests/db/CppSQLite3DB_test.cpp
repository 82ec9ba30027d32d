#include "db/CppSQLite3DB.h"

#include "tests/db/AccessLayerTest.h"
#include "tests/support/RawDb.h"
#include "tests/support/SqlTrace.h"

#include <filesystem>
#include <optional>
#include <sqlite3.h>

namespace {

using qfc::test::AccessLayerTest;
using qfc::test::ErrorOf;
using qfc::test::RawDb;
using qfc::test::SqlTrace;
using qfc::test::TempFolder;

constexpr char kNotOpen[] = "CPPSQLITE_ERROR[1000]: Database not open";
constexpr char kCannotOpen[] = "SQLITE_CANTOPEN[14]: unable to open database file";

using CppSQLite3DBTest = AccessLayerTest;

TEST(CppSQLite3DBClosed, OperationsReportThatItIsNotOpen) {
    CppSQLite3DB db;
    EXPECT_EQ(ErrorOf([&] { db.compileStatement("select 1"); }), kNotOpen);
    EXPECT_EQ(ErrorOf([&] { db.execQuery("select 1"); }), kNotOpen);
    EXPECT_EQ(ErrorOf([&] { db.backupTo("/nowhere"); }), kNotOpen);
    EXPECT_NO_THROW(db.close());
}

TEST(CppSQLite3DBClosed, TransactionsDoNothing) {
    CppSQLite3DB db;
    EXPECT_FALSE(db.beginTransaction());
    EXPECT_FALSE(db.commitTransaction());
    EXPECT_FALSE(db.rollbackTransaction());
    EXPECT_FALSE(db.isInTransaction());
    EXPECT_TRUE(db.isAutocommit());
    EXPECT_EQ(db.lastError(), 0);
    EXPECT_EQ(db.handle(), nullptr);
}

TEST_F(CppSQLite3DBTest, NewFileIsUtf16Inside) { EXPECT_EQ(RawDb(m_path).Cell("PRAGMA encoding"), "'UTF-16le'"); }

TEST_F(CppSQLite3DBTest, PathMayHoldCharactersBeyondAscii) {
    const std::string path = m_folder / "Größe ☃.db";
    CppSQLite3DB db;
    db.open(path.c_str());
    db.compileStatement("CREATE TABLE T(N)").execDML();
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(CppSQLite3DBTest, BackslashesSeparateLikeSlashes) {
    std::string path = m_folder / "back.db";
    path[m_folder.Path().size()] = '\\';
    CppSQLite3DB db;
    db.open(path.c_str());
    db.compileStatement("CREATE TABLE T(N)").execDML();
    EXPECT_TRUE(std::filesystem::exists(m_folder / "back.db"));
}

// A path of exactly so many characters below the folder, which exists but for the file.
std::string PathOfLength(const TempFolder& folder, std::size_t length) {
    std::string path = folder.Path();
    while (length - path.size() > 101) path += "/" + std::string(99, 'd');
    std::filesystem::create_directories(path);
    path += "/";
    return path + std::string(length - path.size(), 'f');
}

TEST(CppSQLite3DBPath, Of260CharactersFitsTheBuffer) {
    const TempFolder folder;
    const std::string path = PathOfLength(folder, 260);
    CppSQLite3DB db;
    EXPECT_EQ(ErrorOf([&] { db.open(path.c_str()); }), "");
}

TEST(CppSQLite3DBPath, Of261CharactersFailsAndMakesNoFile) {
    const TempFolder folder;
    const std::string path = PathOfLength(folder, 261);
    CppSQLite3DB db;
    EXPECT_EQ(ErrorOf([&] { db.open(path.c_str()); }), kCannotOpen);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(std::filesystem::exists(path.substr(0, 260)));
}

TEST(CppSQLite3DBPath, InAMissingFolderFailsAndStaysClosed) {
    const TempFolder folder;
    CppSQLite3DB db;
    EXPECT_EQ(ErrorOf([&] { db.open((folder / "missing/x.db").c_str()); }), kCannotOpen);
    EXPECT_EQ(db.handle(), nullptr);
    EXPECT_EQ(ErrorOf([&] { db.execQuery("select 1"); }), kNotOpen);
}

TEST(CppSQLite3DBPath, AbsentFails) {
    CppSQLite3DB db;
    EXPECT_EQ(ErrorOf([&] { db.open(nullptr); }), kCannotOpen);
    EXPECT_EQ(ErrorOf([&] { db.openReadOnly(nullptr); }), kCannotOpen);
}

TEST_F(CppSQLite3DBTest, BusyTimeoutIsAMinuteUnlessChanged) {
    EXPECT_EQ(Number("PRAGMA busy_timeout"), 60000);
    m_db.setBusyTimeout(1234);
    EXPECT_EQ(Number("PRAGMA busy_timeout"), 1234);
}

TEST_F(CppSQLite3DBTest, BusyTimeoutSetWhileClosedIsApplied) {
    CppSQLite3DB db;
    db.setBusyTimeout(77);
    db.open(m_path.c_str());
    EXPECT_EQ(db.execQuery("PRAGMA busy_timeout").getIntField(0), 77);
}

TEST_F(CppSQLite3DBTest, QueryWithoutRowsIsAtTheEndAndFinalisesCleanly) {
    CppSQLite3Query query = m_db.execQuery("select * from T");
    EXPECT_TRUE(query.eof());
    EXPECT_NO_THROW(query.finalize());
}

TEST_F(CppSQLite3DBTest, QueryStandsOnItsFirstRow) {
    CppSQLite3Query query = m_db.execQuery("select 5 union all select 6");
    EXPECT_FALSE(query.eof());
    EXPECT_EQ(query.getIntField(0), 5);
}

TEST_F(CppSQLite3DBTest, BrokenTextReportsSqlitesWords) {
    EXPECT_EQ(ErrorOf([&] { m_db.compileStatement("selekt 1"); }), "SQLITE_ERROR[1]: near \"selekt\": syntax error");
    EXPECT_EQ(ErrorOf([&] { m_db.execQuery("select * from NOWHERE"); }), "SQLITE_ERROR[1]: no such table: NOWHERE");
}

TEST_F(CppSQLite3DBTest, FailingQueryReportsTheCodeOfItsFinalising) {
    Run("CREATE TABLE U(N INTEGER UNIQUE)");
    Run("INSERT INTO U VALUES(1)");
    EXPECT_EQ(ErrorOf([&] { m_db.execQuery("INSERT INTO U VALUES(1)"); }),
              "SQLITE_CONSTRAINT[19]: UNIQUE constraint failed: U.N");
    EXPECT_EQ(sqlite3_next_stmt(m_db.handle(), nullptr), nullptr);
}

TEST_F(CppSQLite3DBTest, QueryIsCompiledAgainWhenTheSchemaChanged) {
    SqlTrace trace;
    CppSQLite3DB db;
    db.open(m_path.c_str());
    db.execQuery("select * from T").finalize();
    Run("ALTER TABLE T ADD COLUMN LATER INTEGER DEFAULT 9");
    Run("INSERT INTO T(N) VALUES(1)");
    trace.Clear();
    CppSQLite3Query query = db.execQuery("select * from T");
    EXPECT_EQ(query.getIntField("LATER"), 9);
    EXPECT_EQ(trace.Count("select * from T"), 2);
}

// Another connection changes the schema before every run.
TEST_F(CppSQLite3DBTest, QueryIsGivenUpWhenTheSchemaNeverRests) {
    struct Foreign {
        std::string path;
        int runs = 0;
    } foreign{m_path};
    const auto changeTheSchema = [](unsigned, void* self, void*, void*) {
        auto& other = *static_cast<Foreign*>(self);
        RawDb(other.path).Exec("CREATE TABLE U" + std::to_string(++other.runs) + "(N)");
        return 0;
    };
    m_db.execQuery("select * from T").finalize();
    sqlite3_trace_v2(m_db.handle(), SQLITE_TRACE_STMT, changeTheSchema, &foreign);
    EXPECT_EQ(ErrorOf([&] { m_db.execQuery("select * from T"); }), "SQLITE_SCHEMA[17]: database schema has changed");
    sqlite3_trace_v2(m_db.handle(), 0, nullptr, nullptr);
    EXPECT_EQ(foreign.runs, 51);
    EXPECT_TRUE(m_db.execQuery("select * from T").eof());
}

TEST(CppSQLite3DBTransaction, SecondBeginIsFalseAndSendsNothing) {
    const TempFolder folder;
    SqlTrace trace;
    CppSQLite3DB db;
    db.open((folder / "t.db").c_str());
    EXPECT_TRUE(db.beginTransaction());
    EXPECT_TRUE(db.isInTransaction());
    EXPECT_FALSE(db.beginTransaction());
    EXPECT_EQ(trace.Statements(), std::vector<std::string>{"BEGIN TRANSACTION;"});
}

TEST(CppSQLite3DBTransaction, CommitAndRollbackWithoutOneAreFalseAndSendNothing) {
    const TempFolder folder;
    SqlTrace trace;
    CppSQLite3DB db;
    db.open((folder / "t.db").c_str());
    EXPECT_FALSE(db.commitTransaction());
    EXPECT_FALSE(db.rollbackTransaction());
    EXPECT_EQ(trace.Statements(), std::vector<std::string>{});
}

TEST(CppSQLite3DBTransaction, TextsAreTheGivenOnes) {
    const TempFolder folder;
    SqlTrace trace;
    CppSQLite3DB db;
    db.open((folder / "t.db").c_str());
    db.beginTransaction();
    EXPECT_TRUE(db.commitTransaction());
    EXPECT_FALSE(db.isInTransaction());
    db.beginTransaction();
    EXPECT_TRUE(db.rollbackTransaction());
    EXPECT_FALSE(db.isInTransaction());
    const std::vector<std::string> expected{"BEGIN TRANSACTION;", "END TRANSACTION;", "BEGIN TRANSACTION;",
                                            "ROLLBACK TRANSACTION;"};
    EXPECT_EQ(trace.Statements(), expected);
}

TEST_F(CppSQLite3DBTest, CommitKeepsAndRollbackDropsTheChanges) {
    m_db.beginTransaction();
    Run("INSERT INTO T(N) VALUES(1)");
    m_db.commitTransaction();
    m_db.beginTransaction();
    Run("INSERT INTO T(N) VALUES(2)");
    m_db.rollbackTransaction();
    EXPECT_EQ(RawDb(m_path).Cell("select group_concat(N) from T"), "'1'");
}

// Pins the oddity that nothing of the three looks at SQLite's answer.
TEST_F(CppSQLite3DBTest, TransactionFlagFollowsTheCallNotItsOutcome) {
    ASSERT_EQ(sqlite3_exec(m_db.handle(), "BEGIN", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_TRUE(m_db.beginTransaction());  // SQLite refused it.
    EXPECT_NE(m_db.lastError(), 0);
    ASSERT_EQ(sqlite3_exec(m_db.handle(), "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_TRUE(m_db.isInTransaction());
    EXPECT_TRUE(m_db.isAutocommit());
    EXPECT_TRUE(m_db.commitTransaction());  // Refused, too.
    EXPECT_FALSE(m_db.isInTransaction());
}

TEST_F(CppSQLite3DBTest, RollbackPendingEndsWhatTheFlagDoesNotKnow) {
    ASSERT_EQ(sqlite3_exec(m_db.handle(), "BEGIN", nullptr, nullptr, nullptr), SQLITE_OK);
    Run("INSERT INTO T(N) VALUES(1)");
    EXPECT_FALSE(m_db.isInTransaction());
    EXPECT_FALSE(m_db.isAutocommit());
    m_db.rollbackPending();
    EXPECT_TRUE(m_db.isAutocommit());
    EXPECT_EQ(Number("select count(*) from T"), 0);
}

TEST_F(CppSQLite3DBTest, CloseWithALiveStatementThrowsAndStaysOpen) {
    CppSQLite3Statement statement = m_db.compileStatement("select 1");
    EXPECT_EQ(ErrorOf([&] { m_db.close(); }).substr(0, 16), "SQLITE_BUSY[5]: ");
    EXPECT_NE(m_db.handle(), nullptr);
    statement.finalize();
    EXPECT_NO_THROW(m_db.close());
    EXPECT_EQ(m_db.handle(), nullptr);
}

// Once the destructor ran, the last statement takes the connection, and its locks, with it.
TEST_F(CppSQLite3DBTest, DestructorWithALiveQueryLeavesNoHandleBehind) {
    Run("INSERT INTO T(N) VALUES(1)");
    Run("INSERT INTO T(N) VALUES(2)");
    CppSQLite3Query query;
    {
        CppSQLite3DB db;
        db.open(m_path.c_str());
        query = db.execQuery("select * from T");
    }
    m_db.setBusyTimeout(0);
    EXPECT_EQ(ErrorOf([&] { Run("INSERT INTO T(N) VALUES(3)"); }).substr(0, 16), "SQLITE_BUSY[5]: ");
    query.nextRow();
    EXPECT_EQ(query.getIntField("N"), 2);
    query.finalize();
    EXPECT_EQ(ErrorOf([&] { Run("INSERT INTO T(N) VALUES(3)"); }), "");
}

TEST_F(CppSQLite3DBTest, DestructorRollsBackEvenWithALiveStatement) {
    std::optional<CppSQLite3DB> db(std::in_place);
    db->open(m_path.c_str());
    CppSQLite3Statement statement = db->compileStatement("select 1");
    db->beginTransaction();
    db->compileStatement("INSERT INTO T(N) VALUES(1)").execDML();
    db.reset();
    m_db.setBusyTimeout(0);
    EXPECT_EQ(ErrorOf([&] { Run("INSERT INTO T(N) VALUES(2)"); }), "");
    EXPECT_EQ(Number("select group_concat(N) from T"), 2);
}

TEST_F(CppSQLite3DBTest, OpeningAgainClosesTheFirstFile) {
    m_db.open((m_folder / "other.db").c_str());
    EXPECT_EQ(ErrorOf([&] { m_db.execQuery("select * from T"); }), "SQLITE_ERROR[1]: no such table: T");
}

TEST_F(CppSQLite3DBTest, ReadOnlyReadsAndRefusesToWrite) {
    Run("INSERT INTO T(N) VALUES(1)");
    CppSQLite3DB db;
    db.openReadOnly(m_path.c_str());
    EXPECT_EQ(db.execQuery("select N from T").getIntField(0), 1);
    EXPECT_EQ(ErrorOf([&] { db.compileStatement("DELETE FROM T").execDML(); }).substr(0, 19), "SQLITE_READONLY[8]:");
}

TEST(CppSQLite3DBReadOnly, MissingFileFailsAndIsNotMade) {
    const TempFolder folder;
    CppSQLite3DB db;
    EXPECT_EQ(ErrorOf([&] { db.openReadOnly((folder / "missing.db").c_str()); }), kCannotOpen);
    EXPECT_TRUE(folder.Entries().empty());
}

TEST_F(CppSQLite3DBTest, BackupCopiesEverythingAndTheEncoding) {
    Run("INSERT INTO T VALUES(1, 'é', x'00FF')");
    const std::string target = m_folder / "copy.db";
    EXPECT_EQ(m_db.backupTo(target.c_str()), 0);
    EXPECT_EQ(qfc::test::DumpOf(target), qfc::test::DumpOf(m_path));
    EXPECT_EQ(RawDb(target).Cell("PRAGMA encoding"), "'UTF-16le'");
}

TEST_F(CppSQLite3DBTest, BackupReportsTheTargetsCode) {
    EXPECT_EQ(m_db.backupTo((m_folder / "missing/copy.db").c_str()), SQLITE_CANTOPEN);
    const std::string busy = m_folder / "busy.db";
    RawDb holder(busy);
    holder.Exec("CREATE TABLE X(N); BEGIN EXCLUSIVE");
    EXPECT_EQ(m_db.backupTo(busy.c_str()), SQLITE_BUSY);
}

TEST_F(CppSQLite3DBTest, RefusedRollbackIsIssuedAllTheSame) {
    m_db.beginTransaction();
    Run("INSERT INTO T(N) VALUES(1)");
    const auto denyTransactions = [](void*, int action, const char*, const char*, const char*, const char*) {
        return action == SQLITE_TRANSACTION ? SQLITE_DENY : SQLITE_OK;
    };
    sqlite3_set_authorizer(m_db.handle(), denyTransactions, nullptr);
    EXPECT_TRUE(m_db.rollbackTransaction());
    EXPECT_FALSE(m_db.isInTransaction());
    EXPECT_FALSE(m_db.isAutocommit());
    EXPECT_EQ(m_db.lastError(), SQLITE_AUTH);
    sqlite3_set_authorizer(m_db.handle(), nullptr, nullptr);
    m_db.rollbackPending();
    EXPECT_TRUE(m_db.isAutocommit());
    EXPECT_EQ(Number("select count(*) from T"), 0);
}

}  // namespace
