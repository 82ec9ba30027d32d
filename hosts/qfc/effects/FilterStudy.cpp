#include "hosts/qfc/effects/FilterStudy.h"

#include "hosts/qfc/effects/PictureMath.h"
#include "hosts/qfc/effects/PluginInstance.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace qfc::host {

namespace {

constexpr int kFrames = 25;
// Parameters are looked for with fewer frames: enough for effects that need some of them to begin.
constexpr int kFramesOfATry = 8;
// Shares of the time, after which the rest is left for what comes behind.
constexpr double kUntilShown = 0.35;
constexpr double kUntilFound = 0.7;
constexpr double kUntilTimed = 0.9;
constexpr double kStrongEffect = 8;

// What a run over the moving picture showed.
struct Showing {
    Picture picture;
    Change change;
    bool saysSomething = false;  // neither of one colour nor transparent all over

    bool IsGood() const { return change.IsVisible() && saysSomething; }
    // Of what can be seen, what says something comes first.
    bool IsBetterThan(const Showing& other) const {
        if (change.IsVisible() != other.change.IsVisible()) return change.IsVisible();
        if (saysSomething != other.saysSomething) return saysSomething;
        return change.mean > other.change.mean;
    }
};

class FilterRun {
public:
    FilterRun(const PluginFile& plugin, const Picture& photograph, const WorkBudget& budget, const ProbedEffect& effect)
        : m_plugin(plugin), m_photograph(photograph), m_budget(budget), m_effect(effect) {}

    // The last frames of the second, ended early at that share of the time. Shown is the last of them, or where nothing
    // is to be seen in that, the one that changed most.
    Showing Show(const Moves& moves, int frames, double until) const {
        PluginInstance instance(m_plugin, m_effect.colourModel, kStudySize);
        Apply(instance, moves);
        Showing most, last;
        for (int k = kFrames - frames; k < kFrames; ++k) {
            const Picture moving = MovedTo(k);
            last = Judged(instance.Filtered(TimeOf(k), moving), moving);
            if (last.IsBetterThan(most) || most.picture.IsEmpty()) most = last;
            if (m_budget.IsSpent(until)) break;
        }
        return last.IsGood() || !most.change.IsVisible() ? last : most;
    }

    // Whether a picture that stands still comes out different at different times.
    bool DependsOnTime(const Moves& moves, double until) const {
        PluginInstance instance(m_plugin, m_effect.colourModel, kStudySize);
        Apply(instance, moves);
        const Picture still = MovedTo(kFrames - 1);
        const Picture first = Judged(instance.Filtered(TimeOf(0), still), still).picture;
        for (int k = 1; k < kFrames; ++k) {
            const Picture next = Judged(instance.Filtered(TimeOf(k), still), still).picture;
            const Change change = ChangeBetween(first, next);
            if (change.mean > 0.1 || change.share > 0) return true;
            if (m_budget.IsSpent(until)) break;
        }
        return false;
    }

private:
    static double TimeOf(int k) { return static_cast<double>(k) / kFrames; }

    // Along a figure of eight, whose last frame is the middle of the photograph.
    Picture MovedTo(int k) const {
        constexpr double kWide = 20, kHigh = 10;
        const double turn = 2 * std::numbers::pi * (k + 1) / kFrames;
        const int right = static_cast<int>(std::lround(kWide * std::sin(turn)));
        const int down = static_cast<int>(std::lround(kHigh * std::sin(2 * turn)));
        return Part(m_photograph, (m_photograph.width - kStudySize.width) / 2 + right,
                    (m_photograph.height - kStudySize.height) / 2 + down, kStudySize);
    }

    static void Apply(PluginInstance& instance, const Moves& moves) {
        for (const MovedParameter& move : moves) instance.SetParameter(move.index, move.value);
    }

    static Showing Judged(const Picture& filtered, const Picture& original) {
        constexpr double kLeastCoverage = 0.05;
        const Picture raw = OpaqueIfUnset(filtered, original);
        Showing showing;
        showing.picture = Flattened(raw, Backdrop::Chequers);
        showing.change = ChangeBetween(showing.picture, original);
        showing.saysSomething = Coverage(raw) >= kLeastCoverage && !IsNearlyOneColour(showing.picture);
        return showing;
    }

    const PluginFile& m_plugin;
    const Picture& m_photograph;
    const WorkBudget& m_budget;
    const ProbedEffect& m_effect;
};

// The first that shows much, else what shows most, which replaces what is shown. No moves when nothing shows more.
Moves FindMoves(const FilterRun& run, const ProbedEffect& effect, const WorkBudget& budget, Showing& shown) {
    Moves best;
    for (const Moves& moves : MovesToTry(effect.parameters)) {
        if (budget.IsSpent(kUntilFound)) break;
        Showing next = run.Show(moves, kFramesOfATry, kUntilFound);
        if (!next.change.IsVisible() || !next.IsBetterThan(shown)) continue;
        best = moves;
        shown = std::move(next);
        if (shown.IsGood() && shown.change.mean >= kStrongEffect) break;
    }
    return best;
}

}  // namespace

void StudyFilter(const PluginFile& plugin, const Picture& photograph, const WorkBudget& budget, ProbedEffect& effect) {
    const FilterRun run(plugin, photograph, budget, effect);
    Showing shown = run.Show({}, kFrames, kUntilShown);
    effect.noVisibleEffect = !shown.change.IsVisible();
    if (!shown.IsGood()) effect.moved = FindMoves(run, effect, budget, shown);
    effect.dependsOnTime = run.DependsOnTime(effect.moved, kUntilTimed);
    effect.pictures = {Halved(shown.picture)};
}

}  // namespace qfc::host
