#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/EffectsText.h"
#include "hosts/qfc/library/EffectItem.h"
#include "hosts/qfc/library/FailedEffects.h"
#include "hosts/qfc/library/Find.h"
#include "items/CQItem.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

namespace qfc::host {
namespace {

struct Found {
    const KnownFile* file = nullptr;
    const KnownEffect* effect = nullptr;
};

std::vector<Found> ByGuid(const EffectCatalogue& catalogue, const GUID& guid) {
    std::vector<Found> found;
    for (const auto& [path, file] : catalogue.Files()) {
        for (const KnownEffect& effect : file.effects) {
            if (effect.guid == guid) found.push_back({&file, &effect});
        }
    }
    return found;
}

// The item with this path, in one of the two galleries.
std::vector<Found> ByPath(Galleries& galleries, const EffectCatalogue& catalogue, const std::string& text) {
    std::string reason = "no effect " + text;
    std::vector<Found> found;
    for (const char* gallery : {kFiltersGallery, kTransitionsGallery}) {
        if (galleries.Find(gallery) == nullptr) continue;
        try {
            const CQItem& item = *FindItem(galleries, gallery, text).item;
            std::ranges::copy(ByGuid(catalogue, item.GetUniqueID()), std::back_inserter(found));
        } catch (const Ambiguous&) {
            throw;
        } catch (const WrongUsage&) {
            throw;
        } catch (const Failure& failure) {
            // It may be in the other gallery.
            reason += std::string("; ") + failure.what();
        }
    }
    if (found.empty()) throw Failure(reason);
    std::set<std::string> guids;
    for (const Found& one : found) guids.insert(GuidToText(one.effect->guid));
    if (guids.size() == 1) return found;
    throw Failure(fmt::format("several effects are called {}; name one by its GUID: {}", text, fmt::join(guids, ", ")));
}

// All effects of a file; a text that names no file may be the path of an item.
std::vector<Found> Search(Galleries& galleries, const EffectCatalogue& catalogue, const std::string& text) {
    if (const auto guid = GuidFromText(text)) return ByGuid(catalogue, *guid);
    if (const KnownFile* file = FindEffectFile(catalogue, text)) {
        std::vector<Found> found;
        for (const KnownEffect& effect : file->effects) found.push_back({file, &effect});
        if (file->IsFailed()) found.push_back({file, nullptr});
        return found;
    }
    return ByPath(galleries, catalogue, text);
}

// A word of a black box, which may hold anything.
std::string Word(const Json& json, const char* key) {
    const auto found = json.is_object() ? json.find(key) : json.end();
    if (found == json.end()) return "";
    return found->is_string() ? found->get<std::string>() : found->dump(-1, ' ', false, Json::error_handler_t::replace);
}

// What the item knows: all parameters with their defaults, and how its picture came about.
void AddBox(Json& json, const Json& box) {
    for (const char* key : {"parameters", "thumbnail_made_with", "no_visible_effect_at_defaults", "progress"}) {
        if (box.contains(key)) json[key] = box[key];
    }
}

std::string ParameterText(const Json& parameter) {
    std::string text = Word(parameter, "name") + " (" + Word(parameter, "type");
    if (parameter.is_object() && parameter.contains("default")) text += ", " + Word(parameter, "default");
    return text + ")";
}

std::string ParametersText(const Json& parameters, std::size_t count) {
    std::string text;
    for (const Json& parameter : parameters) text += (text.empty() ? "" : ", ") + ParameterText(parameter);
    if (parameters.size() < count) text += " and " + std::to_string(count - parameters.size()) + " more";
    return text.empty() ? "-" : text;
}

std::string MovedText(const Json& moves) {
    std::string text;
    for (const Json& moved : moves) {
        text += (text.empty() ? "" : ", ") + Word(moved, "parameter") + " = " + Word(moved, "value");
    }
    return text.empty() ? "-" : text;
}

std::string ValueText(const std::string& key, const Json& value, const Json& effect) {
    if (key == "parameters" && value.is_array()) return ParametersText(value, effect.value("parameterCount", 0U));
    if (key == "thumbnail_made_with" && value.is_array()) return MovedText(value);
    if (value.is_string()) return value.get_ref<const std::string&>().empty() ? "-" : value.get<std::string>();
    if (key != "paths" || !value.is_array()) return value.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::string text;
    for (const Json& element : value) text += (text.empty() ? "" : ", ") + element.get<std::string>();
    return text.empty() ? "-" : text;
}

void ShowEffect(const Json& effect, const Console& console) {
    for (const auto& [key, value] : effect.items()) {
        console.Show(fmt::format("{:<14}  {}", key, ValueText(key, value, effect)));
    }
}

Json FailedJson(const KnownFile& file) {
    const auto failure = RecallFailure(file.path);
    return {{"file", file.path}, {"missing", IsFileGone(file.path)}, {"failed", failure ? failure->reason : ""}};
}

}  // namespace

int Run(const EffectsShowOptions& options, const Console& console) {
    const Session session;
    Galleries galleries(session);
    const EffectCatalogue catalogue(galleries);
    Json json = Json::array();
    for (const Found& found : Search(galleries, catalogue, options.effect)) {
        if (!json.empty()) console.Show("");
        json.push_back(found.effect != nullptr ? KnownEffectJson(galleries, *found.file, *found.effect)
                                               : FailedJson(*found.file));
        if (found.effect != nullptr && found.effect->item != nullptr) {
            AddBox(json.back(), EffectBox(*found.effect->item));
        }
        ShowEffect(json.back(), console);
    }
    if (json.empty()) throw Failure("no effect " + options.effect);
    console.ShowJson(json);
    return kDone;
}

}  // namespace qfc::host
