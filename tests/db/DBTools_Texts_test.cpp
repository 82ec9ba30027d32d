#include "tags/TagRecords.h"
#include "tests/db/EffectLibrary.h"
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

constexpr char kWriteCategory[] =
    "REPLACE into LIB_TAG_CATEGORY_TABLE( CATEGORY_NAME, CATEGORY_GALLERY, CATEGORY_DELETABLE, CATEGORY_TYPE,"
    " CATEGORY_GUID) values (?, ?, ?, ?, ?)";
// Kept: no blanks between the last three marks.
constexpr char kWriteTag[] =
    "REPLACE into LIB_TAG_TABLE( TAG_NAME, CATEGORY_GUID, TAG_TYPE, TAG_CHECKED, TAG_DELETABLE, TAG_PICTURE_SIZE,"
    " TAG_PICTURE_DATA, TAG_GUID) values (?, ?, ?, ?, ?, ?,?,?)";
constexpr char kWriteTagLink[] = "INSERT OR REPLACE into TAG_ITEM_RELATION_TABLE( ITEM_GUID, TAGS_GUID) values (?, ?)";
constexpr char kDeleteTagLink[] = "Delete from TAG_ITEM_RELATION_TABLE where ITEM_GUID = ? AND TAGS_GUID = ?";
constexpr char kDeleteTagLinks[] = "Delete from TAG_ITEM_RELATION_TABLE where TAGS_GUID = ?";
constexpr char kQueryTagItems[] = "Select * from TAG_ITEM_RELATION_TABLE where TAGS_GUID = ?";
constexpr char kDeleteTag[] = "Delete from LIB_TAG_TABLE where TAG_GUID = ?";
constexpr char kDeleteCategory[] = "Delete from LIB_TAG_CATEGORY_TABLE where CATEGORY_GUID = ?";

constexpr char kDeletePayloads[] = "Delete from CACHE_DATA_TABLE where ITEM_ID = ?";
constexpr char kDeleteItem[] = "Delete from ITEM_TABLE where ITEM_ID = ?";
constexpr char kWriteFilter[] =
    "INSERT OR REPLACE INTO FLT_TABLE (DSORVFT_DATA, DSVFTABLE_DATA, FILE_NAME, ITEM_ID) values (?, ?, ?, ?)";
constexpr char kQueryFiltersOfFile[] = "Select * from FLT_TABLE where FILE_NAME = ?";
constexpr char kQueryTransitions[] = "Select * from TRANSITION_TABLE";
constexpr char kDeleteFilterFile[] = "Delete from FLT_FILE_TABLE where FILE_NAME = ?";
constexpr char kDeleteFiltersOfFile[] = "Delete from FLT_TABLE where FILE_NAME = ?";
constexpr char kDeleteTransitionsOfFile[] = "Delete from TRANSITION_TABLE where FILE_NAME = ?";

CTagCategory CategoryOfTwoTags() {
    CTagCategory category;
    category.m_tags.resize(2);
    return category;
}

const GUID kHeldOnce = MakeGuid(1);
const GUID kHeldTwice = MakeGuid(2);
const GUID kTag = MakeGuid(8);  // Linked to both.

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
    {"DeleteAllCacheData", [](DBTools& tools) { return tools.DeleteAllCacheData(kHeldOnce); }, {kDeletePayloads}},
    {"DeleteItemRow", [](DBTools& tools) { return tools.DeleteItemRow(kHeldOnce); }, {kDeleteItem}},
    {"DeleteRelation", [](DBTools& tools) { return tools.DeleteRelation(kHeldOnce, 1); }, {kDeleteRelation}},
    {"DeleteFolderRow", [](DBTools& tools) { return tools.DeleteFolderRow(1); }, {kDeleteFolder}},
    {"DeleteItemThatAnotherFolderHolds",
     [](DBTools& tools) { return tools.DeleteItemFromFolder(kHeldTwice, 1); },
     {kDeleteRelation, kRelationsOfItem}},
    {"DeleteItemThatNoOtherFolderHolds",
     [](DBTools& tools) { return tools.DeleteItemFromFolder(kHeldOnce, 1); },
     {kDeleteRelation, kRelationsOfItem, kDeletePayloads, kDeleteItem}},
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
    {"LoadTags",
     [](DBTools& tools) {
         std::vector<CTagCategory> categories;
         return tools.LoadTags(categories);
     },
     {"Select * from LIB_TAG_TABLE", "Select * from LIB_TAG_CATEGORY_TABLE"}},
    {"SaveCategoriesAndTags",
     [](DBTools& tools) {
         return tools.SaveCategoriesAndTags({CategoryOfTwoTags(), CTagCategory()});
     },
     {kWriteCategory, kWriteTag, kWriteTag, kWriteCategory}},
    {"UpdateCategory", [](DBTools& tools) { return tools.UpdateCategory(CategoryOfTwoTags()); }, {kWriteCategory}},
    {"UpdateCategories",
     [](DBTools& tools) {
         const CTagCategory categories[] = {CTagCategory(), CategoryOfTwoTags()};
         return tools.UpdateCategories(categories);
     },
     {kWriteCategory, kWriteCategory, kWriteTag, kWriteTag}},
    {"UpdateTag", [](DBTools& tools) { return tools.UpdateTag(CLibTag()); }, {kWriteTag}},
    {"UpdateTags",
     [](DBTools& tools) {
         return tools.UpdateTags({CLibTag(), CLibTag()});
     },
     {kWriteTag, kWriteTag}},
    {"DeleteCategory", [](DBTools& tools) { return tools.DeleteCategory(kHeldOnce); }, {kDeleteCategory}},
    {"DeleteCategories",
     [](DBTools& tools) {
         const GUID categories[] = {kHeldOnce, kHeldTwice};
         return tools.DeleteCategories(categories);
     },
     {kDeleteCategory, kDeleteCategory}},
    {"DeleteTag", [](DBTools& tools) { return tools.DeleteTag(kHeldOnce); }, {kDeleteTag, kDeleteTagLinks}},
    {"DeleteTags",
     [](DBTools& tools) {
         const GUID tags[] = {kHeldOnce, kHeldTwice};
         return tools.DeleteTags(tags);
     },
     {kDeleteTag, kDeleteTagLinks, kDeleteTag, kDeleteTagLinks}},
    {"InsertTag2Item", [](DBTools& tools) { return tools.InsertTag2Item(kHeldOnce, MakeGuid(8)); }, {kWriteTagLink}},
    {"InsertTags2Items",
     [](DBTools& tools) {
         const GUID guids[] = {kHeldOnce, kHeldTwice};
         return tools.InsertTags2Items(guids, guids);
     },
     {kWriteTagLink, kWriteTagLink, kWriteTagLink, kWriteTagLink}},
    {"DeleteTagFromItem",
     [](DBTools& tools) { return tools.DeleteTagFromItem(kHeldOnce, MakeGuid(8)); },
     {kDeleteTagLink}},
    {"DeleteTagsFromItems",
     [](DBTools& tools) {
         const GUID items[] = {kHeldOnce, kHeldTwice};
         return tools.DeleteTagsFromItems(items, {&kHeldOnce, 1});
     },
     {kDeleteTagLink, kDeleteTagLink}},
    {"QueryTagItems", [](DBTools& tools) { return Query(&DBTools::QueryTagItems, tools); }, {kQueryTagItems}},
    {"MergeTag",
     [](DBTools& tools) { return tools.MergeTag(kTag, MakeGuid(9)); },
     {kQueryTagItems, kDeleteTagLinks, kWriteTagLink, kWriteTagLink, kDeleteTag}},
    {"MergeTags",
     [](DBTools& tools) {
         const GUID sources[] = {kTag, MakeGuid(7)};
         return tools.MergeTags(sources, MakeGuid(9));
     },
     {kQueryTagItems, kDeleteTagLinks, kWriteTagLink, kWriteTagLink, kDeleteTag, kQueryTagItems, kDeleteTagLinks,
      kDeleteTag}},
    {"LoadFilterFiles",
     [](DBTools& tools) {
         Filters files;
         return tools.LoadFilterFiles(files);
     },
     {"Select * from FLT_FILE_TABLE", kQueryFiltersOfFile, kQueryFiltersOfFile}},
    {"LoadTransitions",
     [](DBTools& tools) {
         Transitions transitions;
         return tools.LoadTransitions(transitions);
     },
     {kQueryTransitions}},
    {"SaveFilterFile",
     [](DBTools& tools) {
         return tools.SaveFilterFile(MakeFile("c.so", {3, 4}));
     },
     {"INSERT OR REPLACE INTO FLT_FILE_TABLE (FILE_NAME, FILTER_COUNT) values (?, ?)", kWriteFilter, kWriteFilter}},
    {"DeleteFilterFile",
     [](DBTools& tools) { return tools.DeleteFilterFile("a.so"); },
     {kDeleteFilterFile, kDeleteFiltersOfFile}},
    {"DeleteFilterFiles",
     [](DBTools& tools) { return tools.DeleteFilterFiles(Filters(2)); },
     {kDeleteFilterFile, kDeleteFiltersOfFile, kDeleteFilterFile, kDeleteFiltersOfFile}},
    {"SaveTransition",
     [](DBTools& tools) { return tools.SaveTransition(MakeTransition("c.so", 3)); },
     {"INSERT OR REPLACE INTO TRANSITION_TABLE (FILE_NAME, DSORVFX_DATA, ITEM_ID) values (?, ?, ?)"}},
    {"DeleteTransitionFile",
     [](DBTools& tools) { return tools.DeleteTransitionFile("a.so"); },
     {kDeleteTransitionsOfFile}},
    {"DeleteTransitionFiles",
     [](DBTools& tools) { return tools.DeleteTransitionFiles(Transitions(2)); },
     {kDeleteTransitionsOfFile, kDeleteTransitionsOfFile}},
    {"ClearFiltersAndTransitions",
     [](DBTools& tools) { return tools.ClearFiltersAndTransitions(); },
     {kQueryTransitions, "Select * from FLT_TABLE", kDeletePayloads, kDeleteItem, kDeletePayloads, kDeleteItem,
      "DELETE FROM TRANSITION_TABLE", "DELETE FROM FLT_TABLE;", "DELETE FROM FLT_FILE_TABLE;"}},
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
    ASSERT_TRUE(m_tools->InsertTag2Item(kHeldOnce, kTag));
    ASSERT_TRUE(m_tools->InsertTag2Item(kHeldTwice, kTag));
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("b.so", {})));
    ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("a.so", 2)));
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
