#pragma once

// The column names that readers of rows ask for. Matched with case.
namespace qfc::column {

// FOLDER_TABLE
inline constexpr char kVersion[] = "VERSION";
inline constexpr char kPredefinedId[] = "PREDEFINED_ID";
inline constexpr char kFolderName[] = "FOLDER_NAME";
inline constexpr char kAdoptType[] = "ADOPT_TYPE";
inline constexpr char kTrustyType[] = "TRUSTY_TYPE";
inline constexpr char kTypeExtra[] = "TYPE_EXTRA";
inline constexpr char kParentId[] = "PARENT_ID";  // Also RELATION_TABLE: the folder that holds the item.
inline constexpr char kExpandType[] = "EXPAND_TYPE";
inline constexpr char kOrderIndex[] = "ORDER_INDEX";
inline constexpr char kId[] = "ID";

// GALLERY_TABLE
inline constexpr char kGalleryFolderId[] = "GALLERY_FOLDER_ID";
// Kept: named like a gallery's id, it holds the row number of the gallery's root folder.
inline constexpr char kGalleryId[] = "GALLERY_ID";

// ITEM_TABLE
inline constexpr char kCurThumbFrameNum[] = "CUR_THUMB_FRAME_NUM";
inline constexpr char kOrgThumbFrameNum[] = "ORG_THUMB_FRAME_NUM";
inline constexpr char kBbid[] = "BBID";
inline constexpr char kItemType[] = "ITEM_TYPE";
inline constexpr char kItemName[] = "ITEM_NAME";
inline constexpr char kDescription[] = "DESCRIPTION";
inline constexpr char kAnnotation[] = "ANNOTATION";
inline constexpr char kFileName[] = "FILE_NAME";
inline constexpr char kAttrib[] = "ATTRIB";
inline constexpr char kTemplatePath[] = "TEMPLATE_PATH";
inline constexpr char kTimestamp[] = "TIMESTAMP";
inline constexpr char kFrameSize[] = "FRAME_SIZE";
inline constexpr char kFilmSize[] = "FILM_SIZE";
inline constexpr char kDeletable[] = "DELETABLE";
inline constexpr char kItemId[] = "ITEM_ID";  // Also RELATION_TABLE and CACHE_DATA_TABLE.

// RELATION_TABLE
inline constexpr char kItemIndex[] = "ITEM_INDEX";

// CACHE_DATA_TABLE
inline constexpr char kPreCompressedSize[] = "PRE_COMPRESSED_SIZE";
inline constexpr char kCompressedSize[] = "COMPRESSED_SIZE";
inline constexpr char kCompressedData[] = "COMPRESSED_DATA";
inline constexpr char kCacheDataType[] = "CACHE_DATA_TYPE";

// LIB_TAG_CATEGORY_TABLE
inline constexpr char kCategoryName[] = "CATEGORY_NAME";
inline constexpr char kCategoryGallery[] = "CATEGORY_GALLERY";
inline constexpr char kCategoryDeletable[] = "CATEGORY_DELETABLE";
inline constexpr char kCategoryType[] = "CATEGORY_TYPE";
inline constexpr char kCategoryGuid[] = "CATEGORY_GUID";  // Also LIB_TAG_TABLE.

// LIB_TAG_TABLE
inline constexpr char kTagName[] = "TAG_NAME";
inline constexpr char kTagType[] = "TAG_TYPE";
inline constexpr char kTagChecked[] = "TAG_CHECKED";
inline constexpr char kTagDeletable[] = "TAG_DELETABLE";
inline constexpr char kTagPictureData[] = "TAG_PICTURE_DATA";
inline constexpr char kTagGuid[] = "TAG_GUID";

// TAG_ITEM_RELATION_TABLE
inline constexpr char kItemGuid[] = "ITEM_GUID";
inline constexpr char kTagsGuid[] = "TAGS_GUID";

// FLT_FILE_TABLE, FLT_TABLE and TRANSITION_TABLE; they have FILE_NAME and ITEM_ID, too.
inline constexpr char kFilterCount[] = "FILTER_COUNT";
inline constexpr char kFilterDescriptor[] = "DSORVFT_DATA";
inline constexpr char kFilterTable[] = "DSVFTABLE_DATA";
inline constexpr char kTransitionDescriptor[] = "DSORVFX_DATA";

}  // namespace qfc::column
