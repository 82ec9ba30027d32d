#include "hosts/qfc/effects/TransitionStudy.h"

#include "hosts/qfc/effects/PictureMath.h"
#include "hosts/qfc/effects/PluginInstance.h"

#include <optional>
#include <utility>

namespace qfc::host {

namespace {

// The descriptor's numbers (docs/effects.md).
constexpr std::uint8_t kByParameter = 1;
constexpr std::uint8_t kThroughMix = 2;

constexpr double kSamePicture = 3;   // At most so far apart, two pictures are one.
constexpr double kOtherPicture = 6;  // At least so far apart, they are two.
constexpr double kNextFrame = 0.5;   // Frames of a film differ at least so much.
constexpr double kUntilMeasured = 0.5;
constexpr double kUntilMixed = 0.8;

double Distance(const Picture& left, const Picture& right) { return ChangeBetween(left, right).mean; }

double ProgressOf(std::size_t frame) { return static_cast<double>(frame) / static_cast<double>(kTransitionFrames - 1); }

bool DoNeighboursDiffer(const std::vector<Picture>& film) {
    for (std::size_t k = 1; k < film.size(); ++k)
        if (Distance(film[k - 1], film[k]) < kNextFrame) return false;
    return true;
}

class MixerStudy {
public:
    MixerStudy(const PluginFile& plugin, const Picture& first, const Picture& second, const WorkBudget& budget,
               ProbedEffect& effect)
        : m_plugin(plugin), m_first(first), m_second(second), m_budget(budget), m_effect(effect) {}

    bool TryByParameter() {
        for (std::size_t i = 0; i < m_effect.parameters.size() && !m_budget.IsSpent(kUntilMeasured); ++i) {
            if (m_effect.parameters[i].type != parameter_type::kNumber) continue;
            const auto index = static_cast<std::uint16_t>(i);
            const Picture low = Mix({{index, 0.0}}), high = Mix({{index, 1.0}});
            if (IsOne(low, m_first) && IsOne(high, m_second) && FilmByParameter(index, 0, 1)) return true;
            if (IsOne(high, m_first) && IsOne(low, m_second) && FilmByParameter(index, 1, 0)) return true;
        }
        return false;
    }

    void GoThroughMix() {
        m_effect.progressMode = kThroughMix;
        const std::optional<Picture> mix = TellingMix();
        std::vector<Picture> film = mix ? FilmThrough(*mix) : StraightFilm();
        if (!DoNeighboursDiffer(film)) film = StraightFilm();
        Take(film);
    }

    void MeasureTime() {
        PluginInstance instance(m_plugin, m_effect.colourModel, kStudySize);
        Apply(instance, m_effect.moved);
        const Picture begin = Seen(instance.Mixed(0, m_first, m_second));
        for (std::size_t k = 1; k < kTransitionFrames && !m_effect.dependsOnTime; ++k) {
            if (m_budget.IsSpent(kUntilTimed)) return;
            const Picture next = Seen(instance.Mixed(ProgressOf(k), m_first, m_second));
            m_effect.dependsOnTime = Distance(begin, next) > kLeastChange;
        }
    }

private:
    static constexpr double kUntilTimed = 0.9;
    static constexpr double kLeastChange = 0.1;

    static bool IsOne(const Picture& left, const Picture& right) { return Distance(left, right) <= kSamePicture; }

    static void Apply(PluginInstance& instance, const Moves& moves) {
        for (const MovedParameter& move : moves) instance.SetParameter(move.index, move.value);
    }

    Picture Seen(const Picture& mixed) const { return Flattened(OpaqueIfUnset(mixed, m_first), Backdrop::Black); }
    Picture Mix(const Moves& moves) const { return Mix(moves, m_first, m_second); }
    Picture Mix(const Moves& moves, const Picture& first, const Picture& second) const {
        PluginInstance instance(m_plugin, m_effect.colourModel, kStudySize);
        Apply(instance, moves);
        return Seen(instance.Mixed(0, first, second));
    }

    bool FilmByParameter(std::uint16_t index, float start, float end) {
        PluginInstance instance(m_plugin, m_effect.colourModel, kStudySize);
        std::vector<Picture> film;
        for (std::size_t k = 0; k < kTransitionFrames; ++k) {
            instance.SetParameter(index, start + (end - start) * ProgressOf(k));
            film.push_back(Seen(instance.Mixed(ProgressOf(k), m_first, m_second)));
        }
        // The instance remembers what was before, unlike those that were measured: it may show something else.
        if (!IsOne(film.front(), m_first) || !IsOne(film.back(), m_second) || !DoNeighboursDiffer(film)) return false;
        m_effect.progressMode = kByParameter;
        m_effect.progressParameter = static_cast<std::int16_t>(index);
        m_effect.start = start;
        m_effect.end = end;
        Take(film);
        return true;
    }

    static bool IsOther(const Picture& mix, const Picture& picture) {
        return Distance(mix, Flattened(picture, Backdrop::Black)) >= kOtherPicture;
    }
    // Whether it shows more than one of the pictures that went into it, or that the film is between.
    bool IsTelling(const Picture& mix, const Picture& first, const Picture& second) const {
        return IsOther(mix, m_first) && IsOther(mix, m_second) && IsOther(mix, first) && IsOther(mix, second) &&
               !IsNearlyOneColour(mix);
    }
    bool IsTelling(const Picture& mix) const { return IsTelling(mix, m_first, m_second); }

    // A mix that shows more than one of its two pictures; remembers what was needed for it.
    std::optional<Picture> TellingMix() {
        Picture mix = Mix({});
        if (IsTelling(mix)) return mix;
        const Picture first = Faded(m_first, FadeTo::Right), second = Faded(m_second, FadeTo::Bottom);
        mix = Mix({}, first, second);
        if (IsTelling(mix, first, second)) {
            m_effect.fadedInputs = true;
            return mix;
        }
        for (const Moves& moves : MovesToTry(m_effect.parameters)) {
            if (m_budget.IsSpent(kUntilMixed)) break;
            mix = Mix(moves);
            if (!IsTelling(mix)) continue;
            m_effect.moved = moves;
            return mix;
        }
        return std::nullopt;
    }

    std::vector<Picture> FilmThrough(const Picture& mix) const {
        std::vector<Picture> film;
        for (std::size_t k = 0; k < kTransitionFrames; ++k) {
            const double progress = ProgressOf(k);
            film.push_back(progress < 0.5 ? Blended(m_first, mix, 2 * progress)
                                          : Blended(mix, m_second, 2 * progress - 1));
        }
        return film;
    }

    std::vector<Picture> StraightFilm() const {
        std::vector<Picture> film;
        for (std::size_t k = 0; k < kTransitionFrames; ++k) film.push_back(Blended(m_first, m_second, ProgressOf(k)));
        return film;
    }

    void Take(const std::vector<Picture>& film) {
        m_effect.pictures.clear();
        for (const Picture& picture : film) m_effect.pictures.push_back(Halved(picture));
    }

    const PluginFile& m_plugin;
    const Picture& m_first;
    const Picture& m_second;
    const WorkBudget& m_budget;
    ProbedEffect& m_effect;
};

}  // namespace

void StudyTransition(const PluginFile& plugin, const Picture& first, const Picture& second, const WorkBudget& budget,
                     ProbedEffect& effect) {
    MixerStudy study(plugin, first, second, budget, effect);
    if (!study.TryByParameter()) study.GoThroughMix();
    study.MeasureTime();
}

}  // namespace qfc::host
