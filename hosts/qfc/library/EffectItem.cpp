#include "hosts/qfc/library/EffectItem.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Console.h"
#include "hosts/qfc/effects/PictureMath.h"
#include "hosts/qfc/library/EffectNames.h"
#include "hosts/qfc/library/ItemPayloads.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/pictures/Dib.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

namespace qfc::host {
namespace {

constexpr const char* kProgressModes[] = {"time", "parameter", "mix"};
constexpr const char* kParameterTypes[] = {"switch", "number", "colour", "position", "text"};

template <std::size_t kCount>
const char* WordOf(const char* const (&words)[kCount], std::size_t number) {
    return number < kCount ? words[number] : "unknown";
}

GUID GuidOf(const EffectSource& source) { return EffectGuid(BaseNameOf(source.path), source.effect.index); }

std::vector<EffectParameter> ParametersOf(const ProbedEffect& effect) {
    std::vector<EffectParameter> parameters;
    for (const ProbedParameter& probed : effect.parameters) {
        parameters.push_back({probed.type, 0, DefaultBytes(probed.defaultValue), probed.name, probed.explanation});
    }
    return parameters;
}

std::uint8_t FlagsOf(const ProbedEffect& effect) {
    unsigned flags = 0;
    if (!effect.pictures.empty()) flags |= filter_flag::kThumbnailRendered;
    if (effect.dependsOnTime) flags |= filter_flag::kDependsOnTime;
    if (effect.noVisibleEffect) flags |= filter_flag::kNoVisibleEffect;
    return static_cast<std::uint8_t>(flags);
}

// What filter tables and descriptors of transitions have in common.
template <class Block>
void Describe(Block& block, const EffectSource& source) {
    block.majorVersion = source.effect.majorVersion;
    block.minorVersion = source.effect.minorVersion;
    block.fileSize = source.report.stamp.size;
    block.fileTime = source.report.stamp.time;
    block.name = source.effect.name;
    block.author = source.effect.author;
    block.explanation = source.effect.explanation;
    block.parameters = ParametersOf(source.effect);
}

bool GivePictures(CQItem& item, const std::vector<Picture>& pictures, bool isTransition) {
    if (pictures.empty()) return true;
    // Half way the most of a transition is to be seen.
    const std::size_t shown = isTransition ? pictures.size() / 2 : 0;
    if (!GiveCache(item, PackDib(pictures[shown]))) return false;
    if (!isTransition) return true;
    std::vector<std::uint8_t> film;
    for (const Picture& picture : pictures) {
        const std::vector<std::uint8_t> frame = PackDib(picture);
        film.insert(film.end(), frame.begin(), frame.end());
    }
    return GiveFilm(item, film, static_cast<std::uint32_t>(film.size() / pictures.size()),
                    static_cast<std::uint32_t>(shown));
}

Json ParameterJson(const ProbedParameter& parameter) {
    return {{"name", parameter.name},
            {"explanation", parameter.explanation},
            {"type", WordOf(kParameterTypes, parameter.type)},
            {"default", ParameterValueJson(parameter.defaultValue)}};
}

// The film shows nothing but one picture fading into the other.
bool IsPlainBlend(const std::vector<Picture>& film) {
    constexpr double kRounding = 1;
    for (std::size_t k = 1; k + 1 < film.size(); ++k) {
        const double progress = static_cast<double>(k) / static_cast<double>(film.size() - 1);
        const Picture plain = Blended(film.front(), film.back(), progress);
        if (ChangeBetween(film[k], plain).mean > kRounding) return false;
    }
    return !film.empty();
}

Json ProgressJson(const ProbedEffect& effect) {
    Json json{{"mode", WordOf(kProgressModes, effect.progressMode)}};
    if (effect.fadedInputs) json["inputs_faded"] = true;
    if (effect.progressMode == progress_mode::kMix) json["plain_blend"] = IsPlainBlend(effect.pictures);
    const auto parameter = static_cast<std::size_t>(effect.progressParameter);
    if (effect.progressMode != progress_mode::kParameter || parameter >= effect.parameters.size()) return json;
    json["parameter"] = effect.parameters[parameter].name;
    json["start"] = effect.start;
    json["end"] = effect.end;
    return json;
}

Json MovedJson(const ProbedEffect& effect) {
    Json json = Json::array();
    for (const MovedParameter& moved : effect.moved) {
        if (moved.index >= effect.parameters.size()) continue;
        json.push_back(
            {{"parameter", effect.parameters[moved.index].name}, {"value", ParameterValueJson(moved.value)}});
    }
    return json;
}

// Somebody else's black box may hold anything.
std::string TextOf(const Json& json, const char* key) {
    const auto found = json.is_object() ? json.find(key) : json.end();
    return found != json.end() && found->is_string() ? found->get<std::string>() : "";
}

bool IsTrue(const Json& json, const char* key) {
    const auto found = json.is_object() ? json.find(key) : json.end();
    return found != json.end() && *found == true;
}

std::string ProgressText(const Json& progress) {
    const std::string mode = TextOf(progress, "mode");
    if (mode == kProgressModes[progress_mode::kTime]) return "by time";
    const bool isMix = mode == kProgressModes[progress_mode::kMix];
    if (isMix && IsTrue(progress, "plain_blend")) return "a plain blend";
    if (isMix) return "through the mix of both";
    const std::string parameter = TextOf(progress, "parameter");
    return parameter.empty() ? "" : "by " + parameter;
}

}  // namespace

Json ParameterValueJson(const ParameterValue& value) {
    struct Writer {
        Json operator()(bool isOn) const { return isOn; }
        Json operator()(double number) const { return number; }
        Json operator()(const ParameterColour& c) const {
            return {{"red", c.red}, {"green", c.green}, {"blue", c.blue}};
        }
        Json operator()(const ParameterPosition& p) const { return {{"x", p.x}, {"y", p.y}}; }
        Json operator()(const std::string& text) const { return text; }
    };
    return std::visit(Writer{}, value);
}

std::size_t CountFilters(const ProbeReport& report) {
    return static_cast<std::size_t>(
        std::ranges::count_if(report.effects, [](const ProbedEffect& effect) { return !effect.isTransition; }));
}

Json EffectJson(const EffectSource& source) {
    const ProbedEffect& effect = source.effect;
    Json json{{"kind", effect.isTransition ? "transition" : "filter"}, {"name", effect.name}};
    json["author"] = effect.author;
    json["explanation"] = effect.explanation;
    json["version"] = std::to_string(effect.majorVersion) + "." + std::to_string(effect.minorVersion);
    json["standard"] = "frei0r";
    json["api_version"] = effect.apiVersion;
    json["plugin_type"] = effect.pluginType;
    json["colour_model"] = effect.colourModel;
    json["index"] = effect.index;
    json["effects_in_file"] = source.report.effects.size();
    json["file_size"] = source.report.stamp.size;
    json["file_time"] = source.report.stamp.time;
    if (!source.report.reason.empty()) json["left_out_of_file"] = source.report.reason;
    json["depends_on_time"] = effect.dependsOnTime;
    if (effect.isTransition) json["progress"] = ProgressJson(effect);
    if (!effect.isTransition) json["no_visible_effect_at_defaults"] = effect.noVisibleEffect;
    json["thumbnail_made_with"] = MovedJson(effect);
    json["parameters"] = Json::array();
    for (const ProbedParameter& parameter : effect.parameters) json["parameters"].push_back(ParameterJson(parameter));
    return json;
}

std::unique_ptr<CQItem> MakeEffectItem(const EffectSource& source) {
    const ProbedEffect& effect = source.effect;
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    auto item = std::make_unique<CQItem>(ToCString(EffectItemName(effect.name)));
    item->SetUniqueID(GuidOf(source));
    item->SetFileName(ToCString(source.path));
    item->SetItemType(effect.isTransition ? item_type::kTransition : item_type::kVideoFilter);
    item->fnSetTimeStamp(static_cast<ULONGLONG>(std::max<std::int64_t>(source.report.stamp.time, 0) / kNanoseconds));
    item->fnSetDeletable(1);
    item->GetDescription() = ToCString(effect.explanation);
    const std::string text = EffectJson(source).dump(-1, ' ', false, Json::error_handler_t::replace);
    const bool given = GiveBlackBox(*item, text) && GivePictures(*item, effect.pictures, effect.isTransition);
    return given ? std::move(item) : nullptr;
}

DS_Filter_File_Record MakeFilterRecord(const EffectSource& source) {
    const ProbedEffect& effect = source.effect;
    FilterDescriptorBlock descriptor;
    descriptor.pluginType = effect.pluginType;
    descriptor.colourModel = effect.colourModel;
    descriptor.index = effect.index;
    descriptor.parameterCount = static_cast<std::uint8_t>(std::min<std::size_t>(effect.parameters.size(), 255));
    descriptor.flags = FlagsOf(effect);
    FilterTableBlock table;
    Describe(table, source);
    table.apiVersion = effect.apiVersion;

    DS_Filter_File_Record file;
    file.strFileName = ToCString(source.path);
    file.nFilterCount = static_cast<int>(CountFilters(source.report));
    file.filters.push_back({WriteFilterDescriptor(descriptor), WriteFilterTable(table), GuidOf(source)});
    return file;
}

DS_Transition_Record MakeTransitionRecord(const EffectSource& source) {
    const ProbedEffect& effect = source.effect;
    TransitionDescriptorBlock block;
    Describe(block, source);
    block.colourModel = effect.colourModel;
    block.progressMode = effect.progressMode;
    block.progressParameter = effect.progressParameter;
    block.start = effect.start;
    block.end = effect.end;

    DS_Transition_Record transition;
    transition.strFileName = ToCString(source.path);
    transition.descriptor = WriteTransitionDescriptor(block);
    transition.guidItem = GuidOf(source);
    return transition;
}

Json EffectBox(CQItem& item) {
    const auto* text = static_cast<const char*>(item.GetBlackBox());
    const std::string_view box(text != nullptr ? text : "", text != nullptr ? item.GetBlackBoxSize() : 0);
    const auto shallow = [](int depth, Json::parse_event_t, Json&) { return depth < 16; };
    Json json = Json::parse(box.begin(), box.end(), shallow, false);
    ReleasePayloads(item);
    return json.is_object() && json.contains("effects_in_file") ? json : Json::object();
}

EffectFacts EffectFactsOf(CQItem& item) {
    EffectFacts facts;
    const Json json = EffectBox(item);
    if (json.empty()) return facts;
    facts.name = TextOf(json, "name");
    const Json& count = json["effects_in_file"];
    if (count.is_number_unsigned()) facts.effectsInFile = count.get<std::size_t>();
    const auto parameters = json.find("parameters");
    if (parameters != json.end() && parameters->is_array()) {
        facts.detail = parameters->empty() ? "no parameters" : Counted(parameters->size(), "parameter");
    }
    const auto moved = json.find("thumbnail_made_with");
    const bool isMoved = moved != json.end() && !moved->empty();
    if (IsTrue(json, "no_visible_effect_at_defaults") && !isMoved) facts.detail = "no visible effect";
    const auto progress = json.find("progress");
    if (progress != json.end()) facts.progress = ProgressText(*progress);
    return facts;
}

}  // namespace qfc::host
