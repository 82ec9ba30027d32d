#include "tags/PredefinedGalleries.h"

#include "tags/CLibTagsMgr.h"

#include <gtest/gtest.h>

namespace {

struct Row {
    int id;
    const char* name;
    const char* section;
};

constexpr Row kRows[] = {
    {1, "Media", "TW_DEFAULT_TAGS_MEDIA_CATEGORY"},
    {2, "Sounds", "TW_DEFAULT_TAGS_SOUNDS_CATEGORY"},
    {3, "Templates", "TW_DEFAULT_TAGS_TEMPLATE_CATEGORY"},
    {4, "Transitions", "TW_DEFAULT_TAGS_TRANSITION_CATEGORY"},
    {5, "Titles", "TW_DEFAULT_TAGS_TITLE_CATEGORY"},
    {6, "Filters", "TW_DEFAULT_TAGS_FILTER_CATEGORY"},
    {8, "Overlays", "TW_DEFAULT_TAGS_OVERLAY_CATEGORY"},
    {9, "Motion Paths", "TW_DEFAULT_TAGS_PATH_CATEGORY"},
    {10, "Media H5", "TW_DEFAULT_TAGS_MEDIA_H5_CATEGORY"},
    {11, "Sounds H5", "TW_DEFAULT_TAGS_SOUNDS_H5_CATEGORY"},
    {12, "Templates H5", "TW_DEFAULT_TAGS_TEMPLATE_H5_CATEGORY"},
    {13, "Titles H5", "TW_DEFAULT_TAGS_TITLE_H5_CATEGORY"},
    {14, "Overlays H5", "TW_DEFAULT_TAGS_OVERLAY_H5_CATEGORY"},
    {15, "Speed", "TW_DEFAULT_TAGS_SPEED_CATEGORY"},
    {16, "AR Stickers", "TW_DEFAULT_TAGS_AR_STICKER_CATEGORY"},
};

TEST(PredefinedGalleries, NameGivesTheId) {
    for (const Row& row : kRows) EXPECT_EQ(qfc::GalleryIdOfName(row.name), row.id) << row.name;
}

TEST(PredefinedGalleries, IdGivesTheSection) {
    for (const Row& row : kRows) {
        EXPECT_EQ(CLibTagsMgr::GetInifileSectionByLibID(row.id), CString(row.section)) << row.id;
    }
}

// Kept: names count in their exact spelling, and what is unknown is Media.
TEST(PredefinedGalleries, AnyOtherNameGivesMedia) {
    for (const char* name : {"media", "sounds", "SOUNDS", "Sounds ", "Sound", "", "7", "nowhere"}) {
        EXPECT_EQ(qfc::GalleryIdOfName(name), 1) << name;
    }
}

TEST(PredefinedGalleries, AnyOtherIdGivesTheSectionOfMedia) {
    for (const int id : {0, 17, -1, 1000, INT32_MIN}) {
        EXPECT_EQ(CLibTagsMgr::GetInifileSectionByLibID(id), CString("TW_DEFAULT_TAGS_MEDIA_CATEGORY")) << id;
    }
}

// Kept: the id without a gallery.
TEST(PredefinedGalleries, SevenSharesTheSectionOfTheFilters) {
    EXPECT_EQ(CLibTagsMgr::GetInifileSectionByLibID(7), CString("TW_DEFAULT_TAGS_FILTER_CATEGORY"));
}

}  // namespace
