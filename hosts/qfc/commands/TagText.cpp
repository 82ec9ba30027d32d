#include "hosts/qfc/commands/TagText.h"

#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Text.h"

#include <nlohmann/json.hpp>

namespace qfc::host {

std::string TagTypeName(int type) {
    switch (type) {
        case tag_type::kString:
            return "string";
        case tag_type::kStatic:
            return "static";
        case tag_type::kDate:
            return "date";
        default:
            return std::to_string(type);
    }
}

std::string CategoryTypeName(int type) {
    switch (type) {
        case category_type::kPlain:
            return "plain";
        case category_type::kDate:
            return "date";
        case category_type::kUntagged:
            return "untagged";
        case category_type::kFace:
            return "face";
        default:
            return std::to_string(type);
    }
}

Json TagJson(const FoundTag& tag) {
    const std::string guid = GuidToText(tag.tag.m_guid);
    if (tag.galleryName.empty()) return {{"guid", guid}, {"name", nullptr}};
    return {{"guid", guid},
            {"name", ToText(tag.tag.m_strName)},
            {"gallery", tag.galleryName},
            {"galleryId", tag.gallery},
            {"category", tag.category},
            {"type", TagTypeName(tag.tag.m_nType)},
            {"checked", tag.tag.m_bChecked},
            {"deletable", tag.tag.m_bDeletable}};
}

Json TagsJson(const std::vector<FoundTag>& tags) {
    Json json = Json::array();
    for (const FoundTag& tag : tags) json.push_back(TagJson(tag));
    return json;
}

Json CategoryJson(const Tags& tags, const CTagCategory& category) {
    return {{"guid", GuidToText(category.m_guid)},
            {"name", ToText(category.m_strName)},
            {"gallery", tags.GalleryName(category.m_nGallery)},
            {"galleryId", category.m_nGallery},
            {"type", CategoryTypeName(category.m_nType)},
            {"deletable", category.m_bDeletable}};
}

std::optional<int> NamedGallery(const Galleries& galleries, const std::string& gallery) {
    return gallery.empty() ? std::nullopt : std::optional(galleries.Resolve(gallery).id);
}

void RequireTagName(const std::string& name) {
    RequireUtf8(name);
    if (name.empty()) throw WrongUsage("a name cannot be empty");
    if (GuidFromText(name)) throw WrongUsage("a name cannot be a GUID: " + name);
}

}  // namespace qfc::host
