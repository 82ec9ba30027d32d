#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Describe.h"
#include "hosts/qfc/commands/TagText.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Verify.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

// The black box of an imported file is JSON; of other items it may be anything.
Json MediaFactsOf(CQItem& item) {
    const auto* text = static_cast<const char*>(item.GetBlackBox());
    if (text == nullptr) return nullptr;
    // Somebody else's library may nest as deep as it likes.
    const auto shallow = [](int depth, Json::parse_event_t, Json&) { return depth < 16; };
    Json facts = Json::parse(text, text + item.GetBlackBoxSize(), shallow, false);
    return facts.is_discarded() ? Json(nullptr) : facts;
}

Json Details(CQGallery& gallery, CQItem& item, const Tags& tags) {
    item.TryLoadBB();
    item.TryLoadFilm();
    const SIZE bitmap = item.GetBitmapCacheSize();
    Json json = ItemJson(gallery, item);
    json["type"] = item.GetItemType();
    json["attributes"] = item.GetAttrib();
    json["description"] = ToText(item.GetDescription());
    json["annotation"] = ToText(item.GetAnnotation());
    json["templatePath"] = ToText(item.GetTemplatePath());
    json["databaseId"] = item.GetDBID();
    json["deletable"] = item.GetIsDeletable();
    json["currentThumbFrame"] = item.GetCurThumbFrameNum();
    json["originalThumbFrame"] = item.GetOrgThumbFrameNum();
    json["tags"] = TagsJson(tags.Of(item));
    json["blackBox"] = {{"bytes", item.GetBlackBoxSize()}};
    json["bitmapCache"] = {{"bytes", item.GetCacheSize()}, {"width", bitmap.cx}, {"height", bitmap.cy}};
    json["film"] = {
        {"bytes", item.GetFilmSize()}, {"frames", item.GetTotalFilmFrame()}, {"frameBytes", item.GetFrameSize()}};
    json["media"] = MediaFactsOf(item);
    return json;
}

// Those of which the library has more than could be loaded: damage, or a look that failed.
std::vector<std::string> UnreadablePayloads(CQItem& item, DBTools& tools) {
    const bool isLoaded[] = {item.GetCache() != nullptr, item.GetBlackBox() != nullptr, item.TryLoadFilm() != 0};
    std::vector<std::string> unreadable;
    for (const auto& [kind, name] : kPayloadNames) {
        if (!isLoaded[kind] && HasStoredPayload(tools, item, kind) != false) unreadable.emplace_back(name);
    }
    return unreadable;
}

std::string ValueText(const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_null()) return "-";
    if (!value.is_structured()) return value.dump();
    std::string text;
    for (const auto& [key, element] : value.items()) {
        text += (text.empty() ? "" : ", ") + (value.is_object() ? key + " " : "") + ValueText(element);
    }
    return text.empty() ? "-" : text;
}

}  // namespace

int Run(const ShowOptions& options, const Console& console) {
    const Session session;
    Galleries galleries(session);
    const FoundItem found = FindItem(galleries, options.gallery, options.item);
    const Tags tags(session);
    Json json = Details(*found.gallery, *found.item, tags);
    const auto unreadable = UnreadablePayloads(*found.item, *found.gallery->GetDBTools());
    for (const auto& [key, value] : json.items()) {
        const std::string text = key == "tags" ? TagNames(tags.Of(*found.item)) : ValueText(value);
        console.Show(fmt::format("{:<18}  {}", key, text.empty() ? "-" : text));
    }
    json["unreadable"] = unreadable;
    console.ShowJson(json);
    for (const std::string& payload : unreadable) console.Complain("cannot read the " + payload + " of the item");
    return unreadable.empty() ? kDone : kFailed;
}

}  // namespace qfc::host
