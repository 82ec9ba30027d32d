#include "hosts/qfc/commands/EffectsText.h"

#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

const char* GalleryOf(const KnownEffect& effect) { return effect.isTransition ? kTransitionsGallery : kFiltersGallery; }

Json ParametersJson(const KnownEffect& effect) {
    constexpr const char* kTypes[] = {"switch", "number", "colour", "position", "text"};
    Json json = Json::array();
    for (const auto& parameter : effect.facts.parameters) {
        const char* type = parameter.type < std::size(kTypes) ? kTypes[parameter.type] : "unknown";
        json.push_back({{"name", parameter.name}, {"type", type}});
    }
    return json;
}

}  // namespace

const char* KindOf(const KnownEffect& effect) { return effect.isTransition ? "transition" : "filter"; }

std::string NameOf(const KnownEffect& effect) {
    return effect.item != nullptr ? ShownName(*effect.item) : effect.facts.name;
}

std::vector<std::string> PathsOf(Galleries& galleries, const KnownEffect& effect) {
    CQGallery* gallery = effect.item != nullptr ? galleries.Find(GalleryOf(effect)) : nullptr;
    return gallery != nullptr ? PathsOf(*gallery, *effect.item) : std::vector<std::string>{};
}

Json KnownEffectJson(Galleries& galleries, const KnownFile& file, const KnownEffect& effect) {
    const KnownEffect::Facts& facts = effect.facts;
    return {{"guid", GuidToText(effect.guid)},
            {"kind", KindOf(effect)},
            {"name", NameOf(effect)},
            {"author", facts.author},
            {"explanation", facts.explanation},
            {"version", std::to_string(facts.majorVersion) + "." + std::to_string(facts.minorVersion)},
            {"parameterCount", facts.parameterCount},
            {"parameters", ParametersJson(effect)},
            {"file", file.path},
            {"missing", IsFileGone(file.path)},
            {"gallery", *PredefinedName(effect.isTransition ? 4 : 6)},
            {"paths", PathsOf(galleries, effect)},
            {"recorded", effect.isRecorded}};
}

}  // namespace qfc::host
