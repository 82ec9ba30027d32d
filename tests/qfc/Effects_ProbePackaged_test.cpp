#include "tests/qfc/ProbeTest.h"

namespace {

using namespace qfc::host;
using namespace qfc::test;

// Plugins that nobody here made, where they are installed.
class EffectsProbePackaged : public ProbeTest {
protected:
    static ProbeReport ProbePackaged(const std::string& name) {
        const std::string path = "/usr/lib/frei0r-1/" + name + ".so";
        return ProbeFile(path, Settings());
    }
    void SetUp() override {
        if (!std::filesystem::exists("/usr/lib/frei0r-1")) GTEST_SKIP() << "frei0r-plugins is not installed";
    }
};

TEST_F(EffectsProbePackaged, AFilterThatShowsAtItsDefaults) {
    const ProbeReport report = ProbePackaged("invert0r");
    ASSERT_EQ(report.effects.size(), 1u) << report.reason;
    EXPECT_EQ(report.effects[0].name, "Invert0r");
    EXPECT_FALSE(report.effects[0].noVisibleEffect);
    EXPECT_TRUE(report.effects[0].moved.empty());
}

TEST_F(EffectsProbePackaged, AFilterThatShowsNothingAtItsDefaults) {
    const ProbeReport report = ProbePackaged("saturat0r");
    ASSERT_EQ(report.effects.size(), 1u) << report.reason;
    EXPECT_TRUE(report.effects[0].noVisibleEffect);
    EXPECT_EQ(report.effects[0].moved.size(), 1u);
}

TEST_F(EffectsProbePackaged, AFilterThatDrawsOnWhatIsThere) {
    const ProbeReport report = ProbePackaged("colorhalftone");
    ASSERT_EQ(report.effects.size(), 1u) << report.reason;
    EXPECT_FALSE(IsNearlyOneColour(report.effects[0].pictures[0]));
}

TEST_F(EffectsProbePackaged, AFilterThatReadsMemoryItNeverWrote) {
    EXPECT_EQ(ProbePackaged("3dflippo").outcome, Outcome::Effects);
}

TEST_F(EffectsProbePackaged, MixersWithAndWithoutProgress) {
    const ProbeReport fade = ProbePackaged("xfade0r"), multiply = ProbePackaged("multiply");
    ASSERT_EQ(fade.effects.size(), 1u) << fade.reason;
    EXPECT_EQ(fade.effects[0].progressMode, 1);
    ASSERT_EQ(multiply.effects.size(), 1u) << multiply.reason;
    EXPECT_EQ(multiply.effects[0].progressMode, 2);
}

TEST_F(EffectsProbePackaged, TheFilmsOfMixersGoFromTheOnePhotographToTheOther) {
    const SamplePhotographs photographs = Photographs();
    const Picture first = Shown(photographs.first), second = Shown(photographs.second);
    for (const char* name : {"xfade0r", "multiply", "alphaover"}) {
        const ProbeReport report = ProbePackaged(name);
        ASSERT_EQ(report.effects.size(), 1u) << name << ": " << report.reason;
        const std::vector<Picture>& film = report.effects[0].pictures;
        ASSERT_EQ(film.size(), kTransitionFrames) << name;
        EXPECT_LT(ChangeBetween(film.front(), first).mean, 4) << name;
        EXPECT_LT(ChangeBetween(film.back(), second).mean, 4) << name;
        for (std::size_t k = 1; k < film.size(); ++k) {
            EXPECT_GT(ChangeBetween(film[k - 1], film[k]).mean, 0.3) << name << ", frame " << k;
        }
    }
}

TEST_F(EffectsProbePackaged, GeneratorsAndTheMixerOfThreeAreSkipped) {
    EXPECT_EQ(ProbePackaged("plasma").outcome, Outcome::Skipped);
    EXPECT_EQ(ProbePackaged("RGB").outcome, Outcome::Skipped);
}

TEST_F(EffectsProbePackaged, AFilterThatDoesNotReturnFails) {
    if (kIsSanitized) GTEST_SKIP() << "whether it returns hangs on memory that it never wrote, which sanitizers fill";
    const ProbeReport report = ProbeFile("/usr/lib/frei0r-1/curves.so", Settings(std::chrono::seconds(2)));
    EXPECT_EQ(report.outcome, Outcome::Failed);
    EXPECT_EQ(report.reason, "it takes longer than 2 s");
}

}  // namespace
