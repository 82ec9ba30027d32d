#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/TagText.h"
#include "hosts/qfc/library/TagChanges.h"
#include "hosts/qfc/library/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

std::string TagLine(const FoundTag& tag, std::size_t items) {
    return fmt::format("{:<8}  {:<7}  {:>9}  {}", TagTypeName(tag.tag.m_nType), tag.tag.m_bChecked ? "checked" : "",
                       Counted(items, "item"), QualifiedName(tag));
}

}  // namespace

int Run(const TagListOptions& options, const Console& console) {
    const Session session;
    Galleries galleries(session);
    const Tags tags(session);
    const auto gallery = NamedGallery(galleries, options.gallery);
    const auto counts = CountCarriers(galleries);
    Json json = Json::array();
    for (const CTagCategory& category : tags.Categories()) {
        if (gallery && category.m_nGallery != *gallery) continue;
        Json shown = CategoryJson(tags, category);
        shown["tags"] = Json::array();
        for (const CLibTag& stored : category.m_tags) {
            const auto tag = tags.ByGuid(stored.m_guid);
            if (!tag) continue;
            const auto count = counts.find(stored.m_guid);
            const std::size_t items = count != counts.end() ? count->second : 0;
            Json one = TagJson(*tag);
            one["items"] = items;
            shown["tags"].push_back(one);
            console.Show(TagLine(*tag, items));
        }
        if (category.m_tags.empty()) {
            console.Show(fmt::format("{:<8}  {:<7}  {:>9}  {}:{}", CategoryTypeName(category.m_nType), "", "no tags",
                                     tags.GalleryName(category.m_nGallery), ToText(category.m_strName)));
        }
        json.push_back(shown);
    }
    console.ShowJson(json);
    if (json.empty()) throw Failure("no tags yet");
    return kDone;
}

}  // namespace qfc::host
