#pragma once

// Every statement text of the database tools, in its one fixed form, with its binds on the line above; they count from
// 1 in the order given. A GUID is a blob of 16 bytes.
namespace qfc::sql {

// --- Galleries ---
// gallery id, row number of the root folder
inline constexpr char kInsertGallery[] = "INSERT into GALLERY_TABLE (GALLERY_FOLDER_ID, GALLERY_ID) values (?, ?)";
// gallery id
inline constexpr char kQueryGallery[] = "Select * from GALLERY_TABLE where GALLERY_FOLDER_ID = ?";
// gallery id
inline constexpr char kDeleteGallery[] = "Delete from GALLERY_TABLE where GALLERY_FOLDER_ID = ?";
// nothing
inline constexpr char kListGalleries[] =
    "Select GALLERY_FOLDER_ID, GALLERY_ID, FOLDER_NAME from GALLERY_TABLE"
    " left join FOLDER_TABLE on FOLDER_TABLE.ID = GALLERY_TABLE.GALLERY_ID"
    " order by GALLERY_FOLDER_ID, GALLERY_TABLE.rowid";

// --- Folders ---
// folder
inline constexpr char kQueryFolder[] = "Select * from FOLDER_TABLE where id = ?";
// parent folder
inline constexpr char kQueryChildFolders[] = "Select * from FOLDER_TABLE where PARENT_ID = ?";
// folder
inline constexpr char kDeleteFolder[] = "Delete from FOLDER_TABLE where id = ?";
// version, predefined id, name (UTF-8), adopt type, trusty type, type extra, parent folder, expand type, order index
// Kept: the two blanks before ORDER_INDEX.
inline constexpr char kInsertFolder[] =
    "INSERT into FOLDER_TABLE( VERSION , PREDEFINED_ID , FOLDER_NAME , ADOPT_TYPE , TRUSTY_TYPE , TYPE_EXTRA ,"
    " PARENT_ID , EXPAND_TYPE,  ORDER_INDEX ) values (? , ? , ?, ?, ?, ?, ?, ?, ?)";
// the nine of the insert, folder
inline constexpr char kUpdateFolder[] =
    "Update FOLDER_TABLE set VERSION = ?, PREDEFINED_ID = ?, FOLDER_NAME = ?, ADOPT_TYPE = ?, TRUSTY_TYPE = ?,"
    " TYPE_EXTRA = ?, PARENT_ID = ?, EXPAND_TYPE = ?, ORDER_INDEX = ? where id = ?";
// nothing
inline constexpr char kLastFolder[] = "SELECT last_insert_rowid() FROM FOLDER_TABLE";

// --- Items ---
// current thumbnail frame, original thumbnail frame, bbid, type, name (UTF-8), description, annotation, file name
// (UTF-8), attributes, template path, timestamp, film size, frame size, deletable, item GUID
// Kept: FILM_SIZE stands before FRAME_SIZE here and behind it in the table.
inline constexpr char kWriteItem[] =
    "REPLACE into ITEM_TABLE( CUR_THUMB_FRAME_NUM, ORG_THUMB_FRAME_NUM, BBID, ITEM_TYPE, ITEM_NAME, DESCRIPTION,"
    " ANNOTATION, FILE_NAME, ATTRIB, TEMPLATE_PATH, TIMESTAMP, FILM_SIZE, FRAME_SIZE, DELETABLE, ITEM_ID)"
    " values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
// item GUID
inline constexpr char kQueryItem[] = "Select * from ITEM_TABLE where ITEM_ID = ?";
// name (UTF-8)
inline constexpr char kQueryItemByName[] = "Select * from ITEM_TABLE where ITEM_NAME = ?";
// item GUID
inline constexpr char kDeleteItem[] = "Delete from ITEM_TABLE where ITEM_ID = ?";

// --- Placements ---
// item GUID, folder, index
inline constexpr char kWriteRelation[] =
    "REPLACE into RELATION_TABLE( ITEM_ID, PARENT_ID, ITEM_INDEX) values (?, ?, ?)";
// folder
inline constexpr char kQueryFolderItems[] = "Select * from RELATION_TABLE where PARENT_ID = ? order by ITEM_INDEX asc";
// item GUID
inline constexpr char kQueryItemRelations[] = "Select * from RELATION_TABLE where ITEM_ID = ?";
// item GUID, folder
inline constexpr char kDeleteRelation[] = "Delete from RELATION_TABLE where ITEM_ID = ? AND PARENT_ID = ?";
// folder
inline constexpr char kDeleteFolderRelations[] = "Delete from RELATION_TABLE where PARENT_ID = ?";

// --- Payloads ---
// raw size, compressed size or 0, bytes, kind, item GUID
inline constexpr char kWriteCacheData[] =
    "REPLACE into CACHE_DATA_TABLE( PRE_COMPRESSED_SIZE, COMPRESSED_SIZE, COMPRESSED_DATA, CACHE_DATA_TYPE, ITEM_ID)"
    " values (?, ?, ?, ?, ?)";
// item GUID, kind
inline constexpr char kQueryCacheData[] = "Select * from CACHE_DATA_TABLE where ITEM_ID = ? AND CACHE_DATA_TYPE = ?";
// kind
inline constexpr char kQueryCacheDataByType[] = "Select * from CACHE_DATA_TABLE where CACHE_DATA_TYPE = ?";
// item GUID, kind
inline constexpr char kDeleteCacheData[] = "Delete from CACHE_DATA_TABLE where ITEM_ID = ? AND CACHE_DATA_TYPE = ?";
// item GUID
inline constexpr char kDeleteAllCacheData[] = "Delete from CACHE_DATA_TABLE where ITEM_ID = ?";

// --- Tags ---
// name (UTF-8), gallery, deletable, type, category GUID
inline constexpr char kWriteCategory[] =
    "REPLACE into LIB_TAG_CATEGORY_TABLE( CATEGORY_NAME, CATEGORY_GALLERY, CATEGORY_DELETABLE, CATEGORY_TYPE,"
    " CATEGORY_GUID) values (?, ?, ?, ?, ?)";
// name (UTF-8), category GUID, type, checked, deletable, picture size, picture, tag GUID
// Kept: no blanks between the last three marks.
inline constexpr char kWriteTag[] =
    "REPLACE into LIB_TAG_TABLE( TAG_NAME, CATEGORY_GUID, TAG_TYPE, TAG_CHECKED, TAG_DELETABLE, TAG_PICTURE_SIZE,"
    " TAG_PICTURE_DATA, TAG_GUID) values (?, ?, ?, ?, ?, ?,?,?)";
// nothing
inline constexpr char kAllTags[] = "Select * from LIB_TAG_TABLE";
inline constexpr char kAllCategories[] = "Select * from LIB_TAG_CATEGORY_TABLE";
// tag GUID
inline constexpr char kDeleteTag[] = "Delete from LIB_TAG_TABLE where TAG_GUID = ?";
// category GUID
inline constexpr char kDeleteCategory[] = "Delete from LIB_TAG_CATEGORY_TABLE where CATEGORY_GUID = ?";
// item GUID, tag GUID
inline constexpr char kWriteTagLink[] =
    "INSERT OR REPLACE into TAG_ITEM_RELATION_TABLE( ITEM_GUID, TAGS_GUID) values (?, ?)";
// item GUID
inline constexpr char kQueryItemTags[] = "Select * from TAG_ITEM_RELATION_TABLE where ITEM_GUID = ?";
// tag GUID
inline constexpr char kQueryTagItems[] = "Select * from TAG_ITEM_RELATION_TABLE where TAGS_GUID = ?";
// item GUID, tag GUID
inline constexpr char kDeleteTagLink[] = "Delete from TAG_ITEM_RELATION_TABLE where ITEM_GUID = ? AND TAGS_GUID = ?";
// tag GUID
inline constexpr char kDeleteTagLinks[] = "Delete from TAG_ITEM_RELATION_TABLE where TAGS_GUID = ?";

// --- Auto-loaded items ---
// folder, GUID (all zero for a file), path (empty for an item)
inline constexpr char kWriteAutoLoaded[] =
    "REPLACE into ITEM_AUTO_LOADED_TABLE( FOLDER_ID, ITEM_ID, FILE_PATH) values (?, ?, ?)";
// folder, item GUID
inline constexpr char kQueryAutoLoadedItem[] =
    "Select * from ITEM_AUTO_LOADED_TABLE where FOLDER_ID = ? AND ITEM_ID = ?";
// folder, path
inline constexpr char kQueryAutoLoadedFile[] =
    "Select * from ITEM_AUTO_LOADED_TABLE where FOLDER_ID = ? AND FILE_PATH = ?";

// --- Effects ---
// file name, filter count
inline constexpr char kWriteFilterFile[] =
    "INSERT OR REPLACE INTO FLT_FILE_TABLE (FILE_NAME, FILTER_COUNT) values (?, ?)";
// descriptor (8 bytes), table (456 bytes), file name, item GUID
inline constexpr char kWriteFilter[] =
    "INSERT OR REPLACE INTO FLT_TABLE (DSORVFT_DATA, DSVFTABLE_DATA, FILE_NAME, ITEM_ID) values (?, ?, ?, ?)";
// file name, descriptor, item GUID
inline constexpr char kWriteTransition[] =
    "INSERT OR REPLACE INTO TRANSITION_TABLE (FILE_NAME, DSORVFX_DATA, ITEM_ID) values (?, ?, ?)";
// nothing
inline constexpr char kQueryFilterFiles[] = "Select * from FLT_FILE_TABLE";
// file name
inline constexpr char kQueryFiltersOfFile[] = "Select * from FLT_TABLE where FILE_NAME = ?";
// nothing
inline constexpr char kQueryFilters[] = "Select * from FLT_TABLE";
inline constexpr char kQueryTransitions[] = "Select * from TRANSITION_TABLE";
// file name
inline constexpr char kDeleteFilterFile[] = "Delete from FLT_FILE_TABLE where FILE_NAME = ?";
inline constexpr char kDeleteFiltersOfFile[] = "Delete from FLT_TABLE where FILE_NAME = ?";
inline constexpr char kDeleteTransitionsOfFile[] = "Delete from TRANSITION_TABLE where FILE_NAME = ?";
// nothing
inline constexpr char kClearTransitions[] = "DELETE FROM TRANSITION_TABLE";
// Kept: these two end in a semicolon, unlike the one above.
inline constexpr char kClearFilters[] = "DELETE FROM FLT_TABLE;";
inline constexpr char kClearFilterFiles[] = "DELETE FROM FLT_FILE_TABLE;";
// text; the text as the file would give it back.
inline constexpr char kGiveBackText[] = "Select ?";

// --- Shortcuts: narrower statements with the effect of a given one, or one for many; DBToolsInternal::SetShortcuts ---
// nothing; one row when some payload row has a kind other than 0, 1 and 2. The column is untyped: NULL, fractions,
// texts and blobs count, and sort so that each of these looks is one step in the key.
inline constexpr char kProbeOddCacheKinds[] =
    "Select 1 where exists (select 1 from CACHE_DATA_TABLE where CACHE_DATA_TYPE is null)"
    " or exists (select 1 from CACHE_DATA_TABLE where CACHE_DATA_TYPE < 0)"
    " or exists (select 1 from CACHE_DATA_TABLE where CACHE_DATA_TYPE > 0 and CACHE_DATA_TYPE < 1)"
    " or exists (select 1 from CACHE_DATA_TABLE where CACHE_DATA_TYPE > 1 and CACHE_DATA_TYPE < 2)"
    " or exists (select 1 from CACHE_DATA_TABLE where CACHE_DATA_TYPE > 2)";
// kind
inline constexpr char kQueryCacheSizes[] =
    "Select ITEM_ID, COMPRESSED_SIZE from CACHE_DATA_TABLE where CACHE_DATA_TYPE = ?";
// item GUID
inline constexpr char kDeleteKnownCacheKinds[] =
    "Delete from CACHE_DATA_TABLE where CACHE_DATA_TYPE in (0, 1, 2) AND ITEM_ID = ?";

// nothing; one row when scans of a whole tree could differ from single queries: folder numbers that are not 32-bit
// integers, or tables without the keys by which single queries are ordered.
inline constexpr char kProbeOddTreeRows[] =
    "Select 1 where exists (select 1 from FOLDER_TABLE where typeof(ID) <> 'integer' or typeof(PARENT_ID) not in"
    " ('integer', 'null') or ID not between -2147483648 and 2147483647 or PARENT_ID not between -2147483648 and"
    " 2147483647) or (select count(*) from sqlite_master where type = 'index' and name in"
    " ('sqlite_autoindex_RELATION_TABLE_1', 'sqlite_autoindex_TAG_ITEM_RELATION_TABLE_1')) <> 2";
inline constexpr char kScanFolders[] = "Select * from FOLDER_TABLE order by rowid";
// root folder
inline constexpr char kQueryTreePlacements[] =
    "With recursive TREE(ID) as (values(?) union select FOLDER_TABLE.ID from FOLDER_TABLE join TREE on"
    " FOLDER_TABLE.PARENT_ID = TREE.ID) Select PARENT_ID, ITEM_ID from RELATION_TABLE where PARENT_ID in (select ID"
    " from TREE) order by PARENT_ID, ITEM_INDEX, ITEM_ID";
inline constexpr char kLargestItemRow[] = "Select max(rowid) from ITEM_TABLE";
inline constexpr char kScanItems[] = "Select * from ITEM_TABLE order by rowid";
// root folder
inline constexpr char kQueryTreeItems[] =
    "With recursive TREE(ID) as (values(?) union select FOLDER_TABLE.ID from FOLDER_TABLE join TREE on"
    " FOLDER_TABLE.PARENT_ID = TREE.ID) Select * from ITEM_TABLE where ITEM_ID in (select ITEM_ID from RELATION_TABLE"
    " where PARENT_ID in (select ID from TREE)) order by rowid";
inline constexpr char kScanItemTags[] =
    "Select ITEM_GUID, TAGS_GUID from TAG_ITEM_RELATION_TABLE order by ITEM_GUID, TAGS_GUID";
// root folder
inline constexpr char kQueryTreeItemTags[] =
    "With recursive TREE(ID) as (values(?) union select FOLDER_TABLE.ID from FOLDER_TABLE join TREE on"
    " FOLDER_TABLE.PARENT_ID = TREE.ID) Select ITEM_GUID, TAGS_GUID from TAG_ITEM_RELATION_TABLE where ITEM_GUID in"
    " (select ITEM_ID from RELATION_TABLE where PARENT_ID in (select ID from TREE)) order by ITEM_GUID, TAGS_GUID";

// text of the table's making; one row when the table compares names and orders rows as that text says.
inline constexpr char kProbePlainFilters[] =
    "Select 1 from sqlite_master where name = 'FLT_TABLE' and sql || ';' = ? and not exists (select 1 from"
    " sqlite_master where tbl_name = 'FLT_TABLE' and type = 'index' and sql is not null)";
// nothing; one row when the file keeps texts as UTF-8.
inline constexpr char kProbeUtf8[] = "Select 1 where length(cast('a' as BLOB)) = 1";
// nothing; only a text equals a name.
inline constexpr char kScanFilters[] =
    "Select DSORVFT_DATA, DSVFTABLE_DATA, FILE_NAME, ITEM_ID from FLT_TABLE where typeof(FILE_NAME) = 'text'"
    " order by rowid";
// Each followed by "(?, ?, ...)": file names
inline constexpr char kDeleteFilterFilesIn[] = "Delete from FLT_FILE_TABLE where FILE_NAME in ";
inline constexpr char kDeleteFiltersOfFilesIn[] = "Delete from FLT_TABLE where FILE_NAME in ";
inline constexpr char kDeleteTransitionsOfFilesIn[] = "Delete from TRANSITION_TABLE where FILE_NAME in ";
// Each: nothing; changes nothing, and takes the lock of a writer all the same.
inline constexpr char kTakeTurnAtEffects[] = "Delete from TRANSITION_TABLE where 0";
inline constexpr char kTakeTurnAtFolders[] = "Delete from FOLDER_TABLE where 0";
inline constexpr char kTakeTurnAtGalleries[] = "Delete from GALLERY_TABLE where 0";
inline constexpr char kTakeTurnAtTagLinks[] = "Delete from TAG_ITEM_RELATION_TABLE where 0";

}  // namespace qfc::sql
