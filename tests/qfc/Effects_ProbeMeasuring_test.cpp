#include "tests/qfc/ProbeTest.h"

#include <set>

namespace {

using namespace qfc::host;
using namespace qfc::test;

class EffectsProbeMeasuring : public ProbeTest {
protected:
    static double Distance(const Picture& left, const Picture& right) { return ChangeBetween(left, right).mean; }
    // How red and how blue or green a picture is.
    static std::pair<double, double> RedAndOthers(const Picture& picture) {
        double red = 0, others = 0;
        for (const std::uint32_t pixel : picture.pixels) {
            red += pixel >> 16 & 0xFF;
            others += (pixel >> 8 & 0xFF) + (pixel & 0xFF);
        }
        return {red / static_cast<double>(picture.pixels.size()), others / static_cast<double>(picture.pixels.size())};
    }
    // A film as transitions have it.
    static void ExpectFilm(const ProbedEffect& effect) {
        ASSERT_EQ(effect.pictures.size(), kTransitionFrames) << effect.name;
        const SamplePhotographs photographs = Photographs();
        EXPECT_LE(Distance(effect.pictures.front(), Shown(photographs.first)), 3) << effect.name;
        EXPECT_LE(Distance(effect.pictures.back(), Shown(photographs.second)), 3) << effect.name;
        for (std::size_t k = 1; k < kTransitionFrames; ++k)
            EXPECT_GE(Distance(effect.pictures[k - 1], effect.pictures[k]), 0.5) << effect.name << ", frame " << k;
    }
};

TEST_F(EffectsProbeMeasuring, AFilterShowsOnePictureWithTheEffect) {
    const ProbedEffect effect = EffectOf("tint");
    ASSERT_EQ(effect.pictures.size(), 1u);
    EXPECT_EQ(effect.pictures[0].width, kEffectPictureSize.width);
    EXPECT_EQ(effect.pictures[0].height, kEffectPictureSize.height);
    EXPECT_FALSE(effect.noVisibleEffect);
    EXPECT_FALSE(effect.dependsOnTime);
    EXPECT_TRUE(effect.moved.empty());
    // Inverted: bright where the photograph is dark.
    Picture inverted = effect.pictures[0];
    for (std::uint32_t& pixel : inverted.pixels) pixel ^= 0x00FFFFFFu;
    EXPECT_GT(Distance(effect.pictures[0], Shown(Photographs().first)), 40);
    EXPECT_LT(Distance(inverted, Shown(Photographs().first)), 1);
}

TEST_F(EffectsProbeMeasuring, RedStaysRedInEveryColourModel) {
    const ProbedEffect rgba = EffectOf("rgba"), bgra = EffectOf("bgra");
    EXPECT_EQ(rgba.colourModel, 1);
    EXPECT_EQ(bgra.colourModel, 0);
    for (const ProbedEffect* const effect : {&rgba, &bgra}) {
        const auto [red, others] = RedAndOthers(effect->pictures[0]);
        EXPECT_GT(red, 50) << effect->name;
        EXPECT_EQ(others, 0) << effect->name;
    }
    EXPECT_EQ(rgba.pictures[0].pixels, bgra.pictures[0].pixels);
}

TEST_F(EffectsProbeMeasuring, PackedPixelsComeBackInTheirColours) {
    const ProbedEffect effect = EffectOf("packed");
    EXPECT_EQ(effect.colourModel, 2);
    Picture mirrored = effect.pictures[0];
    for (int y = 0; y < mirrored.height; ++y)
        for (int x = 0; x < mirrored.width; ++x) mirrored.At(x, y) = effect.pictures[0].At(mirrored.width - 1 - x, y);
    EXPECT_LT(Distance(mirrored, Shown(Photographs().first)), 1);
    EXPECT_GT(Distance(effect.pictures[0], Shown(Photographs().first)), 30);
}

TEST_F(EffectsProbeMeasuring, WhatShowsNothingAtItsDefaultsIsMoved_AndSaysHow) {
    const ProbedEffect effect = EffectOf("quiet");
    EXPECT_TRUE(effect.noVisibleEffect);
    ASSERT_EQ(effect.moved.size(), 1u);
    EXPECT_EQ(effect.moved[0].index, 0);
    EXPECT_EQ(effect.moved[0].value, ParameterValue(1.0));
    EXPECT_GT(Distance(effect.pictures[0], Shown(Photographs().first)), 40);
}

TEST_F(EffectsProbeMeasuring, ParametersAreMovedTogetherWhereOneDoesNotDo) {
    const ProbedEffect effect = EffectOf("hidden");
    EXPECT_TRUE(effect.noVisibleEffect);
    EXPECT_EQ(effect.moved.size(), 2u);
    EXPECT_GT(Distance(effect.pictures[0], Shown(Photographs().first)), 40);
}

TEST_F(EffectsProbeMeasuring, WhatNeverShowsAnythingSaysSo_AndShowsThePhotograph) {
    const ProbedEffect effect = EffectOf("plain");
    EXPECT_TRUE(effect.noVisibleEffect);
    EXPECT_TRUE(effect.moved.empty());
    EXPECT_FALSE(effect.dependsOnTime);
    ASSERT_EQ(effect.pictures.size(), 1u);
    EXPECT_LT(Distance(effect.pictures[0], Shown(Photographs().first)), 1);
}

TEST_F(EffectsProbeMeasuring, WhatIsOneColourAtItsDefaultsIsMovedUntilThereIsAPicture) {
    const ProbedEffect effect = EffectOf("dark");
    EXPECT_FALSE(effect.noVisibleEffect);
    ASSERT_EQ(effect.moved.size(), 1u);
    EXPECT_FALSE(IsNearlyOneColour(effect.pictures[0]));
}

TEST_F(EffectsProbeMeasuring, WhatChangesAStillPictureDependsOnTime) { EXPECT_TRUE(EffectOf("clock").dependsOnTime); }

TEST_F(EffectsProbeMeasuring, AnEffectThatNeedsFramesToBeginIsSeen) {
    const ProbedEffect effect = EffectOf("slowly");
    EXPECT_FALSE(effect.noVisibleEffect);
    EXPECT_TRUE(effect.moved.empty());
    EXPECT_TRUE(effect.dependsOnTime);
}

TEST_F(EffectsProbeMeasuring, WhatIsTransparentShowsChequers) {
    const Picture picture = EffectOf("cut").pictures[0];
    std::set<std::uint32_t> left;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width / 2; ++x) left.insert(picture.At(x, y));
    EXPECT_EQ(left, (std::set<std::uint32_t>{0xFFC8C8C8u, 0xFF989898u}));
}

TEST_F(EffectsProbeMeasuring, TheParameterWhoseEndsAreThePicturesIsTheProgress) {
    const ProbedEffect effect = EffectOf("fade");
    EXPECT_TRUE(effect.isTransition);
    EXPECT_EQ(effect.pluginType, 2);
    EXPECT_EQ(effect.progressMode, 1);
    EXPECT_EQ(effect.progressParameter, 1);
    EXPECT_EQ(effect.start, 0);
    EXPECT_EQ(effect.end, 1);
    ExpectFilm(effect);
    // Frame k is at k/9.
    const SamplePhotographs photographs = Photographs();
    for (std::size_t k = 0; k < kTransitionFrames; ++k) {
        const Picture blended =
            Blended(Shown(photographs.first), Shown(photographs.second), static_cast<double>(k) / 9);
        EXPECT_LT(Distance(effect.pictures[k], blended), 1.5) << k;
    }
}

TEST_F(EffectsProbeMeasuring, ProgressMayRunFromOneToZero) {
    const ProbedEffect effect = EffectOf("fadeback");
    EXPECT_EQ(effect.progressMode, 1);
    EXPECT_EQ(effect.progressParameter, 1);
    EXPECT_EQ(effect.start, 1);
    EXPECT_EQ(effect.end, 0);
    ExpectFilm(effect);
}

TEST_F(EffectsProbeMeasuring, AMixerWithoutSuchAParameterGoesThroughTheMix) {
    const ProbedEffect effect = EffectOf("multiply");
    EXPECT_EQ(effect.progressMode, 2);
    EXPECT_EQ(effect.progressParameter, -1);
    EXPECT_FALSE(effect.dependsOnTime);
    EXPECT_FALSE(effect.fadedInputs);
    ExpectFilm(effect);
    // Around the middle it is darker than both pictures.
    const auto brightness = [](const Picture& picture) {
        double sum = 0;
        for (const std::uint32_t pixel : picture.pixels) sum += (pixel >> 8) & 0xFF;
        return sum;
    };
    EXPECT_LT(brightness(effect.pictures[4]), brightness(effect.pictures[0]));
    EXPECT_LT(brightness(effect.pictures[5]), brightness(effect.pictures[9]));
}

TEST_F(EffectsProbeMeasuring, AParameterThatJumpsBetweenThePicturesIsNoProgress) {
    const ProbedEffect effect = EffectOf("jump");
    EXPECT_EQ(effect.progressMode, 2);
    ExpectFilm(effect);
}

TEST_F(EffectsProbeMeasuring, AMixThatIsOnePictureIsLookedForWithTransparentOnes) {
    const ProbedEffect effect = EffectOf("over");
    EXPECT_EQ(effect.progressMode, 2);
    EXPECT_TRUE(effect.fadedInputs);
    EXPECT_TRUE(effect.moved.empty());
    ExpectFilm(effect);
}

TEST_F(EffectsProbeMeasuring, AMixThatIsOnePictureIsLookedForWithOtherParameters) {
    const ProbedEffect effect = EffectOf("moved");
    EXPECT_EQ(effect.progressMode, 2);
    ASSERT_EQ(effect.moved.size(), 1u);
    EXPECT_EQ(effect.moved[0].value, ParameterValue(0.5));
    ExpectFilm(effect);
}

TEST_F(EffectsProbeMeasuring, AMixerThatShowsButOnePictureStillHasAFilm) {
    const ProbedEffect effect = EffectOf("first");
    EXPECT_EQ(effect.progressMode, 2);
    EXPECT_TRUE(effect.moved.empty());
    ExpectFilm(effect);
}

}  // namespace
