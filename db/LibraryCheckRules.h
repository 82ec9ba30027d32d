#pragma once

#include "db/LibraryCheck.h"

#include <array>

// What the tables of a sound library never show, as data. Every text selects two columns: the row that is reported and
// a second value for the sentence. Columns are named with their table where a text has two: one that is missing in the
// inner table would else be found in the outer one.
namespace qfc::check {

struct Rule {
    LibraryFindingKind kind;
    std::array<const char*, 2> tables;  // Looked at; the rule is passed over while one of them is missing.
    const char* sql;
    const char* sentence;  // {0} the row, {1} the second value.
};

// Asked before the payloads and the folders are walked.
inline constexpr std::array<Rule, 4> kItemRules{{
    {LibraryFindingKind::kRelationWithoutItem,
     {"RELATION_TABLE", "ITEM_TABLE"},
     "select RELATION_TABLE.ITEM_ID, RELATION_TABLE.PARENT_ID from RELATION_TABLE"
     " where RELATION_TABLE.ITEM_ID not in"
     " (select ITEM_TABLE.ITEM_ID from ITEM_TABLE where ITEM_TABLE.ITEM_ID is not null)",
     "Folder {1} holds the item {0}, which has no row."},
    {LibraryFindingKind::kRelationWithoutFolder,
     {"RELATION_TABLE", "FOLDER_TABLE"},
     "select RELATION_TABLE.ITEM_ID, RELATION_TABLE.PARENT_ID from RELATION_TABLE"
     " where RELATION_TABLE.PARENT_ID not in (select FOLDER_TABLE.ID from FOLDER_TABLE)",
     "The item {0} is placed in folder {1}, which does not exist."},
    {LibraryFindingKind::kItemWithoutFolder,
     {"ITEM_TABLE", "RELATION_TABLE"},
     "select ITEM_TABLE.ITEM_ID, ITEM_TABLE.ITEM_NAME from ITEM_TABLE where ITEM_TABLE.ITEM_ID is null"
     " or ITEM_TABLE.ITEM_ID not in"
     " (select RELATION_TABLE.ITEM_ID from RELATION_TABLE where RELATION_TABLE.ITEM_ID is not null)",
     "No folder holds the item {0} (\"{1}\")."},
    {LibraryFindingKind::kPayloadWithoutItem,
     {"CACHE_DATA_TABLE", "ITEM_TABLE"},
     "select CACHE_DATA_TABLE.ITEM_ID, CACHE_DATA_TABLE.CACHE_DATA_TYPE from CACHE_DATA_TABLE"
     " where CACHE_DATA_TABLE.ITEM_ID not in"
     " (select ITEM_TABLE.ITEM_ID from ITEM_TABLE where ITEM_TABLE.ITEM_ID is not null)",
     "There is a payload of kind {1} for the item {0}, which has no row."},
}};

inline constexpr Rule kFolderWithoutParent{LibraryFindingKind::kFolderWithoutParent,
                                           {"FOLDER_TABLE", "FOLDER_TABLE"},
                                           "select ID, PARENT_ID from FOLDER_TABLE where PARENT_ID is null"
                                           " or (PARENT_ID <> -1 and PARENT_ID not in (select ID from FOLDER_TABLE))",
                                           "Folder {0} lies in folder {1}, which does not exist."};

inline constexpr Rule kGalleryIdTwice{
    LibraryFindingKind::kGalleryIdTwice,
    {"GALLERY_TABLE", "GALLERY_TABLE"},
    "select GALLERY_FOLDER_ID, count(*) from GALLERY_TABLE where typeof(GALLERY_FOLDER_ID) = 'integer'"
    " group by GALLERY_FOLDER_ID having count(*) > 1",
    "The gallery id {0} is stored {1} times; only the first tree is ever seen."};

// Numbers that 32 bits do not hold, or that are none: no reader follows them. The keys of folders, what points at them,
// and the ids of galleries.
inline constexpr std::array<Rule, 5> kRowNumberRules{{
    {LibraryFindingKind::kBadRowNumber,
     {"FOLDER_TABLE", "FOLDER_TABLE"},
     "select ID, FOLDER_NAME from FOLDER_TABLE where ID not between -2147483648 and 2147483647",
     "The number of the folder {0} (\"{1}\") is out of range."},
    {LibraryFindingKind::kBadRowNumber,
     {"FOLDER_TABLE", "FOLDER_TABLE"},
     "select ID, PARENT_ID from FOLDER_TABLE where PARENT_ID is not null and (typeof(PARENT_ID) <> 'integer'"
     " or PARENT_ID not between -2147483648 and 2147483647)",
     "The parent of folder {0} is no folder number: {1}."},
    {LibraryFindingKind::kBadRowNumber,
     {"GALLERY_TABLE", "GALLERY_TABLE"},
     "select GALLERY_FOLDER_ID, GALLERY_ID from GALLERY_TABLE where GALLERY_ID is not null and"
     " (typeof(GALLERY_ID) <> 'integer' or GALLERY_ID not between -2147483648 and 2147483647)",
     "The root of gallery {0} is no folder number: {1}."},
    {LibraryFindingKind::kBadRowNumber,
     {"GALLERY_TABLE", "GALLERY_TABLE"},
     "select GALLERY_FOLDER_ID, GALLERY_ID from GALLERY_TABLE where typeof(GALLERY_FOLDER_ID) <> 'integer'"
     " or GALLERY_FOLDER_ID not between -2147483648 and 2147483647",
     "The gallery with the root folder {1} has no gallery id: {0}."},
    {LibraryFindingKind::kBadRowNumber,
     {"RELATION_TABLE", "RELATION_TABLE"},
     "select ITEM_ID, PARENT_ID from RELATION_TABLE where typeof(PARENT_ID) <> 'integer'"
     " or PARENT_ID not between -2147483648 and 2147483647",
     "The item {0} is placed in what is no folder number: {1}."},
}};

// What a tag that was deleted on the way, or an item that went with its tags, leaves behind. Rows without a usable GUID
// are reported as such, and not here again.
inline constexpr std::array<Rule, 3> kTagRules{{
    {LibraryFindingKind::kLinkWithoutTag,
     {"TAG_ITEM_RELATION_TABLE", "LIB_TAG_TABLE"},
     "select TAG_ITEM_RELATION_TABLE.TAGS_GUID, TAG_ITEM_RELATION_TABLE.ITEM_GUID from TAG_ITEM_RELATION_TABLE"
     " where typeof(TAG_ITEM_RELATION_TABLE.TAGS_GUID) = 'blob' and length(TAG_ITEM_RELATION_TABLE.TAGS_GUID) = 16"
     " and TAG_ITEM_RELATION_TABLE.TAGS_GUID not in"
     " (select LIB_TAG_TABLE.TAG_GUID from LIB_TAG_TABLE where LIB_TAG_TABLE.TAG_GUID is not null)",
     "The item {1} carries the tag {0}, which has no row."},
    {LibraryFindingKind::kLinkWithoutItem,
     {"TAG_ITEM_RELATION_TABLE", "ITEM_TABLE"},
     "select TAG_ITEM_RELATION_TABLE.ITEM_GUID, TAG_ITEM_RELATION_TABLE.TAGS_GUID from TAG_ITEM_RELATION_TABLE"
     " where typeof(TAG_ITEM_RELATION_TABLE.ITEM_GUID) = 'blob' and length(TAG_ITEM_RELATION_TABLE.ITEM_GUID) = 16"
     " and TAG_ITEM_RELATION_TABLE.ITEM_GUID not in"
     " (select ITEM_TABLE.ITEM_ID from ITEM_TABLE where ITEM_TABLE.ITEM_ID is not null)",
     "The tag {1} is on the item {0}, which has no row."},
    {LibraryFindingKind::kTagWithoutCategory,
     {"LIB_TAG_TABLE", "LIB_TAG_CATEGORY_TABLE"},
     "select LIB_TAG_TABLE.TAG_GUID, LIB_TAG_TABLE.TAG_NAME from LIB_TAG_TABLE"
     " where typeof(LIB_TAG_TABLE.CATEGORY_GUID) = 'blob' and length(LIB_TAG_TABLE.CATEGORY_GUID) = 16"
     " and LIB_TAG_TABLE.CATEGORY_GUID not in"
     " (select LIB_TAG_CATEGORY_TABLE.CATEGORY_GUID from LIB_TAG_CATEGORY_TABLE"
     " where LIB_TAG_CATEGORY_TABLE.CATEGORY_GUID is not null)",
     "The tag {0} (\"{1}\") has no category; nobody sees it."},
}};

// Columns that hold GUIDs are untyped. Each text selects the row's number and the value that is no GUID.
struct GuidColumn {
    const char* table;
    const char* sql;
};

inline constexpr std::array<GuidColumn, 11> kGuidColumns{{
    {"ITEM_TABLE", "select rowid, ITEM_ID from ITEM_TABLE where typeof(ITEM_ID) <> 'blob' or length(ITEM_ID) <> 16"},
    {"RELATION_TABLE",
     "select rowid, ITEM_ID from RELATION_TABLE where typeof(ITEM_ID) <> 'blob' or length(ITEM_ID) <> 16"},
    {"CACHE_DATA_TABLE",
     "select rowid, ITEM_ID from CACHE_DATA_TABLE where typeof(ITEM_ID) <> 'blob' or length(ITEM_ID) <> 16"},
    {"FLT_TABLE", "select rowid, ITEM_ID from FLT_TABLE where typeof(ITEM_ID) <> 'blob' or length(ITEM_ID) <> 16"},
    {"TRANSITION_TABLE",
     "select rowid, ITEM_ID from TRANSITION_TABLE where typeof(ITEM_ID) <> 'blob' or length(ITEM_ID) <> 16"},
    {"ITEM_AUTO_LOADED_TABLE",
     "select rowid, ITEM_ID from ITEM_AUTO_LOADED_TABLE where typeof(ITEM_ID) <> 'blob' or length(ITEM_ID) <> 16"},
    {"LIB_TAG_CATEGORY_TABLE",
     "select rowid, CATEGORY_GUID from LIB_TAG_CATEGORY_TABLE"
     " where typeof(CATEGORY_GUID) <> 'blob' or length(CATEGORY_GUID) <> 16"},
    {"LIB_TAG_TABLE",
     "select rowid, TAG_GUID from LIB_TAG_TABLE where typeof(TAG_GUID) <> 'blob' or length(TAG_GUID) <> 16"},
    {"LIB_TAG_TABLE",
     "select rowid, CATEGORY_GUID from LIB_TAG_TABLE"
     " where typeof(CATEGORY_GUID) <> 'blob' or length(CATEGORY_GUID) <> 16"},
    {"TAG_ITEM_RELATION_TABLE",
     "select rowid, ITEM_GUID from TAG_ITEM_RELATION_TABLE"
     " where typeof(ITEM_GUID) <> 'blob' or length(ITEM_GUID) <> 16"},
    {"TAG_ITEM_RELATION_TABLE",
     "select rowid, TAGS_GUID from TAG_ITEM_RELATION_TABLE"
     " where typeof(TAGS_GUID) <> 'blob' or length(TAGS_GUID) <> 16"},
}};

// The tables that stand beside another in a text, each for itself.
struct TableScan {
    const char* table;
    const char* sql;
};

inline constexpr std::array<TableScan, 7> kTableScans{{
    {"FOLDER_TABLE", "select ID, PARENT_ID, FOLDER_NAME from FOLDER_TABLE"},
    {"ITEM_TABLE", "select ITEM_ID, ITEM_NAME from ITEM_TABLE"},
    {"CACHE_DATA_TABLE", "select ITEM_ID, CACHE_DATA_TYPE from CACHE_DATA_TABLE"},
    {"RELATION_TABLE", "select ITEM_ID, PARENT_ID from RELATION_TABLE"},
    {"TAG_ITEM_RELATION_TABLE", "select ITEM_GUID, TAGS_GUID from TAG_ITEM_RELATION_TABLE"},
    {"LIB_TAG_TABLE", "select TAG_GUID, CATEGORY_GUID, TAG_NAME from LIB_TAG_TABLE"},
    {"LIB_TAG_CATEGORY_TABLE", "select CATEGORY_GUID from LIB_TAG_CATEGORY_TABLE"},
}};

inline constexpr char kTableNames[] = "select name from sqlite_master where type = 'table'";
inline constexpr char kIntegrity[] = "PRAGMA integrity_check";
inline constexpr char kPayloads[] =
    "select ITEM_ID, CACHE_DATA_TYPE, PRE_COMPRESSED_SIZE, COMPRESSED_SIZE, COMPRESSED_DATA from CACHE_DATA_TABLE";
inline constexpr char kParents[] = "select ID, PARENT_ID from FOLDER_TABLE order by ID";

}  // namespace qfc::check
