// The guard beside other connections, other threads and calls from inside.
#include "db/DBToolsGuard.h"
#include "tests/db/DBToolsGuardTest.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <sqlite3.h>
#include <thread>
#include <utility>

namespace {

using namespace qfc::test;

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

// SQLite asks the busy handler only where waiting can help: not for a reader that turns writer.
TEST_F(DBToolsGuard, OperationsThatReadAndThenWriteWaitForAForeignWriter) {
    const GUID source = MakeGuid(7);
    const GUID target = MakeGuid(8);
    const int gallery = 42;
    Exec("insert into GALLERY_TABLE values(42, 5)");
    ASSERT_TRUE(m_tools->InsertTag2Item(MakeGuid(1), source));
    const auto letGo = [](void* other, int calls) {
        if (calls == 0) static_cast<RawDb*>(other)->Exec("COMMIT");
        return calls == 0 ? 1 : 0;
    };
    const std::function<bool()> kOperations[] = {[&] { return m_tools->MergeTag(source, target); },
                                                 [&] {
                                                     return m_tools->MergeTags({&target, 1}, source);
                                                 },
                                                 [&] {
                                                     return m_tools->DeleteFolderTrees({&gallery, 1});
                                                 }};
    for (const auto& operation : kOperations) {
        RawDb writer(m_path);
        writer.Exec("BEGIN IMMEDIATE");
        sqlite3_busy_handler(m_connection, letGo, &writer);
        EXPECT_TRUE(operation());
    }
    EXPECT_EQ(Count("GALLERY_TABLE"), "0");
    EXPECT_EQ(Count("TAG_ITEM_RELATION_TABLE"), "1");
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
    ASSERT_TRUE(m_tools->InsertTag2Item(item, MakeGuid(90)));
    const std::pair<const char*, std::function<bool(CppSQLite3Query&)>> slots[] = {
        {"QueryFolder", [&](auto& query) { return m_tools->QueryFolder(1, query); }},
        {"QueryChildFolders", [&](auto& query) { return m_tools->QueryChildFolders(1, query); }},
        {"QueryFolderItems", [&](auto& query) { return m_tools->QueryFolderItems(2, query); }},
        {"QueryItem", [&](auto& query) { return m_tools->QueryItem(item, query); }},
        {"QueryItemTags", [&](auto& query) { return m_tools->QueryItemTags(item, query); }},
        {"QueryItemByName", [&](auto& query) { return m_tools->QueryItemByName("clip", query); }},
        {"QueryCacheData", [&](auto& query) { return m_tools->QueryCacheData(item, 1, query); }},
        {"QueryCacheDataByType", [&](auto& query) { return m_tools->QueryCacheDataByType(1, query); }}};
    for (const auto& [name, ask] : slots) {
        CppSQLite3Query query;
        EXPECT_TRUE(ask(query)) << name;
        EXPECT_FALSE(query.eof()) << name;
        EXPECT_EQ(sqlite3_next_stmt(m_connection, nullptr), nullptr) << name;
    }
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

}  // namespace
