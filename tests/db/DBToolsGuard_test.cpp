#include "db/DBToolsGuard.h"

#include "db/CurrentDBTools.h"
#include "tests/db/DbTestSupport.h"
#include "tests/support/SqlTrace.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <optional>
#include <sqlite3.h>
#include <stdexcept>
#include <thread>

namespace {

using namespace qfc::test;

// Each operation under a trace, with the connection within reach.
class DBToolsGuard : public LibraryTest {
protected:
    void SetUp() override {
        m_trace.emplace();
        LibraryTest::SetUp();
        m_connection = m_trace->Connection();
        sqlite3_busy_timeout(m_connection, 0);
        m_trace->Clear();
    }

    bool AddOne(int number = 1) { return AddItem(number, 5); }

    std::optional<SqlTrace> m_trace;
    sqlite3* m_connection = nullptr;
};

// Lets SQLite refuse BEGIN, COMMIT or ROLLBACK, like any error that strikes there.
class Refusal {
public:
    Refusal(sqlite3* connection, std::vector<std::string> refused)
        : m_connection(connection), m_refused(std::move(refused)) {
        sqlite3_set_authorizer(m_connection, &Authorize, this);
    }
    ~Refusal() { sqlite3_set_authorizer(m_connection, nullptr, nullptr); }

private:
    static int Authorize(void* self, int action, const char* name, const char*, const char*, const char*) {
        if (action != SQLITE_TRANSACTION) return SQLITE_OK;
        for (const std::string& refused : static_cast<Refusal*>(self)->m_refused) {
            if (refused == name) return SQLITE_DENY;
        }
        return SQLITE_OK;
    }

    sqlite3* m_connection;
    std::vector<std::string> m_refused;
};

TEST_F(DBToolsGuard, SuccessIsBeginAndEnd) {
    ASSERT_TRUE(m_tools->InsertGallery(1, 1));
    EXPECT_EQ(m_trace->Statements(),
              (std::vector<std::string>{"BEGIN TRANSACTION;",
                                        "INSERT into GALLERY_TABLE (GALLERY_FOLDER_ID, GALLERY_ID) values (?, ?)",
                                        "END TRANSACTION;"}));
}

TEST_F(DBToolsGuard, FailureIsBeginAndRollback) {
    ASSERT_TRUE(m_tools->InsertGallery(1, 1));
    m_trace->Clear();
    EXPECT_FALSE(m_tools->InsertGallery(2, 1));
    EXPECT_EQ(m_trace->Count("BEGIN TRANSACTION;"), 1);
    EXPECT_EQ(m_trace->Count("ROLLBACK TRANSACTION;"), 1);
    EXPECT_EQ(m_trace->Count("END TRANSACTION;"), 0);
    EXPECT_NE(sqlite3_get_autocommit(m_connection), 0);
}

TEST_F(DBToolsGuard, ResultIsKeptAcrossNumbers) {
    EXPECT_EQ(m_tools->GetGalleryIdByFolder(1), -1);
    EXPECT_EQ(m_trace->Count("END TRANSACTION;"), 1);
}

// --- BEGIN, END and ROLLBACK that do not take ---

TEST_F(DBToolsGuard, OperationIsNotRunWhenBeginDidNotTake) {
    {
        const Refusal refusal(m_connection, {"BEGIN"});
        EXPECT_FALSE(AddOne());
        EXPECT_EQ(m_tools->GetGalleryIdByFolder(1), -1);
        EXPECT_EQ(m_tools->AddFolderOrderIndexColumn(), 0);
        CppSQLite3Query query;
        EXPECT_FALSE(m_tools->QueryFolder(1, query));
    }
    EXPECT_TRUE(m_trace->Statements().empty());
    EXPECT_TRUE(AddOne());
}

TEST_F(DBToolsGuard, OperationWhoseEndDidNotTakeIsRolledBackAndFalse) {
    {
        const Refusal refusal(m_connection, {"COMMIT"});
        EXPECT_FALSE(AddOne());
        EXPECT_EQ(m_tools->GetGalleryIdByFolder(1), -1);
        EXPECT_NE(sqlite3_get_autocommit(m_connection), 0) << "a transaction was left open";
    }
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_TRUE(AddOne());
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

TEST_F(DBToolsGuard, NothingLeaksIntoTheNextOperationWhenRollbackDidNotTakeEither) {
    {
        const Refusal refusal(m_connection, {"COMMIT", "ROLLBACK"});
        EXPECT_FALSE(AddOne(1));
        ASSERT_EQ(sqlite3_get_autocommit(m_connection), 0) << "the test needs a transaction that is left open";
    }
    EXPECT_TRUE(AddOne(2));
    EXPECT_EQ(Cell("select group_concat(quote(ITEM_ID)) from ITEM_TABLE").substr(1, 35), Literal(MakeGuid(2)));
}

TEST_F(DBToolsGuard, WhatWasLeftOpenCanBeFinishedBetweenOperations) {
    {
        const Refusal refusal(m_connection, {"COMMIT", "ROLLBACK"});
        EXPECT_FALSE(AddOne(1));
        m_tools->FinishPending();
        EXPECT_EQ(sqlite3_get_autocommit(m_connection), 0) << "refused again";
    }
    m_tools->FinishPending();
    EXPECT_NE(sqlite3_get_autocommit(m_connection), 0);
    EXPECT_NO_THROW(Exec("INSERT INTO GALLERY_TABLE VALUES(1, 1)"));
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    m_trace->Clear();
    m_tools->FinishPending();
    EXPECT_TRUE(m_trace->Statements().empty()) << "nothing was left open";
}

TEST_F(DBToolsGuard, FinishingFromInsideAnOperationDoesNothing) {
    static DBTools* tools = nullptr;
    tools = m_tools.get();
    const auto finish = [](unsigned, void*, void*, void*) {
        tools->FinishPending();
        std::thread([] { tools->FinishPending(); }).join();
        return 0;
    };
    sqlite3_trace_v2(m_connection, SQLITE_TRACE_STMT, finish, nullptr);
    EXPECT_TRUE(AddOne());
    sqlite3_trace_v2(m_connection, 0, nullptr, nullptr);
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

TEST_F(DBToolsGuard, OperationIsRefusedWhileAPendingTransactionCannotBeFinished) {
    const Refusal refusal(m_connection, {"COMMIT", "ROLLBACK"});
    EXPECT_FALSE(AddOne(1));
    EXPECT_FALSE(AddOne(2));
}

// Only the rollback is refused: a COMMIT would go through, with what the refused operation left.
TEST_F(DBToolsGuard, OperationIsRefusedWhileAPendingTransactionCannotBeRolledBack) {
    {
        const Refusal refusal(m_connection, {"COMMIT", "ROLLBACK"});
        EXPECT_FALSE(AddOne(1));
    }
    m_trace->Clear();
    {
        const Refusal refusal(m_connection, {"ROLLBACK"});
        EXPECT_FALSE(AddOne(2));
    }
    EXPECT_EQ(m_trace->CountStartingWith("END"), 0);
    EXPECT_EQ(m_trace->CountStartingWith("REPLACE"), 0);
    m_tools.reset();
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
}

TEST_F(DBToolsGuard, NothingIsStoredAtCloseOfWhatWasLeftOpen) {
    {
        const Refusal refusal(m_connection, {"COMMIT", "ROLLBACK"});
        EXPECT_FALSE(AddOne(1));
    }
    m_tools.reset();
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_NO_THROW(Exec("INSERT INTO GALLERY_TABLE VALUES(1, 1)"));
}

// While it lives, the connection rolls back by itself behind each statement about a table.
class RollbackBehind {
public:
    RollbackBehind(sqlite3* connection, std::string_view table) : m_connection(connection), m_table(table) {
        sqlite3_trace_v2(m_connection, SQLITE_TRACE_PROFILE, &OnEnd, this);
    }
    ~RollbackBehind() { sqlite3_trace_v2(m_connection, 0, nullptr, nullptr); }

private:
    static int OnEnd(unsigned, void* self, void* statement, void*) {
        const RollbackBehind& rollback = *static_cast<RollbackBehind*>(self);
        const std::string_view sql = sqlite3_sql(static_cast<sqlite3_stmt*>(statement));
        if (sql.find(rollback.m_table) == std::string_view::npos) return 0;
        return sqlite3_exec(rollback.m_connection, "ROLLBACK", nullptr, nullptr, nullptr);
    }

    sqlite3* m_connection;
    std::string_view m_table;
};

// What the operation still has to write would stay, outside of its transaction.
TEST_F(DBToolsGuard, OperationThatSqliteRolledBackOnTheWayIsFalseAndWritesNothingMore) {
    {
        const RollbackBehind rollback(m_connection, "ITEM_TABLE");
        EXPECT_FALSE(AddItem(1, 5, 0, Repeated(10, 1)));
    }
    const char* const kTables[] = {"ITEM_TABLE", "RELATION_TABLE", "CACHE_DATA_TABLE"};
    for (const char* table : kTables) EXPECT_EQ(Count(table), "0") << table;
    EXPECT_TRUE(AddOne());
}

TEST_F(DBToolsGuard, ClearThatSqliteRolledBackOnTheWayIsFalseAndDropsNothing) {
    ASSERT_TRUE(AddOne());
    const std::string before = DumpOf(m_path);
    {
        const RollbackBehind rollback(m_connection, "FLT_FILE_TABLE");
        EXPECT_FALSE(m_tools->ClearDatabase());
    }
    EXPECT_EQ(DumpOf(m_path), before);
    EXPECT_TRUE(m_tools->ClearDatabase());
}

// --- Other connections to the file ---

TEST_F(DBToolsGuard, EndThatMeetsAForeignReaderIsRolledBackAndFalse) {
    ASSERT_TRUE(AddOne(1));
    {
        RawDb reader(m_path);
        reader.Exec("BEGIN");
        reader.Rows("select * from ITEM_TABLE");
        EXPECT_FALSE(AddOne(2));
        EXPECT_NE(sqlite3_get_autocommit(m_connection), 0);
    }
    EXPECT_TRUE(AddOne(3));
    EXPECT_EQ(Count("ITEM_TABLE"), "2");
}

TEST_F(DBToolsGuard, ForeignWriterMakesTheOperationFalse) {
    {
        RawDb writer(m_path);
        writer.Exec("BEGIN IMMEDIATE");
        EXPECT_FALSE(AddOne(1));
    }
    EXPECT_TRUE(AddOne(1));
}

TEST_F(DBToolsGuard, TableMadeByAnotherProcessDoesNotFailAnOperation) {
    ASSERT_TRUE(AddOne(1));
    Exec("CREATE TABLE FOREIGN_TABLE(N)");
    m_trace->Clear();
    EXPECT_TRUE(AddOne(2));
    // Run twice, since the first compilation did not know the new schema.
    EXPECT_EQ(m_trace->CountStartingWith("REPLACE into ITEM_TABLE"), 2);
    EXPECT_EQ(m_trace->CountStartingWith("BEGIN"), 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "2");
}

TEST_F(DBToolsGuard, ReadOnlyLibraryReadsAndReportsEveryWriteAsFalse) {
    ASSERT_TRUE(AddOne(1));
    sqlite3_exec(m_connection, "PRAGMA query_only = 1", nullptr, nullptr, nullptr);
    EXPECT_FALSE(AddOne(2));
    EXPECT_FALSE(m_tools->ClearDatabase());
    CppSQLite3Query query;
    EXPECT_TRUE(m_tools->QueryItem(MakeGuid(1), query));
    EXPECT_FALSE(query.eof());
}

// --- Queries ---

TEST_F(DBToolsGuard, ReturnedQueryHoldsNeitherTheFileNorTheConnection) {
    ASSERT_TRUE(AddOne(1));
    ASSERT_TRUE(AddOne(2));
    CppSQLite3Query query;
    ASSERT_TRUE(m_tools->QueryFolderItems(5, query));
    EXPECT_EQ(sqlite3_next_stmt(m_connection, nullptr), nullptr);
    EXPECT_NO_THROW(Exec("DELETE FROM RELATION_TABLE"));
    m_tools.reset();
    query.nextRow();
    EXPECT_FALSE(query.eof());
    EXPECT_EQ(query.getIntField("PARENT_ID"), 5);
}

TEST_F(DBToolsGuard, QueryWithARowThatCannotBeReadIsFalse) {
    Exec(
        "DROP TABLE FOLDER_TABLE; CREATE VIEW FOLDER_TABLE AS SELECT 1 AS ID, -1 AS PARENT_ID UNION ALL SELECT "
        "abs(-9223372036854775807 - (select count(*) > 0 from sqlite_master)), -1");
    CppSQLite3Query query;
    EXPECT_FALSE(m_tools->QueryChildFolders(-1, query));
    EXPECT_TRUE(query.eof());
    EXPECT_EQ(sqlite3_next_stmt(m_connection, nullptr), nullptr);
}

TEST_F(DBToolsGuard, EveryQuerySlotComesBackDetached) {
    ASSERT_TRUE(AddItem(1, AddFolder("a", AddGallery(1)), 0, Repeated(10, 1)));
    const GUID item = MakeGuid(1);
    CppSQLite3Query query;
    EXPECT_TRUE(m_tools->QueryFolder(1, query));
    EXPECT_TRUE(m_tools->QueryChildFolders(1, query));
    EXPECT_TRUE(m_tools->QueryFolderItems(2, query));
    EXPECT_TRUE(m_tools->QueryItem(item, query));
    EXPECT_TRUE(m_tools->QueryItemTags(item, query));
    EXPECT_TRUE(m_tools->QueryItemByName("clip", query));
    EXPECT_TRUE(m_tools->QueryCacheData(item, 1, query));
    EXPECT_TRUE(m_tools->QueryCacheDataByType(1, query));
    EXPECT_EQ(sqlite3_next_stmt(m_connection, nullptr), nullptr);
    EXPECT_FALSE(query.eof());
}

// --- Without a connection ---

TEST(DBToolsWithoutConnection, EveryOperationIsFalse) {
    const TempFolder folder;
    bool ok = true;
    DBTools tools(CString((folder / "missing/library.db").c_str()), ok);
    ASSERT_FALSE(ok);
    const GUID item = MakeGuid(1);
    const Bytes bytes = Repeated(10, 1);
    const qfc::PayloadWrite payload = qfc::PackPayload(1, bytes);
    const int gallery = 1;
    CppSQLite3Query query;
    std::vector<qfc::StoredGallery> galleries;
    int number = -1;
    EXPECT_FALSE(tools.InsertGallery(1, 1));
    EXPECT_EQ(tools.GetGalleryIdByFolder(1), 0);
    EXPECT_FALSE(tools.QueryFolder(1, query));
    EXPECT_FALSE(tools.QueryChildFolders(1, query));
    EXPECT_FALSE(tools.QueryFolderItems(1, query));
    EXPECT_FALSE(tools.QueryItem(item, query));
    EXPECT_FALSE(tools.QueryItemTags(item, query));
    EXPECT_FALSE(tools.QueryItemByName("a", query));
    EXPECT_FALSE(tools.QueryCacheData(item, 0, query));
    EXPECT_FALSE(tools.QueryCacheDataByType(0, query));
    EXPECT_FALSE(tools.DeleteCacheData(item, 0));
    EXPECT_FALSE(tools.DeleteAllCacheData(item));
    EXPECT_FALSE(tools.DeleteItemRow(item));
    EXPECT_FALSE(tools.DeleteRelation(item, 1));
    EXPECT_FALSE(tools.DeleteFolderRow(1));
    EXPECT_FALSE(tools.ExportDatabase((folder / "export.db").c_str()));
    EXPECT_FALSE(tools.ClearDatabase());
    EXPECT_FALSE(tools.IsItemAutoLoaded(item, 1));
    EXPECT_FALSE(tools.InsertAutoLoadedItem(item, 1));
    EXPECT_FALSE(tools.IsFileAutoLoaded("a", 1));
    EXPECT_FALSE(tools.InsertAutoLoadedFile("a", 1));
    EXPECT_FALSE(tools.InsertOrUpdateFolder("", 0, "", 0, 0, 0, 0, 0, 0, number));
    EXPECT_FALSE(tools.AddItemDb(MakeItem(1), {&payload, 1}, 1, 0));
    EXPECT_FALSE(tools.UpdateItemDB(MakeItem(1), {}));
    EXPECT_FALSE(tools.UpdateCacheData(item, payload));
    EXPECT_FALSE(tools.UpdateCacheData(item, qfc::PackPayload(1, {})));
    EXPECT_FALSE(tools.ReOrderItemsDb(item, 1, 0));
    EXPECT_FALSE(tools.DeleteItemFromFolder(item, 1));
    EXPECT_FALSE(tools.DeleteFolderTrees({&gallery, 1}));
    EXPECT_FALSE(tools.DeleteFolderTrees({}));
    EXPECT_EQ(tools.AddFolderOrderIndexColumn(), 0);
    EXPECT_FALSE(tools.QueryGalleries(galleries));
    EXPECT_TRUE(folder.Entries().empty());
}

// --- Threads ---

TEST_F(DBToolsGuard, ThreadsTakeTurns) {
    m_trace.reset();
    constexpr int kThreads = 4;
    constexpr int kAdds = 25;
    std::atomic<int> added = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < kAdds; ++i) {
                CppSQLite3Query query;
                added += AddItem(thread * kAdds + i, thread) && m_tools->QueryFolderItems(thread, query) ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(added, kThreads * kAdds);
    EXPECT_EQ(Count("RELATION_TABLE"), std::to_string(kThreads * kAdds));
}

// An operation from inside another one, on the same thread.
class NestedCall {
public:
    NestedCall(sqlite3* connection, DBTools& tools) : m_connection(connection), m_tools(tools) {
        sqlite3_trace_v2(m_connection, SQLITE_TRACE_STMT, &OnStatement, this);
    }
    ~NestedCall() { sqlite3_trace_v2(m_connection, 0, nullptr, nullptr); }

    int calls = 0;
    bool result = true;

private:
    static int OnStatement(unsigned, void* self, void*, void* sql) {
        auto& call = *static_cast<NestedCall*>(self);
        if (std::string_view(static_cast<const char*>(sql)).find("RELATION_TABLE") == std::string_view::npos) return 0;
        ++call.calls;
        call.result = call.m_tools.InsertGallery(9, 9);
        return 0;
    }

    sqlite3* m_connection;
    DBTools& m_tools;
};

#ifdef NDEBUG
TEST_F(DBToolsGuard, NestedOperationIsRefusedAndTheOuterOneGoesOn) {
    {
        NestedCall nested(m_connection, *m_tools);
        EXPECT_TRUE(AddOne());
        EXPECT_EQ(nested.calls, 1);
        EXPECT_FALSE(nested.result);
    }
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(Count("GALLERY_TABLE"), "0");
}
#else
using DBToolsGuardDeathTest = DBToolsGuard;

TEST_F(DBToolsGuardDeathTest, NestedOperationIsAsserted) {
    EXPECT_DEATH(
        {
            NestedCall nested(m_connection, *m_tools);
            AddOne();
        },
        "from inside another one on the same thread");
}
#endif

// --- Exceptions ---

// Runs any work under the guard of the object, as its own operations do.
bool RunGuarded(DBTools& tools, std::function<bool()> work);

template <auto guarded>
struct GuardOf {
    friend bool RunGuarded(DBTools& tools, std::function<bool()> work) {
        return (tools.*guarded)(std::move(work), false);
    }
};
// Naming a private member is allowed here alone.
template struct GuardOf<&DBTools::Guarded<std::function<bool()>, bool>>;

class DBToolsGuardExceptions : public DBToolsGuard {
protected:
    // Writes a row on the connection of the guard, then leaves with the exception.
    template <class Error>
    std::function<bool()> WriteAndThrow(Error error) {
        return [this, error]() -> bool {
            const char* sql = "INSERT INTO GALLERY_TABLE VALUES(77, 77)";
            EXPECT_EQ(sqlite3_exec(m_connection, sql, nullptr, nullptr, nullptr), SQLITE_OK);
            throw error;
        };
    }
    void ExpectRolledBackAndUsable() {
        EXPECT_EQ(m_trace->Count("ROLLBACK TRANSACTION;"), 1);
        EXPECT_EQ(m_trace->Count("END TRANSACTION;"), 0);
        EXPECT_NE(sqlite3_get_autocommit(m_connection), 0);
        EXPECT_EQ(Count("GALLERY_TABLE"), "0");
        // Neither the mutex nor its owner is left behind: not for another thread, not for this one.
        bool added = false;
        std::thread([&] { added = AddOne(1); }).join();
        EXPECT_TRUE(added);
        EXPECT_TRUE(AddOne(2));
        EXPECT_EQ(Count("ITEM_TABLE"), "2");
    }
};

TEST_F(DBToolsGuardExceptions, WorkUnderTheGuardIsOneTransaction) {
    EXPECT_TRUE(RunGuarded(*m_tools, [this] {
        return sqlite3_exec(m_connection, "INSERT INTO GALLERY_TABLE VALUES(77, 77)", nullptr, nullptr, nullptr) == 0;
    }));
    EXPECT_EQ(Count("GALLERY_TABLE"), "1");
    EXPECT_EQ(m_trace->Count("END TRANSACTION;"), 1);
}

TEST_F(DBToolsGuardExceptions, AnExceptionThatPassesIsRolledBackAndReachesTheCaller) {
    EXPECT_THROW(RunGuarded(*m_tools, WriteAndThrow(std::runtime_error("passes"))), std::runtime_error);
    ExpectRolledBackAndUsable();
}

TEST_F(DBToolsGuardExceptions, AnythingThatIsThrownIsRolledBack) {
    EXPECT_THROW(RunGuarded(*m_tools, WriteAndThrow(4711)), int);
    ExpectRolledBackAndUsable();
}

TEST_F(DBToolsGuardExceptions, LackOfMemoryIsRolledBackAndFalse) {
    EXPECT_FALSE(RunGuarded(*m_tools, WriteAndThrow(std::bad_alloc())));
    ExpectRolledBackAndUsable();
}

// --- The process-wide current database ---

TEST_F(DBToolsGuard, CurrentDatabaseIsWhatWasSet) {
    EXPECT_EQ(qfc::CurrentDBTools(), nullptr);
    EXPECT_TRUE(qfc::IsCurrentDBTools(nullptr));
    EXPECT_FALSE(qfc::IsCurrentDBTools(m_tools.get()));
    qfc::SetCurrentDBTools(m_tools.get());
    EXPECT_EQ(qfc::CurrentDBTools(), m_tools.get());
    EXPECT_TRUE(qfc::IsCurrentDBTools(m_tools.get()));
    EXPECT_FALSE(qfc::IsCurrentDBTools(nullptr));
    qfc::SetCurrentDBTools(nullptr);
    EXPECT_FALSE(qfc::IsCurrentDBTools(m_tools.get()));
}

}  // namespace
