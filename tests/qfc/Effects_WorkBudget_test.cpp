// How the time for a file is shared among its effects.
#include "hosts/qfc/effects/PluginStudy.h"
#include "hosts/qfc/effects/WorkBudget.h"
#include "tests/qfc/ProbeTest.h"

#include <utility>

namespace {

using namespace qfc::host;
using namespace qfc::test;
using Seconds = std::chrono::duration<double>;

// Clocks that the test moves.
class EffectsWorkBudget : public ProbeTest {
protected:
    WorkBudget Budget() {
        return WorkBudget(std::chrono::seconds(10), [this] { return m_clocks; });
    }
    // A report of the plugin that is studied while each look at the clocks takes so much of ten seconds.
    ProbeReport StudiedWith(const std::string& plugin, WorkBudget::Clocks step) const {
        WorkBudget::Clocks clocks{};
        const WorkBudget budget(std::chrono::seconds(10), [&] {
            clocks.processor += step.processor;
            clocks.real += step.real;
            return clocks;
        });
        return StudyPlugin(m_plugins.Make(plugin), Photographs(), budget);
    }

    WorkBudget::Clocks m_clocks{Seconds(0), Seconds(100)};
};

TEST_F(EffectsWorkBudget, GoesByProcessorTime) {
    const WorkBudget budget = Budget();
    EXPECT_EQ(budget.Spent(), 0);
    m_clocks = {Seconds(4), Seconds(104)};
    EXPECT_DOUBLE_EQ(budget.Spent(), 0.4);
    EXPECT_TRUE(budget.IsSpent(0.4));
    EXPECT_FALSE(budget.IsSpent(0.5));
    m_clocks.processor = Seconds(12);
    EXPECT_EQ(budget.Spent(), 1);
}

TEST_F(EffectsWorkBudget, IsUsedUpShortlyBeforeTheRealTimeEnds) {
    const WorkBudget budget = Budget();
    m_clocks = {Seconds(1), Seconds(108)};
    EXPECT_DOUBLE_EQ(budget.Spent(), 0.1);
    m_clocks.real = Seconds(109);
    EXPECT_EQ(budget.Spent(), 1);
}

TEST_F(EffectsWorkBudget, APartEndsBeforeTheWhole_AndTheNextOneBeginsAnew) {
    const WorkBudget whole = Budget();
    m_clocks.processor = Seconds(2);
    const WorkBudget first = whole.Part(4);
    m_clocks.processor = Seconds(3);
    EXPECT_DOUBLE_EQ(first.Spent(), 0.5);
    m_clocks.processor = Seconds(4);
    EXPECT_EQ(first.Spent(), 1);
    EXPECT_EQ(whole.Part(3).Spent(), 0);
}

TEST_F(EffectsWorkBudget, WhatAPartLeavesTheOthersGet) {
    const WorkBudget whole = Budget();
    m_clocks.processor = Seconds(1);
    const WorkBudget last = whole.Part(1);
    m_clocks.processor = Seconds(5.5);
    EXPECT_DOUBLE_EQ(last.Spent(), 0.5);
}

TEST_F(EffectsWorkBudget, OfAStarvedProcessThePartsShareTheRealTime) {
    const WorkBudget whole = Budget();
    const WorkBudget first = whole.Part(2);
    m_clocks.real = Seconds(104);
    EXPECT_EQ(first.Spent(), 0);
    m_clocks.real = Seconds(104.5);
    EXPECT_EQ(first.Spent(), 1);
    EXPECT_EQ(whole.Part(1).Spent(), 0);
}

TEST_F(EffectsWorkBudget, OfNothingLeftAPartIsUsedUp) {
    const WorkBudget whole = Budget();
    m_clocks.processor = Seconds(11);
    EXPECT_EQ(whole.Part(3).Spent(), 1);
    m_clocks = {Seconds(1), Seconds(111)};
    EXPECT_EQ(whole.Part(0).Spent(), 1);
}

// The plugin "late" holds three filters, which can use up any time, and behind them a mixer with a progress.
TEST_F(EffectsWorkBudget, ATransitionBehindFiltersThatTakeAllTimeStillFindsItsParameter) {
    // The process keeps what it has loaded, so each has a file of its own.
    const std::pair<const char*, WorkBudget::Clocks> cases[] = {{"late-Work", {Seconds(0.1), Seconds(0)}},
                                                                {"late-Wait", {Seconds(0), Seconds(0.1)}}};
    for (const auto& [plugin, step] : cases) {
        const ProbeReport report = StudiedWith(plugin, step);
        ASSERT_EQ(report.effects.size(), 4U) << report.reason;
        EXPECT_EQ(report.effects.back().progressMode, 1) << plugin;
        EXPECT_EQ(report.effects.back().progressParameter, 1) << plugin;
    }
}

}  // namespace
