#include "tests/db/EffectLibrary.h"
#include "tests/support/SqlTrace.h"

#include <optional>
#include <random>
#include <set>
#include <sqlite3.h>
#include <string_view>

namespace {

using namespace qfc::test;
using qfc::FilterEntry;

// The library with its connection within reach.
class DBToolsEffectLoads : public EffectLibraryTest {
protected:
    void SetUp() override {
        m_trace.emplace();
        EffectLibraryTest::SetUp();
        m_connection = m_trace->Connection();
    }
    // The last one's filter is the first row.
    void SaveThreeFiles() {
        ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2})));
        ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("b.so", {3, 4})));
        ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("c.so", {5})));
        Exec("update FLT_TABLE set rowid = -1 where ITEM_ID = " + Literal(MakeGuid(5)));
    }
    // What a failure behind the second file's first filter leaves of these.
    static Filters PartOfThree() {
        Filters files{MakeFile("a.so", {1, 2}), MakeFile("b.so", {3, 4}), MakeFile("c.so", {5})};
        files[1].filters.pop_back();
        files[2].filters.clear();
        return files;
    }

    std::optional<SqlTrace> m_trace;
    sqlite3* m_connection = nullptr;
};

// While it lives, some of the statements with the text in them fail behind their first row: those of the given places,
// from 0.
class FailBehindFirstRow {
public:
    FailBehindFirstRow(sqlite3* connection, std::string_view text, std::set<int> places)
        : m_connection(connection), m_text(text), m_places(std::move(places)) {
        sqlite3_trace_v2(m_connection, SQLITE_TRACE_STMT | SQLITE_TRACE_ROW, &OnEvent, this);
    }
    ~FailBehindFirstRow() { sqlite3_trace_v2(m_connection, 0, nullptr, nullptr); }
    FailBehindFirstRow(const FailBehindFirstRow&) = delete;
    FailBehindFirstRow& operator=(const FailBehindFirstRow&) = delete;

    int Seen() const { return m_seen; }

private:
    static int OnEvent(unsigned event, void* self, void* statement, void* sql) {
        auto& failing = *static_cast<FailBehindFirstRow*>(self);
        if (event == SQLITE_TRACE_STMT) {
            const bool counts =
                std::string_view(static_cast<const char*>(sql)).find(failing.m_text) != std::string::npos;
            failing.m_failing = counts && failing.m_places.contains(failing.m_seen++) ? statement : nullptr;
        } else if (statement == failing.m_failing) {
            // SQLite looks on its way to the next row, and forgets about it once nothing runs any more.
            sqlite3_interrupt(failing.m_connection);
        }
        return 0;
    }

    sqlite3* m_connection;
    std::string_view m_text;
    std::set<int> m_places;
    const void* m_failing = nullptr;
    int m_seen = 0;
};

// --- Rows
// --------------------------------------------------------------------------------------------------------------

TEST_F(DBToolsEffectLoads, RowsWithAnAbsentOrEmptyBlockAreNotReturned) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2, 3, 4, 5})));
    const auto damage = [&](int number, const char* change) {
        Exec(std::string("update FLT_TABLE set ") + change + " where ITEM_ID = " + Literal(MakeGuid(number)));
    };
    damage(1, "DSVFTABLE_DATA = X''");
    damage(2, "DSVFTABLE_DATA = NULL");
    damage(3, "DSORVFT_DATA = X''");
    damage(4, "DSORVFT_DATA = NULL");
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_EQ(Files()[0].nFilterCount, 5);
    ASSERT_EQ(Files()[0].filters.size(), 1u);
    EXPECT_EQ(Files()[0].filters[0].guidItem, MakeGuid(5));
}

TEST_F(DBToolsEffectLoads, BlocksOfAnyStoredLengthComeBack) {
    Exec(
        "insert into FLT_FILE_TABLE values('a.so', 1);"
        "insert into FLT_TABLE values(X'01', zeroblob(70000), 'a.so', " +
        Literal(MakeGuid(1)) + ")");
    EXPECT_EQ(Files().at(0).filters.at(0).descriptor, Block{1});
    EXPECT_EQ(Files().at(0).filters.at(0).table, Block(70000));
}

TEST_F(DBToolsEffectLoads, NullCellsReadAsEmptyAndZero) {
    Exec(
        "insert into FLT_FILE_TABLE values(NULL, NULL);"
        "insert into TRANSITION_TABLE values(NULL, X'01', " +
        Literal(MakeGuid(1)) + ")");
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_EQ(Files()[0].strFileName, "");
    EXPECT_EQ(Files()[0].nFilterCount, 0);
    EXPECT_EQ(AllTransitions().at(0).strFileName, "");
}

TEST_F(DBToolsEffectLoads, RowsWhoseItemIsNoGuidAreNotReturned) {
    Exec(
        "insert into FLT_FILE_TABLE values('a.so', 3);"
        "insert into FLT_TABLE values(X'01', X'02', 'a.so', X'0102');"
        "insert into FLT_TABLE values(X'01', X'02', 'a.so', NULL);"
        "insert into FLT_TABLE values(X'01', X'02', 'a.so', 7);"
        "insert into TRANSITION_TABLE values('b.so', X'01', X'00112233445566778899AABBCCDDEEFF00');"
        "insert into TRANSITION_TABLE values('b.so', X'01', NULL)");
    EXPECT_TRUE(Files().at(0).filters.empty());
    EXPECT_TRUE(AllTransitions().empty());
}

TEST_F(DBToolsEffectLoads, LoadsEmptyTheListFirst) {
    Filters files{MakeFile("stale", {1})};
    Transitions transitions{MakeTransition("stale", 1)};
    EXPECT_TRUE(m_tools->LoadFilterFiles(files));
    EXPECT_TRUE(m_tools->LoadTransitions(transitions));
    EXPECT_TRUE(files.empty());
    EXPECT_TRUE(transitions.empty());
}

// --- Failures
// ----------------------------------------------------------------------------------------------------------

TEST_F(DBToolsEffectLoads, ALoadThatFailsOnItsWayLeavesWhatWasAppended) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    for (const char* name : {"b.so", "c.so"}) ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile(name, {})));
    Exec("drop table FLT_TABLE");
    Filters files{MakeFile("stale", {9})};
    EXPECT_FALSE(m_tools->LoadFilterFiles(files));
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[0].strFileName, "a.so");
    EXPECT_TRUE(files[0].filters.empty());
}

TEST_F(DBToolsEffectLoads, ALoadThatFailsAtItsFirstQueryLeavesAnEmptyList) {
    Exec("drop table FLT_FILE_TABLE; drop table TRANSITION_TABLE");
    Filters files{MakeFile("stale", {9})};
    Transitions transitions{MakeTransition("stale", 9)};
    EXPECT_FALSE(m_tools->LoadFilterFiles(files));
    EXPECT_FALSE(m_tools->LoadTransitions(transitions));
    EXPECT_TRUE(files.empty());
    EXPECT_TRUE(transitions.empty());
}

TEST_F(DBToolsEffectLoads, AQueryThatFailsForALaterFile_LeavesWhatTheEarlierOnesGave) {
    SaveThreeFiles();
    m_tools->SetShortcuts(false);
    const FailBehindFirstRow failing(m_connection, " from FLT_TABLE", {1});
    Filters files;
    EXPECT_FALSE(m_tools->LoadFilterFiles(files));
    EXPECT_EQ(failing.Seen(), 2);
    EXPECT_EQ(TextOf(files), TextOf(PartOfThree()));
}

TEST_F(DBToolsEffectLoads, AScanThatFails_HasTheSingleQueriesBehindIt) {
    SaveThreeFiles();
    const std::string whole = TextOf(Files());
    const FailBehindFirstRow failing(m_connection, " from FLT_TABLE", {0});
    EXPECT_EQ(TextOf(Files()), whole);
    EXPECT_EQ(failing.Seen(), 4);
}

TEST_F(DBToolsEffectLoads, AScanAndASingleQueryThatFail_LeaveWhatTheSingleQueriesGave) {
    SaveThreeFiles();
    const FailBehindFirstRow failing(m_connection, " from FLT_TABLE", {0, 2});
    Filters files;
    EXPECT_FALSE(m_tools->LoadFilterFiles(files));
    EXPECT_EQ(failing.Seen(), 3);
    EXPECT_EQ(TextOf(files), TextOf(PartOfThree()));
}

TEST_F(DBToolsEffectLoads, ALoadOfTransitionsThatFailsBehindARow_LeavesThatRow) {
    for (const int number : {1, 2, 3}) ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("a.so", number)));
    Transitions transitions{MakeTransition("stale", 9)};
    const FailBehindFirstRow failing(m_connection, "Select * from TRANSITION_TABLE", {0});
    EXPECT_FALSE(m_tools->LoadTransitions(transitions));
    ASSERT_EQ(transitions.size(), 1u);
    EXPECT_EQ(transitions[0].guidItem, MakeGuid(1));
}

// --- One scan instead of a query for each file --------------------------------------------------------------------

// Names as texts of SQL: equal ones, nearly equal ones, and what is no text, or none that reads back as it is.
const char* const kNames[] = {"'a.so'",
                              "'b.so'",
                              "'A.so'",
                              "'a.so '",
                              "''",
                              "NULL",
                              "x'612E736F'",
                              "7",
                              "7.5",
                              "'7'",
                              "'\xC3\xA4.so'",
                              "'a.so' || char(0) || 'x'",
                              "'a.so' || char(0)",
                              "char(65535)",
                              "char(65533)",
                              "char(128526)",
                              "cast(x'E4' as text)",
                              "cast(x'F6' as text)",
                              "cast(x'E400' as text)",
                              "cast(x'00D84100' as text)",
                              "cast(x'41DC41DC' as text)",
                              "char(132161)",
                              "cast(x'00D8' as text)"};

class DBToolsEffectScan : public EffectLibraryTest {
protected:
    std::size_t Pick(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random); }
    const char* Name() { return kNames[Pick(std::size(kNames))]; }
    const char* Value() {
        static const char* const kValues[] = {"x'0102'", "x'03'", "'text'", "5", "NULL", "x''", "''"};
        return kValues[Pick(Pick(3) == 0 ? std::size(kValues) : 2)];
    }
    std::string Item() {
        return Pick(12) == 0 ? std::string(Pick(2) == 0 ? "NULL" : "'0123456789abcdef'")
                             : Literal(MakeGuid(static_cast<int>(Pick(1000))));
    }
    void FillAtRandom() {
        std::string sql = "begin; delete from FLT_FILE_TABLE; delete from FLT_TABLE; delete from TRANSITION_TABLE;";
        for (std::size_t row = Pick(12); row-- > 0;) {
            sql += std::string("insert or replace into FLT_FILE_TABLE values(") + Name() + ", " + Value() + ");";
        }
        for (std::size_t row = Pick(40); row-- > 0;) {
            sql += std::string("insert or replace into FLT_TABLE(rowid, DSORVFT_DATA, DSVFTABLE_DATA, FILE_NAME,") +
                   " ITEM_ID) values(" + std::to_string(Pick(100000)) + ", " + Value() + ", " + Value() + ", " +
                   Name() + ", " + Item() + ");";
        }
        for (std::size_t row = Pick(20); row-- > 0;) {
            sql += std::string("insert or replace into TRANSITION_TABLE values(") + Name() + ", " + Value() + ", " +
                   Item() + ");";
        }
        Exec(sql + "commit");
    }
    std::string Loaded(bool shortcut) {
        m_tools->SetShortcuts(shortcut);
        return TextOf(Files());
    }
    void ExpectEqualLoads(int rounds) {
        std::size_t filters = 0;
        for (int round = 0; round < rounds; ++round) {
            FillAtRandom();
            const std::string literal = Loaded(false);
            EXPECT_EQ(Loaded(true), literal) << "round " << round;
            if (HasFailure()) return;
            for (const auto& file : Files()) filters += file.filters.size();
        }
        EXPECT_GT(filters, static_cast<std::size_t>(rounds));
    }

    std::mt19937 m_random{20260102};
};

TEST_F(DBToolsEffectScan, ReadsWhatTheSingleQueriesRead_InUtf16) { ExpectEqualLoads(150); }

TEST_F(DBToolsEffectScan, ReadsWhatTheSingleQueriesRead_InUtf8) {
    OpenInUtf8();
    ExpectEqualLoads(150);
}

// Tables that compare or order otherwise than the known one are asked file by file.
TEST_F(DBToolsEffectScan, ReadsWhatTheSingleQueriesRead_FromOddTables) {
    for (const char* making :
         {"create table FLT_TABLE(DSORVFT_DATA, DSVFTABLE_DATA, FILE_NAME TEXT collate nocase, ITEM_ID)",
          "create table FLT_TABLE(DSORVFT_DATA, DSVFTABLE_DATA, FILE_NAME INTEGER, ITEM_ID)",
          "create table FLT_TABLE(DSORVFT_DATA, DSVFTABLE_DATA, FILE_NAME TEXT, ITEM_ID);"
          "create index ODD on FLT_TABLE(FILE_NAME, ITEM_ID desc)"}) {
        Exec(std::string("drop table FLT_TABLE;") + making);
        m_tools.reset();
        Open();
        ExpectEqualLoads(20);
    }
    m_tools.reset();
    OpenInUtf8();
    Exec("create index ODD on FLT_TABLE(FILE_NAME, ITEM_ID desc)");
    ExpectEqualLoads(20);
}

TEST_F(DBToolsEffectScan, IsOneStatementForAllFiles) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    for (const int number : {1, 2, 3}) {
        ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile(std::to_string(number).c_str(), {number})));
    }
    trace.Clear();
    EXPECT_EQ(Files().size(), 3u);
    EXPECT_EQ(trace.CountStartingWith("Select * from FLT_TABLE"), 0);
    EXPECT_EQ(trace.CountStartingWith("Select DSORVFT_DATA, DSVFTABLE_DATA, FILE_NAME"), 1);
}

}  // namespace
