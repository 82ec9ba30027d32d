#pragma once

#include "platform/framework/CString.h"

#include <algorithm>
#include <array>

// The galleries every library may have: their ids, the names that select them, and the sections of the default tags
// that belong to them. Constants; any thread.
namespace qfc {

enum PredefinedId : int {
    kGalleryMedia = 1,
    kGallerySounds = 2,
    kGalleryTemplates = 3,
    kGalleryTransitions = 4,
    kGalleryTitles = 5,
    kGalleryFilters = 6,
    kGalleryOverlays = 8,
    kGalleryMotionPaths = 9,
    kGalleryMediaH5 = 10,
    kGallerySoundsH5 = 11,
    kGalleryTemplatesH5 = 12,
    kGalleryTitlesH5 = 13,
    kGalleryOverlaysH5 = 14,
    kGallerySpeed = 15,
    kGalleryArStickers = 16,
};

struct PredefinedGallery {
    int id;
    const char* name;     // Null where the id has none.
    const char* section;  // Of "Default_Libtag.ini".
};

// Kept: 7 shares the section of the filters and is no gallery.
inline constexpr int kGalleryWithoutName = 7;

inline constexpr std::array<PredefinedGallery, 16> kPredefinedGalleries{{
    {kGalleryMedia, "Media", "TW_DEFAULT_TAGS_MEDIA_CATEGORY"},
    {kGallerySounds, "Sounds", "TW_DEFAULT_TAGS_SOUNDS_CATEGORY"},
    {kGalleryTemplates, "Templates", "TW_DEFAULT_TAGS_TEMPLATE_CATEGORY"},
    {kGalleryTransitions, "Transitions", "TW_DEFAULT_TAGS_TRANSITION_CATEGORY"},
    {kGalleryTitles, "Titles", "TW_DEFAULT_TAGS_TITLE_CATEGORY"},
    {kGalleryFilters, "Filters", "TW_DEFAULT_TAGS_FILTER_CATEGORY"},
    {kGalleryWithoutName, nullptr, "TW_DEFAULT_TAGS_FILTER_CATEGORY"},
    {kGalleryOverlays, "Overlays", "TW_DEFAULT_TAGS_OVERLAY_CATEGORY"},
    {kGalleryMotionPaths, "Motion Paths", "TW_DEFAULT_TAGS_PATH_CATEGORY"},
    {kGalleryMediaH5, "Media H5", "TW_DEFAULT_TAGS_MEDIA_H5_CATEGORY"},
    {kGallerySoundsH5, "Sounds H5", "TW_DEFAULT_TAGS_SOUNDS_H5_CATEGORY"},
    {kGalleryTemplatesH5, "Templates H5", "TW_DEFAULT_TAGS_TEMPLATE_H5_CATEGORY"},
    {kGalleryTitlesH5, "Titles H5", "TW_DEFAULT_TAGS_TITLE_H5_CATEGORY"},
    {kGalleryOverlaysH5, "Overlays H5", "TW_DEFAULT_TAGS_OVERLAY_H5_CATEGORY"},
    {kGallerySpeed, "Speed", "TW_DEFAULT_TAGS_SPEED_CATEGORY"},
    {kGalleryArStickers, "AR Stickers", "TW_DEFAULT_TAGS_AR_STICKER_CATEGORY"},
}};

// In exactly that spelling. Kept: any other name gives the one of Media.
inline int GalleryIdOfName(const CString& name) {
    const auto found = std::find_if(kPredefinedGalleries.begin(), kPredefinedGalleries.end(),
                                    [&](const auto& each) { return each.name != nullptr && name == each.name; });
    return found != kPredefinedGalleries.end() ? found->id : kGalleryMedia;
}

// Kept: that of Media for any other id.
inline const char* DefaultTagSection(int galleryId) {
    const auto found = std::find_if(kPredefinedGalleries.begin(), kPredefinedGalleries.end(),
                                    [&](const auto& each) { return each.id == galleryId; });
    return (found != kPredefinedGalleries.end() ? *found : kPredefinedGalleries.front()).section;
}

}  // namespace qfc

using qfc::PredefinedId;
