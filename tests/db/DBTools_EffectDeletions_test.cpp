#include "tests/db/EffectLibrary.h"
#include "tests/support/SqlTrace.h"

#include <functional>
#include <optional>
#include <random>
#include <sqlite3.h>

namespace {

using namespace qfc::test;
using qfc::FilterEntry;

using DBToolsEffectDeletions = EffectLibraryTest;

// --- Files
// -------------------------------------------------------------------------------------------------------------

TEST_F(DBToolsEffectDeletions, DeletingAFileTakesItsRowAndItsFiltersOnly) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2})));
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("b.so", {3})));
    ASSERT_TRUE(AddItem(1, AddGallery(6)));
    EXPECT_TRUE(m_tools->DeleteFilterFile("a.so"));
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_EQ(Files()[0].strFileName, "b.so");
    EXPECT_EQ(Count("FLT_TABLE"), "1");
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

TEST_F(DBToolsEffectDeletions, DeletingAnUnknownFileIsTrueAndChangesNothing) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("a.so", 2)));
    EXPECT_TRUE(m_tools->DeleteFilterFile("A.SO"));
    EXPECT_TRUE(m_tools->DeleteTransitionFile("A.SO"));
    EXPECT_EQ(Count("FLT_TABLE"), "1");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "1");
}

TEST_F(DBToolsEffectDeletions, DeletingATransitionFileTakesEveryTransitionOfIt) {
    for (const int number : {1, 2}) ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("a.so", number)));
    ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("b.so", 3)));
    EXPECT_TRUE(m_tools->DeleteTransitionFile("a.so"));
    ASSERT_EQ(AllTransitions().size(), 1u);
    EXPECT_EQ(AllTransitions()[0].guidItem, MakeGuid(3));
}

TEST_F(DBToolsEffectDeletions, ADeletionWhoseFiltersAreRefusedKeepsTheFileToo) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    RefuseDeletes("FLT_TABLE");
    EXPECT_FALSE(m_tools->DeleteFilterFile("a.so"));
    EXPECT_EQ(Count("FLT_FILE_TABLE"), "1");
    EXPECT_EQ(Count("FLT_TABLE"), "1");
}

TEST_F(DBToolsEffectDeletions, SeveralFilesAreDeletedTogetherOrNotAtAll) {
    const Filters files{MakeFile("a.so", {1}), MakeFile("b.so", {2})};
    const Transitions transitions{MakeTransition("c.so", 3), MakeTransition("d.so", 4)};
    for (const auto& file : files) ASSERT_TRUE(m_tools->SaveFilterFile(file));
    for (const auto& transition : transitions) ASSERT_TRUE(m_tools->SaveTransition(transition));
    for (const std::string table : {"FLT_FILE_TABLE", "TRANSITION_TABLE"}) {
        Exec("create trigger REFUSE_" + table + " before delete on " + table +
             " when old.FILE_NAME in ('b.so', 'd.so') begin select raise(fail, 'refused'); end");
    }
    EXPECT_FALSE(m_tools->DeleteFilterFiles(files));
    EXPECT_FALSE(m_tools->DeleteTransitionFiles(transitions));
    EXPECT_EQ(Count("FLT_TABLE"), "2");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "2");
    Exec("drop trigger REFUSE_FLT_FILE_TABLE; drop trigger REFUSE_TRANSITION_TABLE");
    EXPECT_TRUE(m_tools->DeleteFilterFiles(files));
    EXPECT_TRUE(m_tools->DeleteTransitionFiles(transitions));
    EXPECT_EQ(Count("FLT_FILE_TABLE"), "0");
    EXPECT_EQ(Count("FLT_TABLE"), "0");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "0");
}

TEST_F(DBToolsEffectDeletions, WithoutConnectionEverythingFails) {
    bool ok = true;
    DBTools tools(CString((m_folder / "missing/library.db").c_str()), ok);
    ASSERT_FALSE(ok);
    Filters files{MakeFile("stale", {1})};
    Transitions transitions{MakeTransition("stale", 1)};
    EXPECT_FALSE(tools.LoadFilterFiles(files));
    EXPECT_FALSE(tools.LoadTransitions(transitions));
    EXPECT_FALSE(tools.SaveFilterFile(MakeFile("a.so", {1})));
    EXPECT_FALSE(tools.SaveTransition(MakeTransition("a.so", 1)));
    EXPECT_FALSE(tools.DeleteFilterFile("a.so"));
    EXPECT_FALSE(tools.DeleteTransitionFile("a.so"));
    EXPECT_FALSE(tools.DeleteFilterFiles({}));
    EXPECT_FALSE(tools.DeleteTransitionFiles({}));
    EXPECT_FALSE(tools.ClearFiltersAndTransitions());
}

// --- Clearing
// ----------------------------------------------------------------------------------------------------------

TEST_F(DBToolsEffectDeletions, ClearingEmptiesTheTablesAndTakesTheItems) {
    const int folder = AddGallery(6);
    for (const int number : {1, 2, 3, 4}) ASSERT_TRUE(AddItem(number, folder, number, Noise(500)));
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2})));
    ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("b.so", 3)));
    EXPECT_TRUE(m_tools->ClearFiltersAndTransitions());
    for (const char* table : {"FLT_FILE_TABLE", "FLT_TABLE", "TRANSITION_TABLE"}) EXPECT_EQ(Count(table), "0");
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(Cell("select ITEM_ID from ITEM_TABLE"), Literal(MakeGuid(4)));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "1");
    EXPECT_EQ(Count("RELATION_TABLE"), "4");  // Placements are not touched.
}

TEST_F(DBToolsEffectDeletions, ClearingPassesOverIdsThatAreNone) {
    Exec(
        "insert into FLT_TABLE values(X'01', X'02', 'a.so', X'0102');"
        "insert into TRANSITION_TABLE values('b.so', X'01', NULL)");
    EXPECT_TRUE(m_tools->ClearFiltersAndTransitions());
    EXPECT_EQ(Count("FLT_TABLE"), "0");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "0");
}

TEST_F(DBToolsEffectDeletions, ARefusedClearingChangesNothing) {
    ASSERT_TRUE(AddItem(1, AddGallery(6), 0, Noise(500)));
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    RefuseDeletes("FLT_FILE_TABLE");
    const std::string before = DumpOf(m_path);
    EXPECT_FALSE(m_tools->ClearFiltersAndTransitions());
    EXPECT_EQ(DumpOf(m_path), before);
}

// --- Beside another writer ----------------------------------------------------------------------------------------

struct Removal {
    const char* name;
    std::function<bool(DBTools&)> run;
};

std::ostream& operator<<(std::ostream& stream, const Removal& removal) { return stream << removal.name; }

const Removal kRemovals[] = {
    {"OneFilterFile", [](DBTools& tools) { return tools.DeleteFilterFile("a.so"); }},
    {"OneTransitionFile", [](DBTools& tools) { return tools.DeleteTransitionFile("a.so"); }},
    {"FilterFiles",
     [](DBTools& tools) {
         const Filters files{MakeFile("a.so", {}), MakeFile("b.so", {})};
         return tools.DeleteFilterFiles(files);
     }},
    {"TransitionFiles",
     [](DBTools& tools) {
         const Transitions transitions{MakeTransition("a.so", 1), MakeTransition("b.so", 2)};
         return tools.DeleteTransitionFiles(transitions);
     }},
    {"Everything", [](DBTools& tools) { return tools.ClearFiltersAndTransitions(); }},
};

class DBToolsEffectRemovals : public EffectLibraryTest, public testing::WithParamInterface<Removal> {
protected:
    void SetUp() override {
        m_trace.emplace();
        EffectLibraryTest::SetUp();
        m_connection = m_trace->Connection();
        for (const int number : {1, 2}) {
            const char* const name = number == 1 ? "a.so" : "b.so";
            ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile(name, {number})));
            ASSERT_TRUE(m_tools->SaveTransition(MakeTransition(name, number)));
        }
        m_before = DumpOf(m_path);
    }

    std::optional<SqlTrace> m_trace;
    sqlite3* m_connection = nullptr;
    std::string m_before;
};

INSTANTIATE_TEST_SUITE_P(Removals, DBToolsEffectRemovals, testing::ValuesIn(kRemovals),
                         [](const auto& removal) { return std::string(removal.param.name); });

// SQLite asks the busy handler only where waiting can help: not for a reader that turns writer.
TEST_P(DBToolsEffectRemovals, WaitForAForeignWriter) {
    RawDb writer(m_path);
    writer.Exec("BEGIN IMMEDIATE");
    const auto letGo = [](void* other, int calls) {
        if (calls == 0) static_cast<RawDb*>(other)->Exec("COMMIT");
        return calls == 0 ? 1 : 0;
    };
    sqlite3_busy_handler(m_connection, letGo, &writer);
    EXPECT_TRUE(GetParam().run(*m_tools));
    EXPECT_NE(DumpOf(m_path), m_before);
}

TEST_P(DBToolsEffectRemovals, BesideAForeignWriterThatStays_AreFalseAndChangeNothing) {
    sqlite3_busy_timeout(m_connection, 0);
    {
        RawDb writer(m_path);
        writer.Exec("BEGIN IMMEDIATE");
        EXPECT_FALSE(GetParam().run(*m_tools));
    }
    EXPECT_EQ(DumpOf(m_path), m_before);
    EXPECT_TRUE(GetParam().run(*m_tools));
}

// --- Many files at once -------------------------------------------------------------------------------------------

using DBToolsEffectMany = EffectLibraryTest;

const char* const kNames[] = {
    "a.so", "b.so", "A.so", "", "7", "7.0", "\xC3\xA4", "\xE4", "\xEF\xBF\xBD", "\xF0\xA0\x91\x81", "none"};
const char* const kStored[] = {"'a.so'",
                               "'b.so'",
                               "'A.so'",
                               "''",
                               "NULL",
                               "x'612E736F'",
                               "7",
                               "7.0",
                               "'a.so ' ",
                               "char(228)",
                               "char(65533)",
                               "'a.so' || char(0)",
                               "cast(x'41DC41DC' as text)",
                               "char(132161)"};

TEST_F(DBToolsEffectMany, AreDeletedAsOneByOne) {
    std::mt19937 random(20260103);
    const auto pick = [&](std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    std::size_t gone = 0;
    for (int round = 0; round < 60; ++round) {
        std::string sql = "begin; delete from FLT_FILE_TABLE; delete from FLT_TABLE; delete from TRANSITION_TABLE;";
        for (std::size_t row = pick(30); row-- > 0;) {
            const std::string name = kStored[pick(std::size(kStored))];
            const std::string item = Literal(MakeGuid(static_cast<int>(pick(1000))));
            sql += "insert or replace into FLT_FILE_TABLE values(" + name + ", 1);";
            sql += "insert or replace into FLT_TABLE values(x'01', x'02', " + name + ", " + item + ");";
            sql += "insert or replace into TRANSITION_TABLE values(" + name + ", x'01', " + item + ");";
        }
        Filters files;
        Transitions transitions;
        for (std::size_t count = pick(6); count-- > 0;) {
            files.push_back(MakeFile(kNames[pick(std::size(kNames))], {}));
            transitions.push_back(MakeTransition(kNames[pick(std::size(kNames))], 1));
        }
        Exec(sql + "commit");
        const std::string before = DumpOf(m_path);
        std::string behind[2];
        for (const bool shortcut : {false, true}) {
            Exec(sql + "commit");
            m_tools->SetShortcuts(shortcut);
            EXPECT_TRUE(m_tools->DeleteFilterFiles(files));
            EXPECT_TRUE(m_tools->DeleteTransitionFiles(transitions));
            behind[shortcut ? 1 : 0] = DumpOf(m_path);
        }
        EXPECT_EQ(behind[0], behind[1]) << "round " << round << ": " << sql;
        if (behind[0] != before) ++gone;
    }
    EXPECT_GT(gone, 20u);
}

// More names than one statement takes.
TEST_F(DBToolsEffectMany, AreAllDeletedHoweverManyTheyAre) {
    constexpr int kMany = 10001;
    Exec("with recursive N(I) as (values(1) union all select I + 1 from N where I <= " + std::to_string(kMany) +
         ") insert into FLT_FILE_TABLE select 'f' || I, 1 from N;"
         "insert into FLT_TABLE select x'01', x'02', FILE_NAME, FILE_NAME from FLT_FILE_TABLE;"
         "insert into TRANSITION_TABLE select FILE_NAME, x'01', FILE_NAME from FLT_FILE_TABLE");
    Filters files(kMany);
    Transitions transitions(kMany);
    for (int number = 1; number <= kMany; ++number) {
        files[static_cast<std::size_t>(number - 1)].strFileName.Format("f%d", number);
        transitions[static_cast<std::size_t>(number - 1)].strFileName.Format("f%d", number);
    }
    EXPECT_TRUE(m_tools->DeleteFilterFiles(files));
    EXPECT_TRUE(m_tools->DeleteTransitionFiles(transitions));
    for (const char* table : {"FLT_FILE_TABLE", "FLT_TABLE", "TRANSITION_TABLE"}) {
        EXPECT_EQ(Cell(std::string("select group_concat(FILE_NAME) from ") + table), "'f10002'") << table;
    }
}

TEST_F(DBToolsEffectMany, SendOneStatementForAllNames) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    trace.Clear();
    EXPECT_TRUE(m_tools->DeleteFilterFiles(Filters(3)));
    EXPECT_TRUE(m_tools->DeleteTransitionFiles(Transitions(2)));
    EXPECT_EQ(trace.Statements(),
              (std::vector<std::string>{"BEGIN TRANSACTION;", "Delete from FLT_FILE_TABLE where FILE_NAME in (?, ?, ?)",
                                        "Delete from FLT_TABLE where FILE_NAME in (?, ?, ?)", "END TRANSACTION;",
                                        "BEGIN TRANSACTION;", "Delete from TRANSITION_TABLE where FILE_NAME in (?, ?)",
                                        "END TRANSACTION;"}));
}

TEST_F(DBToolsEffectMany, AreNoneAndNothingHappens) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    trace.Clear();
    EXPECT_TRUE(m_tools->DeleteFilterFiles({}));
    EXPECT_TRUE(m_tools->DeleteTransitionFiles({}));
    EXPECT_EQ(trace.Count("BEGIN TRANSACTION;"), 2);
    EXPECT_EQ(trace.Statements().size(), 4u);
}

// --- The work that many files take --------------------------------------------------------------------------------

class DBToolsEffectWork : public EffectLibraryTest {
protected:
    void SetUp() override {
        m_trace.emplace();
        EffectLibraryTest::SetUp();
        m_connection = m_trace->Connection();
    }
    // So many filter files of one filter each, and so many transitions.
    void Fill(int count) {
        Exec(
            "begin; delete from FLT_FILE_TABLE; delete from FLT_TABLE; delete from TRANSITION_TABLE;"
            "with recursive N(I) as (values(1) union all select I + 1 from N where I < " +
            std::to_string(count) +
            ") insert into FLT_FILE_TABLE select '/usr/lib/fx/' || I, 1 from N;"
            "insert into FLT_TABLE select x'01', x'02', FILE_NAME, randomblob(16) from FLT_FILE_TABLE;"
            "insert into TRANSITION_TABLE select FILE_NAME, x'01', randomblob(16) from FLT_FILE_TABLE; commit");
    }
    // The steps that SQLite takes for it, in hundreds.
    int StepsOf(const std::function<bool()>& work) {
        int steps = 0;
        const auto count = [](void* seen) {
            ++*static_cast<int*>(seen);
            return 0;
        };
        sqlite3_progress_handler(m_connection, 100, count, &steps);
        EXPECT_TRUE(work());
        sqlite3_progress_handler(m_connection, 0, nullptr, nullptr);
        return steps;
    }

    std::optional<SqlTrace> m_trace;
    sqlite3* m_connection = nullptr;
};

// Eight times the files take about eight times the steps; a scan of the table for each would take sixty-four times.
TEST_F(DBToolsEffectWork, GrowsWithTheFilesAndNotWithTheirSquare) {
    int load[2];
    int filters[2];
    int transitions[2];
    for (const int round : {0, 1}) {
        Fill(round == 0 ? 250 : 2000);
        Filters files;
        Transitions all;
        load[round] = StepsOf([&] { return m_tools->LoadFilterFiles(files) && m_tools->LoadTransitions(all); });
        ASSERT_EQ(files.size(), round == 0 ? 250u : 2000u);
        EXPECT_EQ(files.back().filters.size(), 1u);
        filters[round] = StepsOf([&] { return m_tools->DeleteFilterFiles(files); });
        transitions[round] = StepsOf([&] { return m_tools->DeleteTransitionFiles(all); });
    }
    for (const auto& steps : {load, filters, transitions}) {
        EXPECT_GT(steps[0], 10);
        EXPECT_LT(steps[1], 16 * steps[0]);
    }
    EXPECT_EQ(Count("FLT_TABLE"), "0");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "0");
}

}  // namespace
