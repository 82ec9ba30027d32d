#include "hosts/qfc/media/ItemTexts.h"

#include "hosts/qfc/CalendarTime.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <string_view>

namespace qfc::host {

namespace {

struct KindRow {
    MediaKind kind;
    const char* word;
    std::uint32_t type;
};
constexpr std::array<KindRow, 3> kKinds = {
    {{MediaKind::Video, "video", 1}, {MediaKind::Audio, "audio", 2}, {MediaKind::Image, "image", 4}}};

const KindRow& RowOf(MediaKind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

double Thousandths(double value) { return std::round(value * 1000) / 1000; }

template <typename Value>
void PutKnown(nlohmann::ordered_json& json, const char* key, const Value& value) {
    if (value != Value{}) json[key] = value;
}

// A value of another type than expected reads as absent.
template <typename Value>
void Take(const nlohmann::json& json, const char* key, Value& value) {
    const auto found = json.find(key);
    if (found == json.end()) return;
    const bool fits = std::is_same_v<Value, std::string> ? found->is_string() : found->is_number();
    if (fits) value = found->get<Value>();
}

}  // namespace

std::string DescriptionOf(const MediaFacts& facts) {
    return SixNumbers(facts.recorded.value_or(facts.modified)) + " " + SixNumbers(facts.modified);
}

std::string BlackBoxOf(const MediaFacts& facts) {
    nlohmann::ordered_json json;
    json["kind"] = RowOf(facts.kind).word;
    PutKnown(json, "duration", Thousandths(facts.duration));
    PutKnown(json, "frame_rate", Thousandths(facts.frameRate));
    PutKnown(json, "width", facts.width);
    PutKnown(json, "height", facts.height);
    PutKnown(json, "rotation", facts.rotation);
    PutKnown(json, "codec", facts.codec);
    PutKnown(json, "audio_codec", facts.audioCodec);
    PutKnown(json, "channels", facts.channels);
    PutKnown(json, "sample_rate", facts.sampleRate);
    PutKnown(json, "container", facts.container);
    PutKnown(json, "file_size", facts.fileSize);
    return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

MediaFacts FactsOf(std::string_view blackBox) {
    MediaFacts facts;
    const auto json = nlohmann::json::parse(blackBox, nullptr, false);
    if (!json.is_object()) return facts;
    std::string word;
    Take(json, "kind", word);
    for (const KindRow& row : kKinds)
        if (word == row.word) facts.kind = row.kind;
    Take(json, "duration", facts.duration);
    Take(json, "frame_rate", facts.frameRate);
    Take(json, "width", facts.width);
    Take(json, "height", facts.height);
    Take(json, "rotation", facts.rotation);
    Take(json, "codec", facts.codec);
    Take(json, "audio_codec", facts.audioCodec);
    Take(json, "channels", facts.channels);
    Take(json, "sample_rate", facts.sampleRate);
    Take(json, "container", facts.container);
    Take(json, "file_size", facts.fileSize);
    return facts;
}

std::string ShownDuration(double seconds) {
    if (!(seconds > 0)) return {};
    if (seconds < 1) return fmt::format("{:.1f} s", seconds);
    const auto whole = static_cast<std::int64_t>(std::min(seconds, 1e9) + 0.5);
    if (whole < 3600) return fmt::format("{}:{:02}", whole / 60, whole % 60);
    return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

std::string ShownMoment(double seconds, double distance) {
    constexpr double kWholeSeconds = 2;
    const auto tenths = static_cast<std::int64_t>(std::clamp(seconds, 0.0, 1e9) * 10 + 1e-6);
    const std::int64_t whole = tenths / 10;
    std::string text = whole < 3600 ? fmt::format("{}:{:02}", whole / 60, whole % 60)
                                    : fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
    if (distance < kWholeSeconds) text += fmt::format(".{}", tenths % 10);
    return text;
}

std::string ShownDetail(const MediaFacts& facts) {
    if (facts.kind != MediaKind::Audio)
        return facts.width > 0 ? fmt::format("{} \u00d7 {}", facts.width, facts.height) : std::string{};
    if (facts.sampleRate <= 0) return {};
    const std::string rate = fmt::format("{:g} kHz", facts.sampleRate / 1000.0);
    if (facts.channels < 1) return rate;
    const std::string channels = facts.channels == 1   ? "mono"
                                 : facts.channels == 2 ? "stereo"
                                                       : fmt::format("{} channels", facts.channels);
    return rate + " " + channels;
}

std::uint32_t TypeOf(MediaKind kind) { return RowOf(kind).type; }

}  // namespace qfc::host
