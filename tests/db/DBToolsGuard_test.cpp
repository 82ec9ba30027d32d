#include "db/DBToolsGuard.h"

#include "db/CurrentDBTools.h"
#include "tests/db/DBToolsGuardTest.h"

#include <functional>
#include <sqlite3.h>
#include <stdexcept>
#include <thread>

namespace {

using namespace qfc::test;

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
