#include "hosts/qfc/effects/PluginTexts.h"
#include "hosts/qfc/effects/ReportBytes.h"
#include "hosts/qfc/effects/ReportMark.h"

#include <bit>
#include <cmath>
#include <type_traits>

namespace qfc::host {

namespace {

// The plugin interface's numbers.
constexpr std::uint8_t kFilter = 0;
constexpr std::uint8_t kMixerOfTwo = 2;
constexpr std::uint8_t kLastColourModel = 2;

// Reads on until something is not as it has to be; from there on everything is empty and IsGood stays false.
class Unpacker {
public:
    explicit Unpacker(std::span<const std::uint8_t> bytes) : m_rest(bytes) {}

    bool IsGood() const { return m_good; }
    bool IsAtEnd() const { return m_rest.empty(); }
    void Require(bool holds) {
        if (!holds) m_good = false;
    }

    template <typename Number>
    Number Get() {
        std::uint64_t bits = 0;
        if (!Has(sizeof(Number))) return {};
        for (std::size_t i = 0; i < sizeof(Number); ++i) bits |= static_cast<std::uint64_t>(m_rest[i]) << (8 * i);
        m_rest = m_rest.subspan(sizeof(Number));
        return static_cast<Number>(bits);
    }
    bool Switch() {
        const auto byte = Get<std::uint8_t>();
        Require(byte <= 1);
        return byte == 1;
    }
    float Float() {
        const auto number = std::bit_cast<float>(Get<std::uint32_t>());
        Require(std::isfinite(number));
        return number;
    }
    double Double() {
        const auto number = std::bit_cast<double>(Get<std::uint64_t>());
        Require(std::isfinite(number));
        return number;
    }
    std::string Text() {
        const auto length = Get<std::uint32_t>();
        if (length > kLongestPluginText || !Has(length)) return Fail(), std::string();
        std::string text(m_rest.begin(), m_rest.begin() + static_cast<std::ptrdiff_t>(length));
        m_rest = m_rest.subspan(length);
        Require(IsCleanPluginText(text));
        return text;
    }
    // How many elements follow.
    std::size_t Count(std::size_t most) {
        const auto count = Get<std::uint32_t>();
        Require(count <= most);
        return m_good ? count : 0;
    }
    ParameterValue Value(std::uint8_t type);
    Picture PictureOf(PictureSize size);

private:
    bool Has(std::size_t bytes) {
        if (m_rest.size() < bytes) m_good = false;
        return m_good;
    }
    void Fail() { m_good = false; }

    std::span<const std::uint8_t> m_rest;
    bool m_good = true;
};

ParameterValue Unpacker::Value(std::uint8_t type) {
    switch (type) {
        case parameter_type::kSwitch:
            return Switch();
        case parameter_type::kNumber:
            return Double();
        case parameter_type::kColour: {
            const float red = Float(), green = Float(), blue = Float();
            return ParameterColour{red, green, blue};
        }
        case parameter_type::kPosition: {
            const double x = Double(), y = Double();
            return ParameterPosition{x, y};
        }
        case parameter_type::kText:
            return Text();
        default:
            Fail();
            return 0.0;
    }
}

Picture Unpacker::PictureOf(PictureSize size) {
    constexpr std::size_t kBytesOfPixel = 3;
    const std::size_t pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    if (!Has(pixels * kBytesOfPixel)) return {};
    Picture picture(size.width, size.height);
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t red = m_rest[3 * i], green = m_rest[3 * i + 1], blue = m_rest[3 * i + 2];
        picture.pixels[i] = 0xFF000000u | red << 16 | green << 8 | blue;
    }
    m_rest = m_rest.subspan(pixels * kBytesOfPixel);
    return picture;
}

std::vector<ProbedParameter> ReadParameters(Unpacker& from) {
    std::vector<ProbedParameter> parameters(from.Count(kMostParameters));
    for (ProbedParameter& parameter : parameters) {
        if (!from.IsGood()) break;
        parameter.name = from.Text();
        parameter.explanation = from.Text();
        parameter.type = from.Get<std::uint8_t>();
        parameter.defaultValue = from.Value(parameter.type);
    }
    return parameters;
}

std::vector<Picture> ReadPictures(Unpacker& from, std::size_t count) {
    std::vector<Picture> pictures;
    from.Require(from.Count(kTransitionFrames) == count);
    while (from.IsGood() && pictures.size() < count) pictures.push_back(from.PictureOf(kEffectPictureSize));
    return pictures;
}

std::vector<MovedParameter> ReadMoved(Unpacker& from, const std::vector<ProbedParameter>& parameters) {
    std::vector<MovedParameter> moved(from.Count(parameters.size()));
    for (MovedParameter& move : moved) {
        move.index = from.Get<std::uint16_t>();
        from.Require(move.index < parameters.size());
        if (!from.IsGood()) break;
        move.value = from.Value(parameters[move.index].type);
    }
    return moved;
}

// A transition goes by the end of a number parameter, or through a mix without one; a filter has no progress.
bool IsProgressSound(const ProbedEffect& effect) {
    const int parameter = effect.progressParameter;
    if (!effect.isTransition) return effect.progressMode == 0 && parameter == -1 && !effect.fadedInputs;
    if (effect.progressMode == 2) return parameter == -1;
    return effect.progressMode == 1 && parameter >= 0 && parameter < static_cast<int>(effect.parameters.size()) &&
           effect.parameters[static_cast<std::size_t>(parameter)].type == parameter_type::kNumber;
}

ProbedEffect ReadEffect(Unpacker& from) {
    ProbedEffect effect;
    effect.isTransition = from.Switch();
    effect.index = from.Get<std::uint16_t>();
    effect.name = from.Text();
    effect.author = from.Text();
    effect.explanation = from.Text();
    effect.majorVersion = from.Get<std::int32_t>();
    effect.minorVersion = from.Get<std::int32_t>();
    effect.pluginType = from.Get<std::uint8_t>();
    effect.colourModel = from.Get<std::uint8_t>();
    effect.apiVersion = from.Get<std::uint32_t>();
    effect.parameters = ReadParameters(from);
    effect.pictures = ReadPictures(from, effect.isTransition ? kTransitionFrames : 1);
    effect.dependsOnTime = from.Switch();
    effect.noVisibleEffect = from.Switch();
    effect.moved = ReadMoved(from, effect.parameters);
    effect.progressMode = from.Get<std::uint8_t>();
    effect.progressParameter = from.Get<std::int16_t>();
    effect.start = from.Float();
    effect.end = from.Float();
    effect.fadedInputs = from.Switch();
    from.Require(effect.index < kMostEffects && !effect.name.empty());
    from.Require(effect.pluginType == (effect.isTransition ? kMixerOfTwo : kFilter));
    from.Require(effect.colourModel <= kLastColourModel && !(effect.isTransition && effect.noVisibleEffect));
    if (from.IsGood()) from.Require(IsProgressSound(effect));
    return effect;
}

std::vector<ProbedEffect> ReadEffects(Unpacker& from) {
    std::vector<ProbedEffect> effects;
    const std::size_t count = from.Count(kMostEffects);
    while (from.IsGood() && effects.size() < count) {
        ProbedEffect effect = ReadEffect(from);
        from.Require(effects.empty() || effects.back().index < effect.index);
        effects.push_back(std::move(effect));
    }
    return effects;
}

}  // namespace

std::optional<ProbeReport> UnpackReport(std::span<const std::uint8_t> bytes) {
    using Outcome = ProbeReport::Outcome;
    if (bytes.size() > kLargestReport) return std::nullopt;
    Unpacker from(bytes);
    ProbeReport report;
    from.Require(from.Get<std::uint32_t>() == kReportMark);
    const auto outcome = from.Get<std::uint8_t>();
    from.Require(outcome <= static_cast<std::uint8_t>(Outcome::Failed));
    report.outcome = static_cast<Outcome>(outcome);
    report.reason = from.Text();
    if (from.IsGood()) report.effects = ReadEffects(from);
    from.Require(from.Get<std::uint32_t>() == kReportMark);
    from.Require(from.IsAtEnd());
    from.Require(report.effects.empty() != (report.outcome == Outcome::Effects));
    from.Require(report.outcome == Outcome::Effects || !report.reason.empty());
    if (!from.IsGood()) return std::nullopt;
    return report;
}

}  // namespace qfc::host
