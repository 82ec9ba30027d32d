#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/EffectsText.h"
#include "hosts/qfc/library/FailedEffects.h"
#include "hosts/qfc/library/Find.h"
#include "items/CQItem.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
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

// All effects of a file; a text that names no file may be the path of an item.
std::vector<Found> Search(Galleries& galleries, const EffectCatalogue& catalogue, const std::string& text) {
    if (const auto guid = GuidFromText(text)) return ByGuid(catalogue, *guid);
    if (const KnownFile* file = FindEffectFile(catalogue, text)) {
        std::vector<Found> found;
        for (const KnownEffect& effect : file->effects) found.push_back({file, &effect});
        if (file->IsFailed()) found.push_back({file, nullptr});
        return found;
    }
    for (const char* gallery : {kFiltersGallery, kTransitionsGallery}) {
        if (galleries.Find(gallery) == nullptr) continue;
        try {
            const CQItem& item = *FindItem(galleries, gallery, text).item;
            const std::vector<Found> found = ByGuid(catalogue, item.GetUniqueID());
            if (!found.empty()) return found;
        } catch (const WrongUsage&) {
            throw;
        } catch (const Failure&) {
            // It may be in the other gallery.
        }
    }
    return {};
}

std::string ParametersText(const Json& parameters) {
    std::string text;
    for (const Json& parameter : parameters) {
        text += (text.empty() ? "" : ", ") + parameter["name"].get<std::string>() + " (" +
                parameter["type"].get<std::string>() + ")";
    }
    return text.empty() ? "-" : text;
}

std::string ValueText(const std::string& key, const Json& value) {
    if (key == "parameters") return ParametersText(value);
    if (value.is_string()) return value.get_ref<const std::string&>().empty() ? "-" : value.get<std::string>();
    if (!value.is_array()) return value.dump();
    std::string text;
    for (const Json& element : value) text += (text.empty() ? "" : ", ") + element.get<std::string>();
    return text.empty() ? "-" : text;
}

void ShowEffect(const Json& effect, const Console& console) {
    for (const auto& [key, value] : effect.items()) {
        console.Show(fmt::format("{:<14}  {}", key, ValueText(key, value)));
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
        ShowEffect(json.back(), console);
    }
    if (json.empty()) throw Failure("no effect " + options.effect);
    console.ShowJson(json);
    return kDone;
}

}  // namespace qfc::host
