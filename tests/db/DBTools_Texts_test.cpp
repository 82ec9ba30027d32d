#include "tests/db/DbTestSupport.h"
#include "tests/support/SqlTrace.h"

#include <functional>

namespace {

using namespace qfc::test;
using Texts = std::vector<std::string>;

// One operation without shortcuts, and exactly what it sends between BEGIN and END.
struct Sent {
    const char* name;
    std::function<bool(DBTools&)> run;
    Texts texts;
};

std::ostream& operator<<(std::ostream& stream, const Sent& sent) { return stream << sent.name; }

constexpr char kWriteItem[] =
    "REPLACE into ITEM_TABLE( CUR_THUMB_FRAME_NUM, ORG_THUMB_FRAME_NUM, BBID, ITEM_TYPE, ITEM_NAME, DESCRIPTION,"
    " ANNOTATION, FILE_NAME, ATTRIB, TEMPLATE_PATH, TIMESTAMP, FILM_SIZE, FRAME_SIZE, DELETABLE, ITEM_ID)"
    " values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
constexpr char kWriteRelation[] = "REPLACE into RELATION_TABLE( ITEM_ID, PARENT_ID, ITEM_INDEX) values (?, ?, ?)";
constexpr char kWriteCacheData[] =
    "REPLACE into CACHE_DATA_TABLE( PRE_COMPRESSED_SIZE, COMPRESSED_SIZE, COMPRESSED_DATA, CACHE_DATA_TYPE, ITEM_ID)"
    " values (?, ?, ?, ?, ?)";
constexpr char kWriteAutoLoaded[] =
    "REPLACE into ITEM_AUTO_LOADED_TABLE( FOLDER_ID, ITEM_ID, FILE_PATH) values (?, ?, ?)";
constexpr char kDeleteRelation[] = "Delete from RELATION_TABLE where ITEM_ID = ? AND PARENT_ID = ?";
constexpr char kRelationsOfItem[] = "Select * from RELATION_TABLE where ITEM_ID = ?";
constexpr char kQueryGallery[] = "Select * from GALLERY_TABLE where GALLERY_FOLDER_ID = ?";
constexpr char kChildFolders[] = "Select * from FOLDER_TABLE where PARENT_ID = ?";
constexpr char kDeleteFolder[] = "Delete from FOLDER_TABLE where id = ?";

const GUID kHeldOnce = MakeGuid(1);
const GUID kHeldTwice = MakeGuid(2);

bool WriteFolder(DBTools& tools, int number) {
    return tools.InsertOrUpdateFolder("1", 0, "n", 0, 0, 0, 1, 0, 0, number);
}

bool Query(bool (DBTools::*slot)(const GUID&, CppSQLite3Query&), DBTools& tools) {
    CppSQLite3Query query;
    return (tools.*slot)(kHeldOnce, query);
}

bool Query(bool (DBTools::*slot)(int, CppSQLite3Query&), DBTools& tools) {
    CppSQLite3Query query;
    return (tools.*slot)(1, query);
}

const Sent kSent[] = {
    {"InsertGallery",
     [](DBTools& tools) { return tools.InsertGallery(5, 50); },
     {"INSERT into GALLERY_TABLE (GALLERY_FOLDER_ID, GALLERY_ID) values (?, ?)"}},
    {"GetGalleryIdByFolder", [](DBTools& tools) { return tools.GetGalleryIdByFolder(1) == 1; }, {kQueryGallery}},
    {"InsertFolder",
     [](DBTools& tools) { return WriteFolder(tools, -1); },
     {"INSERT into FOLDER_TABLE( VERSION , PREDEFINED_ID , FOLDER_NAME , ADOPT_TYPE , TRUSTY_TYPE , TYPE_EXTRA ,"
      " PARENT_ID , EXPAND_TYPE,  ORDER_INDEX ) values (? , ? , ?, ?, ?, ?, ?, ?, ?)",
      "SELECT last_insert_rowid() FROM FOLDER_TABLE"}},
    {"UpdateFolder",
     [](DBTools& tools) { return WriteFolder(tools, 1); },
     {"Update FOLDER_TABLE set VERSION = ?, PREDEFINED_ID = ?, FOLDER_NAME = ?, ADOPT_TYPE = ?, TRUSTY_TYPE = ?,"
      " TYPE_EXTRA = ?, PARENT_ID = ?, EXPAND_TYPE = ?, ORDER_INDEX = ? where id = ?"}},
    {"QueryFolder",
     [](DBTools& tools) { return Query(&DBTools::QueryFolder, tools); },
     {"Select * from FOLDER_TABLE where id = ?"}},
    {"QueryChildFolders", [](DBTools& tools) { return Query(&DBTools::QueryChildFolders, tools); }, {kChildFolders}},
    {"QueryFolderItems",
     [](DBTools& tools) { return Query(&DBTools::QueryFolderItems, tools); },
     {"Select * from RELATION_TABLE where PARENT_ID = ? order by ITEM_INDEX asc"}},
    {"QueryItem",
     [](DBTools& tools) { return Query(&DBTools::QueryItem, tools); },
     {"Select * from ITEM_TABLE where ITEM_ID = ?"}},
    {"QueryItemTags",
     [](DBTools& tools) { return Query(&DBTools::QueryItemTags, tools); },
     {"Select * from TAG_ITEM_RELATION_TABLE where ITEM_GUID = ?"}},
    {"QueryItemByName",
     [](DBTools& tools) {
         CppSQLite3Query query;
         return tools.QueryItemByName("clip", query);
     },
     {"Select * from ITEM_TABLE where ITEM_NAME = ?"}},
    {"QueryCacheData",
     [](DBTools& tools) {
         CppSQLite3Query query;
         return tools.QueryCacheData(kHeldOnce, 1, query);
     },
     {"Select * from CACHE_DATA_TABLE where ITEM_ID = ? AND CACHE_DATA_TYPE = ?"}},
    {"QueryCacheDataByType",
     [](DBTools& tools) { return Query(&DBTools::QueryCacheDataByType, tools); },
     {"Select * from CACHE_DATA_TABLE where CACHE_DATA_TYPE = ?"}},
    {"AddItem",
     [](DBTools& tools) {
         const Bytes bytes = Repeated(9, 1);
         std::vector<qfc::PayloadWrite> payloads;
         for (const int kind : {0, 1, 2}) payloads.push_back(qfc::PackPayload(kind, bytes));
         return tools.AddItemDb(MakeItem(3), payloads, 1, 0);
     },
     {kWriteItem, kWriteRelation, kWriteCacheData, kWriteCacheData, kWriteCacheData}},
    {"UpdateItem",
     [](DBTools& tools) {
         const Bytes bytes = Repeated(9, 1);
         const qfc::PayloadWrite payload = qfc::PackPayload(1, bytes);
         return tools.UpdateItemDB(MakeItem(1), {&payload, 1});
     },
     {kWriteItem, kWriteCacheData}},
    {"ReOrderItems", [](DBTools& tools) { return tools.ReOrderItemsDb(kHeldOnce, 1, 4); }, {kWriteRelation}},
    {"DeleteCacheData",
     [](DBTools& tools) { return tools.DeleteCacheData(kHeldOnce, 1); },
     {"Delete from CACHE_DATA_TABLE where ITEM_ID = ? AND CACHE_DATA_TYPE = ?"}},
    {"DeleteAllCacheData",
     [](DBTools& tools) { return tools.DeleteAllCacheData(kHeldOnce); },
     {"Delete from CACHE_DATA_TABLE where ITEM_ID = ?"}},
    {"DeleteItemRow",
     [](DBTools& tools) { return tools.DeleteItemRow(kHeldOnce); },
     {"Delete from ITEM_TABLE where ITEM_ID = ?"}},
    {"DeleteRelation", [](DBTools& tools) { return tools.DeleteRelation(kHeldOnce, 1); }, {kDeleteRelation}},
    {"DeleteFolderRow", [](DBTools& tools) { return tools.DeleteFolderRow(1); }, {kDeleteFolder}},
    {"DeleteItemThatAnotherFolderHolds",
     [](DBTools& tools) { return tools.DeleteItemFromFolder(kHeldTwice, 1); },
     {kDeleteRelation, kRelationsOfItem}},
    {"DeleteItemThatNoOtherFolderHolds",
     [](DBTools& tools) { return tools.DeleteItemFromFolder(kHeldOnce, 1); },
     {kDeleteRelation, kRelationsOfItem, "Delete from CACHE_DATA_TABLE where ITEM_ID = ?",
      "Delete from ITEM_TABLE where ITEM_ID = ?"}},
    {"DeleteFolderTrees",
     [](DBTools& tools) {
         const int gallery = 1;
         return tools.DeleteFolderTrees({&gallery, 1});
     },
     {kQueryGallery, kChildFolders, kChildFolders, "Delete from GALLERY_TABLE where GALLERY_FOLDER_ID = ?",
      kDeleteFolder, "Delete from RELATION_TABLE where PARENT_ID = ?", kDeleteFolder,
      "Delete from RELATION_TABLE where PARENT_ID = ?"}},
    {"IsItemAutoLoaded",
     [](DBTools& tools) { return !tools.IsItemAutoLoaded(kHeldOnce, 1); },
     {"Select * from ITEM_AUTO_LOADED_TABLE where FOLDER_ID = ? AND ITEM_ID = ?"}},
    {"InsertAutoLoadedItem",
     [](DBTools& tools) { return tools.InsertAutoLoadedItem(kHeldOnce, 1); },
     {kWriteAutoLoaded}},
    {"IsFileAutoLoaded",
     [](DBTools& tools) { return !tools.IsFileAutoLoaded("a", 1); },
     {"Select * from ITEM_AUTO_LOADED_TABLE where FOLDER_ID = ? AND FILE_PATH = ?"}},
    {"InsertAutoLoadedFile", [](DBTools& tools) { return tools.InsertAutoLoadedFile("a", 1); }, {kWriteAutoLoaded}},
};

class DBToolsTexts : public LibraryTest, public testing::WithParamInterface<Sent> {};

INSTANTIATE_TEST_SUITE_P(Operations, DBToolsTexts, testing::ValuesIn(kSent),
                         [](const auto& sent) { return std::string(sent.param.name); });

TEST_P(DBToolsTexts, AreExactlyTheGivenOnesInTheirOrder) {
    const int root = AddGallery(1);
    const int folder = AddFolder("a", root);
    ASSERT_TRUE(AddItem(1, root, 0, Repeated(9, 1)));
    ASSERT_TRUE(AddItem(2, root));
    ASSERT_TRUE(AddItem(2, folder));
    m_tools.reset();
    SqlTrace trace;
    Open();
    m_tools->SetShortcuts(false);
    trace.Clear();
    const bool isNo = std::string_view(GetParam().name).starts_with("Is");
    EXPECT_TRUE(GetParam().run(*m_tools));
    Texts expected = GetParam().texts;
    expected.insert(expected.begin(), "BEGIN TRANSACTION;");
    // A false answer is a failure to the guard.
    expected.emplace_back(isNo ? "ROLLBACK TRANSACTION;" : "END TRANSACTION;");
    EXPECT_EQ(trace.Statements(), expected);
}

}  // namespace
