#include "db/CppSQLite3Query.h"

#include "db/RowNumber.h"
#include "tests/db/AccessLayerTest.h"
#include "tests/support/RawDb.h"

#include <climits>
#include <sqlite3.h>
#include <type_traits>

namespace {

using qfc::test::AccessLayerTest;
using qfc::test::ErrorOf;
using qfc::test::RawDb;

constexpr char kNullMachine[] = "CPPSQLITE_ERROR[1000]: Null Virtual Machine pointer";
constexpr char kBadIndex[] = "CPPSQLITE_ERROR[1000]: Invalid field index requested";
constexpr char kBadName[] = "CPPSQLITE_ERROR[1000]: Invalid field name requested";

enum class Rows { kLive, kDetached };

// Everything a reader sees is the same, whether the statement is alive or its rows were taken into memory.
class CppSQLite3QueryTest : public AccessLayerTest, public testing::WithParamInterface<Rows> {
protected:
    CppSQLite3Query Query(const char* sql) {
        CppSQLite3Query query = m_db.execQuery(sql);
        if (GetParam() == Rows::kDetached) query.detach();
        return query;
    }
};

INSTANTIATE_TEST_SUITE_P(Rows, CppSQLite3QueryTest, testing::Values(Rows::kLive, Rows::kDetached),
                         [](const auto& rows) { return rows.param == Rows::kLive ? "Live" : "Detached"; });

TEST(CppSQLite3QueryEmpty, IsAtTheEndAndHasNoRow) {
    CppSQLite3Query query;
    EXPECT_TRUE(query.eof());
    EXPECT_EQ(ErrorOf([&] { query.nextRow(); }), kNullMachine);
    EXPECT_EQ(ErrorOf([&] { query.getIntField(0); }), kNullMachine);
    EXPECT_EQ(ErrorOf([&] { query.fieldIndex("N"); }), kNullMachine);
    EXPECT_EQ(ErrorOf([&] { query.detach(); }), kNullMachine);
    EXPECT_NO_THROW(query.finalize());
}

TEST_P(CppSQLite3QueryTest, WalksRowsToTheEnd) {
    CppSQLite3Query query = Query("select 1 as N union all select 2 union all select 3");
    std::string seen;
    for (; !query.eof(); query.nextRow()) seen += query.getStringField("N");
    EXPECT_EQ(seen, "123");
}

TEST_P(CppSQLite3QueryTest, WithoutRowsIsAtTheEndWithItsColumns) {
    CppSQLite3Query query = Query("select N, S from T");
    EXPECT_TRUE(query.eof());
    EXPECT_EQ(query.fieldIndex("S"), 1);
    EXPECT_EQ(query.fieldType(1), 5);
    EXPECT_EQ(query.getIntField(0, 7), 7);
    int length = 5;
    EXPECT_EQ(query.getBlobField(0, length), nullptr);
    EXPECT_EQ(length, 0);
    EXPECT_NO_THROW(query.finalize());
}

TEST_P(CppSQLite3QueryTest, NullReadsAsTheCallersValue) {
    CppSQLite3Query query = Query("select NULL as N");
    EXPECT_EQ(query.getIntField(0, -1), -1);
    EXPECT_EQ(query.getIntField("N", -1), -1);
    EXPECT_STREQ(query.getStringField(0, "none"), "none");
    EXPECT_STREQ(query.getStringField("N", "none"), "none");
    EXPECT_EQ(query.getStringField(0, nullptr), nullptr);
    EXPECT_EQ(query.fieldType(0), 5);
}

TEST_P(CppSQLite3QueryTest, TypesAreSqlites) {
    CppSQLite3Query query = Query("select 1, 1.5, 'x', x'01', NULL");
    for (int field = 0; field < 5; ++field) EXPECT_EQ(query.fieldType(field), field + 1);
}

TEST_P(CppSQLite3QueryTest, ValuesConvertAsSqliteDoes) {
    CppSQLite3Query query = Query("select 2.9, '12abc', 42, x'41004200', 4294967295, 1.5");
    EXPECT_EQ(query.getIntField(0), 2);
    EXPECT_EQ(query.getIntField(1), 12);
    EXPECT_STREQ(query.getStringField(2), "42");
    EXPECT_STREQ(query.getStringField(3), "AB");  // Taken as text in the file's encoding.
    EXPECT_EQ(query.getIntField(4), -1);
    EXPECT_STREQ(query.getStringField(5), "1.5");
}

TEST_P(CppSQLite3QueryTest, TextSurvivesTheFilesEncoding) {
    Run("INSERT INTO T(S) VALUES('Größe ☃')");
    CppSQLite3Query query = Query("select S from T");
    EXPECT_STREQ(query.getStringField(0), "Größe ☃");
    int length = 0;
    const auto* bytes = reinterpret_cast<const char*>(query.getBlobField(0, length));
    EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(length)), "Größe ☃");
}

TEST_P(CppSQLite3QueryTest, BlobsComeWithTheirLength) {
    CppSQLite3Query query = Query("select x'00FF00' as B, x'' as E, NULL as Z");
    int length = -1;
    const unsigned char* bytes = query.getBlobField("B", length);
    ASSERT_EQ(length, 3);
    EXPECT_EQ(bytes[1], 255);
    EXPECT_EQ(query.getBlobField("E", length), nullptr);
    EXPECT_EQ(length, 0);
    length = 9;
    EXPECT_EQ(query.getBlobField(2, length), nullptr);
    EXPECT_EQ(length, 0);
}

TEST_P(CppSQLite3QueryTest, IndexOutsideTheColumnsThrows) {
    CppSQLite3Query query = Query("select 1, 2");
    int length = 0;
    EXPECT_EQ(ErrorOf([&] { query.getIntField(2); }), kBadIndex);
    EXPECT_EQ(ErrorOf([&] { query.getIntField(-1); }), kBadIndex);
    EXPECT_EQ(ErrorOf([&] { query.fieldType(2); }), kBadIndex);
    EXPECT_EQ(ErrorOf([&] { query.getStringField(2); }), kBadIndex);
    EXPECT_EQ(ErrorOf([&] { query.getBlobField(2, length); }), kBadIndex);
}

TEST_P(CppSQLite3QueryTest, NamesAreExactAndTheFirstMatchWins) {
    CppSQLite3Query query = Query("select 1 as A, 2 as B, 3 as A");
    EXPECT_EQ(query.fieldIndex("A"), 0);
    EXPECT_EQ(query.fieldIndex("B"), 1);
    EXPECT_EQ(ErrorOf([&] { query.fieldIndex("b"); }), kBadName);
    EXPECT_EQ(ErrorOf([&] { query.fieldIndex("A "); }), kBadName);
    EXPECT_EQ(ErrorOf([&] { query.fieldIndex(nullptr); }), kBadName);
    int length = 0;
    EXPECT_EQ(ErrorOf([&] { query.getIntField("C"); }), kBadName);
    EXPECT_EQ(ErrorOf([&] { query.getStringField("C"); }), kBadName);
    EXPECT_EQ(ErrorOf([&] { query.getBlobField("C", length); }), kBadName);
}

TEST_P(CppSQLite3QueryTest, FinalisedHasNoRowAndCanBeFinalisedAgain) {
    CppSQLite3Query query = Query("select 1");
    query.finalize();
    EXPECT_EQ(ErrorOf([&] { query.getIntField(0); }), kNullMachine);
    EXPECT_EQ(ErrorOf([&] { query.nextRow(); }), kNullMachine);
    EXPECT_NO_THROW(query.finalize());
}

TEST_P(CppSQLite3QueryTest, MovingTakesTheRowAndEmptiesTheSource) {
    CppSQLite3Query source = Query("select 5 as N union all select 6");
    CppSQLite3Query target = Query("select 1");
    target = std::move(source);
    EXPECT_EQ(target.getIntField("N"), 5);
    CppSQLite3Query last(std::move(target));
    last.nextRow();
    EXPECT_EQ(last.getIntField("N"), 6);
    EXPECT_EQ(ErrorOf([&] { target.getIntField(0); }), kNullMachine);  // NOLINT: looks at the emptied source
    last.finalize();
    EXPECT_EQ(sqlite3_next_stmt(m_db.handle(), nullptr), nullptr);
}

TEST_P(CppSQLite3QueryTest, MovingIntoItselfChangesNothing) {
    CppSQLite3Query query = Query("select 5");
    CppSQLite3Query& same = query;
    query = std::move(same);
    EXPECT_EQ(query.getIntField(0), 5);
}

// The second row cannot be computed.
constexpr char kFailsAtItsSecondRow[] =
    "select 1 union all select abs(-9223372036854775807 - (select count(*) from sqlite_master))";

using CppSQLite3QueryFailing = AccessLayerTest;

TEST_F(CppSQLite3QueryFailing, FailedStepTakesTheStatementAway) {
    CppSQLite3Query query = m_db.execQuery(kFailsAtItsSecondRow);
    EXPECT_EQ(ErrorOf([&] { query.nextRow(); }), "SQLITE_ERROR[1]: integer overflow");
    EXPECT_EQ(ErrorOf([&] { query.nextRow(); }), kNullMachine);
    EXPECT_EQ(ErrorOf([&] { query.getIntField(0); }), kNullMachine);
    EXPECT_EQ(sqlite3_next_stmt(m_db.handle(), nullptr), nullptr);
}

TEST_F(CppSQLite3QueryFailing, DetachReportsARowThatCannotBeRead) {
    CppSQLite3Query query = m_db.execQuery(kFailsAtItsSecondRow);
    EXPECT_EQ(ErrorOf([&] { query.detach(); }), "SQLITE_ERROR[1]: integer overflow");
    EXPECT_EQ(ErrorOf([&] { query.getIntField(0); }), kNullMachine);
    EXPECT_EQ(sqlite3_next_stmt(m_db.handle(), nullptr), nullptr);
}

using CppSQLite3QueryDetached = AccessLayerTest;

TEST_F(CppSQLite3QueryDetached, HoldsNothingOfTheDatabase) {
    Run("INSERT INTO T(N) VALUES(1), (2)");
    CppSQLite3Query query = m_db.execQuery("select N from T");
    query.detach();
    RawDb(m_path).Exec("DELETE FROM T");
    EXPECT_NO_THROW(m_db.close());
    query.nextRow();
    EXPECT_EQ(query.getIntField("N"), 2);
    query.nextRow();
    EXPECT_TRUE(query.eof());
}

TEST_F(CppSQLite3QueryDetached, TakesTheCurrentRowAndThoseBehindIt) {
    CppSQLite3Query query = m_db.execQuery("select 1 union all select 2 union all select 3");
    query.nextRow();
    query.detach();
    EXPECT_EQ(query.getIntField(0), 2);
    query.detach();
    EXPECT_EQ(query.getIntField(0), 2);
    query.nextRow();
    EXPECT_EQ(query.getIntField(0), 3);
}

TEST_F(CppSQLite3QueryDetached, StaysAtTheEnd) {
    CppSQLite3Query query = m_db.execQuery("select 1");
    query.detach();
    query.nextRow();
    query.nextRow();
    EXPECT_TRUE(query.eof());
    EXPECT_EQ(query.getIntField(0, -9), -9);
}

TEST_F(CppSQLite3QueryDetached, FreesEachRowAsTheCursorPassesIt) {
    CppSQLite3Query query = m_db.execQuery(
        "with recursive R(I) as (select 1 union all select I + 1 from R where I < 8) select zeroblob(1000000) || I"
        " from R");
    query.detach();
    for (sqlite3_int64 before = sqlite3_memory_used(); !query.eof(); before = sqlite3_memory_used()) {
        query.nextRow();
        EXPECT_LT(sqlite3_memory_used(), before);
    }
}

TEST_F(CppSQLite3QueryTest, NumbersBeyond32BitsReadWholeAlsoWhenDetached) {
    for (const bool detached : {false, true}) {
        CppSQLite3Query query = m_db.execQuery("select 4294967297 as N, NULL, '-5000000000', 2.9");
        if (detached) query.detach();
        EXPECT_EQ(query.getInt64Field("N"), 4294967297);
        EXPECT_EQ(query.getInt64Field(1, -4), -4);
        EXPECT_EQ(query.getInt64Field(2), -5000000000);
        EXPECT_EQ(query.getInt64Field(3), 2);
        query.nextRow();
        if (detached) {
            EXPECT_EQ(query.getInt64Field(0, 9), 9);
        }
    }
}

TEST_F(CppSQLite3QueryTest, RowNumbersAreIntegersOf32BitsOrNone) {
    const CppSQLite3Query query =
        m_db.execQuery("select 7, NULL, 2147483647, -2147483648, 2147483648, -2147483649, 4294967297, 1.0, '1', x'31'");
    EXPECT_EQ(qfc::RowNumber(query, "7"), 7);
    EXPECT_EQ(qfc::RowNumber(query, 1), qfc::kNoFolder);
    EXPECT_EQ(qfc::RowNumber(query, 2), 2147483647);
    EXPECT_EQ(qfc::RowNumber(query, 3), INT_MIN);
    for (int field = 4; field < 10; ++field) EXPECT_EQ(qfc::RowNumber(query, field), std::nullopt) << field;
    EXPECT_THROW(qfc::RowNumber(query, "missing"), CppSQLite3Exception);
}

TEST_F(CppSQLite3QueryTest, StatementOfSomebodyElseIsNotFinalised) {
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(m_db.handle(), "select 1", -1, &statement, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_step(statement), SQLITE_ROW);
    {
        CppSQLite3Query query(m_db.handle(), statement, false, false);
        query.finalize();
        EXPECT_EQ(query.getIntField(0), 1);
        query = CppSQLite3Query();
    }
    EXPECT_EQ(sqlite3_next_stmt(m_db.handle(), nullptr), statement);
    EXPECT_EQ(sqlite3_finalize(statement), SQLITE_OK);
}

TEST_F(CppSQLite3QueryTest, MovingIntoAQueryWithAPendingErrorSwallowsTheError) {
    sqlite3_stmt* statement = nullptr;
    constexpr char kFails[] = "select abs(-9223372036854775807 - 1)";
    ASSERT_EQ(sqlite3_prepare(m_db.handle(), kFails, -1, &statement, nullptr), SQLITE_OK);
    CppSQLite3Query query(m_db.handle(), statement, false);
    ASSERT_EQ(sqlite3_step(statement), SQLITE_ERROR);
    EXPECT_NO_THROW(query = m_db.execQuery("select 8"));
    EXPECT_EQ(query.getIntField(0), 8);
    query.finalize();
    EXPECT_EQ(sqlite3_next_stmt(m_db.handle(), nullptr), nullptr);
}

// A statement that has failed tells of it again when it is finalised.
sqlite3_stmt* FailedStatement(sqlite3* db) {
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare(db, "select abs(-9223372036854775807 - 1)", -1, &statement, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_step(statement), SQLITE_ERROR);
    return statement;
}

TEST_F(CppSQLite3QueryTest, FinalisingWithAPendingErrorThrowsOnceAndIsDone) {
    CppSQLite3Query query(m_db.handle(), FailedStatement(m_db.handle()), false);
    EXPECT_EQ(ErrorOf([&] { query.finalize(); }), "SQLITE_ERROR[1]: integer overflow");
    EXPECT_EQ(sqlite3_next_stmt(m_db.handle(), nullptr), nullptr);
    EXPECT_NO_THROW(query.finalize());
    EXPECT_EQ(ErrorOf([&] { query.nextRow(); }), "CPPSQLITE_ERROR[1000]: Null Virtual Machine pointer");
}

TEST_F(CppSQLite3QueryTest, DestructorSwallowsAPendingError) {
    EXPECT_NO_THROW({ const CppSQLite3Query query(m_db.handle(), FailedStatement(m_db.handle()), false); });
    EXPECT_EQ(sqlite3_next_stmt(m_db.handle(), nullptr), nullptr);
}

TEST_F(CppSQLite3QueryTest, TextWithoutColumnsHasNoFieldToAskFor) {
    CppSQLite3Query query = m_db.execQuery("CREATE TABLE U(N)");
    EXPECT_TRUE(query.eof());
    EXPECT_EQ(ErrorOf([&] { query.fieldIndex("N"); }), "CPPSQLITE_ERROR[1000]: Invalid field name requested");
    EXPECT_EQ(ErrorOf([&] { query.getIntField(0); }), "CPPSQLITE_ERROR[1000]: Invalid field index requested");
    EXPECT_EQ(ErrorOf([&] { query.getStringField(0); }), "CPPSQLITE_ERROR[1000]: Invalid field index requested");
}

static_assert(std::has_virtual_destructor_v<CppSQLite3Query> && std::has_virtual_destructor_v<CppSQLite3Statement> &&
              std::has_virtual_destructor_v<CppSQLite3DB> && std::has_virtual_destructor_v<CppSQLite3Exception>);

}  // namespace
