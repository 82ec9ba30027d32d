#include "db/CppSQLite3Statement.h"

#include "tests/db/AccessLayerTest.h"
#include "tests/support/RawDb.h"

#include <sqlite3.h>

namespace {

using qfc::test::AccessLayerTest;
using qfc::test::ErrorOf;
using qfc::test::RawDb;

constexpr char kNullMachine[] = "CPPSQLITE_ERROR[1000]: Null Virtual Machine pointer";

class CppSQLite3StatementTest : public AccessLayerTest {
protected:
    int LiveStatements() {
        int count = 0;
        for (sqlite3_stmt* s = sqlite3_next_stmt(m_db.handle(), nullptr); s; s = sqlite3_next_stmt(m_db.handle(), s)) {
            ++count;
        }
        return count;
    }
};

TEST(CppSQLite3StatementEmpty, RunsReportTheConnectionAndBindsTheStatement) {
    CppSQLite3Statement statement;
    EXPECT_EQ(ErrorOf([&] { statement.execDML(); }), "CPPSQLITE_ERROR[1000]: Database not open");
    EXPECT_EQ(ErrorOf([&] { statement.execQuery(); }), "CPPSQLITE_ERROR[1000]: Database not open");
    EXPECT_EQ(ErrorOf([&] { statement.bind(1, 1); }), kNullMachine);
    EXPECT_NO_THROW(statement.finalize());
}

TEST_F(CppSQLite3StatementTest, EveryUseAfterFinaliseReportsTheMissingStatement) {
    CppSQLite3Statement statement = m_db.compileStatement("INSERT INTO T VALUES(?, ?, ?)");
    statement.finalize();
    const unsigned char byte = 1;
    EXPECT_EQ(ErrorOf([&] { statement.bind(1, 1); }), kNullMachine);
    EXPECT_EQ(ErrorOf([&] { statement.bind(1, "x"); }), kNullMachine);
    EXPECT_EQ(ErrorOf([&] { statement.bind(1, &byte, 1); }), kNullMachine);
    EXPECT_EQ(ErrorOf([&] { statement.execDML(); }), kNullMachine);
    EXPECT_EQ(ErrorOf([&] { statement.execQuery(); }), kNullMachine);
    EXPECT_NO_THROW(statement.finalize());
}

TEST_F(CppSQLite3StatementTest, BindsTextNumberAndBytes) {
    CppSQLite3Statement statement = m_db.compileStatement("INSERT INTO T VALUES(?, ?, ?)");
    const unsigned char bytes[] = {0, 255, 7};
    statement.bind(1, -5);
    statement.bind(2, "tëxt");
    statement.bind(3, bytes, 3);
    EXPECT_EQ(statement.execDML(), 1);
    EXPECT_EQ(RawDb(m_path).Rows("select * from T"), (std::vector<RawDb::Row>{{"-5", "'tëxt'", "X'00FF07'"}}));
}

TEST_F(CppSQLite3StatementTest, AbsentValuesAreBoundEmptyAndNeverNull) {
    CppSQLite3Statement statement = m_db.compileStatement("INSERT INTO T VALUES(0, ?, ?)");
    statement.bind(1, static_cast<const char*>(nullptr));
    statement.bind(2, nullptr, 0);
    statement.execDML();
    EXPECT_EQ(RawDb(m_path).Rows("select S, B from T"), (std::vector<RawDb::Row>{{"''", "X''"}}));
}

TEST_F(CppSQLite3StatementTest, BoundValuesAreCopied) {
    CppSQLite3Statement statement = m_db.compileStatement("INSERT INTO T VALUES(0, ?, ?)");
    std::string text = "before";
    unsigned char byte = 1;
    statement.bind(1, text.c_str());
    statement.bind(2, &byte, 1);
    text = "behind";
    byte = 2;
    statement.execDML();
    EXPECT_EQ(RawDb(m_path).Rows("select S, B from T"), (std::vector<RawDb::Row>{{"'before'", "X'01'"}}));
}

TEST_F(CppSQLite3StatementTest, BindFailuresHaveFixedTexts) {
    CppSQLite3Statement statement = m_db.compileStatement("INSERT INTO T VALUES(?, ?, ?)");
    const unsigned char byte = 1;
    EXPECT_EQ(ErrorOf([&] { statement.bind(4, "x"); }), "SQLITE_RANGE[25]: Error binding string param");
    EXPECT_EQ(ErrorOf([&] { statement.bind(0, 1); }), "SQLITE_RANGE[25]: Error binding int param");
    EXPECT_EQ(ErrorOf([&] { statement.bind(4, &byte, 1); }), "SQLITE_RANGE[25]: Error binding blob param");
}

TEST_F(CppSQLite3StatementTest, BlobLengthsThatCannotBeReadAreRefused) {
    CppSQLite3Statement statement = m_db.compileStatement("INSERT INTO T VALUES(?, ?, ?)");
    const unsigned char byte = 1;
    EXPECT_EQ(ErrorOf([&] { statement.bind(3, &byte, -1); }), "SQLITE_MISUSE[21]: Error binding blob param");
    EXPECT_EQ(ErrorOf([&] { statement.bind(3, nullptr, 5); }), "SQLITE_MISUSE[21]: Error binding blob param");
}

TEST_F(CppSQLite3StatementTest, StatementRunsAgainWithItsBindings) {
    CppSQLite3Statement statement = m_db.compileStatement("INSERT INTO T(N, S) VALUES(?, ?)");
    statement.bind(1, 1);
    statement.bind(2, "same");
    statement.execDML();
    statement.bind(1, 2);
    statement.execDML();
    EXPECT_EQ(RawDb(m_path).Cell("select group_concat(N || S) from T"), "'1same,2same'");
}

TEST_F(CppSQLite3StatementTest, ExecDMLAnswersTheRowsChanged) {
    Run("INSERT INTO T(N) VALUES(1), (2), (3)");
    EXPECT_EQ(m_db.compileStatement("DELETE FROM T WHERE N > 1").execDML(), 2);
    EXPECT_EQ(m_db.compileStatement("DELETE FROM T WHERE N > 1").execDML(), 0);
}

TEST_F(CppSQLite3StatementTest, FailedRunReportsTheCodeOfTheResetAndCanRunAgain) {
    Run("CREATE TABLE U(N INTEGER UNIQUE)");
    Run("INSERT INTO U VALUES(1)");
    CppSQLite3Statement statement = m_db.compileStatement("INSERT INTO U VALUES(?)");
    statement.bind(1, 1);
    EXPECT_EQ(ErrorOf([&] { statement.execDML(); }), "SQLITE_CONSTRAINT[19]: UNIQUE constraint failed: U.N");
    statement.bind(1, 2);
    EXPECT_EQ(statement.execDML(), 1);
}

// A row is not what execDML waits for; the reset has no complaint of its own.
TEST_F(CppSQLite3StatementTest, ExecDMLOfAQueryThrows) {
    CppSQLite3Statement statement = m_db.compileStatement("select 1");
    EXPECT_EQ(ErrorOf([&] { statement.execDML(); }).substr(0, 14), "SQLITE_OK[0]: ");
}

TEST_F(CppSQLite3StatementTest, ExecQueryHandsTheStatementToTheQuery) {
    CppSQLite3Query query;
    {
        CppSQLite3Statement statement = m_db.compileStatement("select 5 union all select 6");
        query = statement.execQuery();
        EXPECT_EQ(ErrorOf([&] { statement.execQuery(); }), kNullMachine);
    }
    query.nextRow();
    EXPECT_EQ(query.getIntField(0), 6);
    query.finalize();
    EXPECT_EQ(LiveStatements(), 0);
}

TEST_F(CppSQLite3StatementTest, ExecQueryWithoutRowsIsAtTheEnd) {
    CppSQLite3Statement statement = m_db.compileStatement("select * from T where N = ?");
    statement.bind(1, 1);
    EXPECT_TRUE(statement.execQuery().eof());
}

TEST_F(CppSQLite3StatementTest, FailedExecQueryLeavesNoStatementBehind) {
    {
        CppSQLite3Statement statement = m_db.compileStatement("select abs(-9223372036854775807 - 1)");
        EXPECT_EQ(ErrorOf([&] { statement.execQuery(); }), "SQLITE_ERROR[1]: integer overflow");
    }
    EXPECT_EQ(LiveStatements(), 0);
}

TEST_F(CppSQLite3StatementTest, MovingTakesTheStatementAndEmptiesTheSource) {
    CppSQLite3Statement first = m_db.compileStatement("INSERT INTO T(N) VALUES(1)");
    CppSQLite3Statement second(std::move(first));
    EXPECT_EQ(second.execDML(), 1);
    CppSQLite3Statement third = m_db.compileStatement("INSERT INTO T(N) VALUES(3)");
    third = std::move(second);
    EXPECT_EQ(LiveStatements(), 1);
    EXPECT_EQ(third.execDML(), 1);
    EXPECT_EQ(Number("select sum(N) from T"), 2);
}

TEST_F(CppSQLite3StatementTest, DestructorFinalises) {
    { CppSQLite3Statement statement = m_db.compileStatement("select 1"); }
    EXPECT_EQ(LiveStatements(), 0);
}

// A statement that has failed tells of it again when it is finalised.
sqlite3_stmt* FailedStatement(sqlite3* db) {
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare(db, "select abs(-9223372036854775807 - 1)", -1, &statement, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_step(statement), SQLITE_ERROR);
    return statement;
}

TEST_F(CppSQLite3StatementTest, FinalisingWithAPendingErrorThrowsOnceAndIsDone) {
    CppSQLite3Statement statement(m_db.handle(), FailedStatement(m_db.handle()));
    EXPECT_EQ(ErrorOf([&] { statement.finalize(); }), "SQLITE_ERROR[1]: integer overflow");
    EXPECT_EQ(LiveStatements(), 0);
    EXPECT_NO_THROW(statement.finalize());
    EXPECT_EQ(ErrorOf([&] { statement.execDML(); }), kNullMachine);
}

TEST_F(CppSQLite3StatementTest, DestructorSwallowsAPendingError) {
    EXPECT_NO_THROW({ const CppSQLite3Statement statement(m_db.handle(), FailedStatement(m_db.handle())); });
    EXPECT_EQ(LiveStatements(), 0);
}

}  // namespace
