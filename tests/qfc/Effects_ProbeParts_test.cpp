#include "hosts/qfc/effects/FrameBuffer.h"
#include "hosts/qfc/effects/ParameterMoves.h"
#include "hosts/qfc/effects/PictureMath.h"
#include "hosts/qfc/effects/PluginTexts.h"

#include <gtest/gtest.h>
#include <set>

namespace {

using namespace qfc::host;

TEST(EffectsPluginTexts, ValidTextsStayAsTheyAre) {
    for (const char* text : {"", "plain", "Färbung", "日本語", "a b", "\xF0\x9F\x8E\xA8"}) {
        EXPECT_EQ(CleanPluginText(text), text);
        EXPECT_TRUE(IsCleanPluginText(text)) << text;
    }
    EXPECT_EQ(CleanPluginText(nullptr), "");
}

TEST(EffectsPluginTexts, ControlsBecomeBlanks_AndBlanksAtTheEndsGo) {
    EXPECT_EQ(CleanPluginText("\ta\nb\x7F\xC2\x85z \r\n"), "a b  z");
    EXPECT_EQ(CleanPluginText("   "), "");
    for (const char* text : {" a", "a ", "a\nb", "\xC2\x80"}) EXPECT_FALSE(IsCleanPluginText(text)) << text;
    EXPECT_FALSE(IsCleanPluginText(std::string_view("a\0b", 3)));
}

TEST(EffectsPluginTexts, BytesThatFormNoCharacterBecomeQuestionMarks) {
    EXPECT_EQ(CleanPluginText("\xFFx"), "?x");
    EXPECT_EQ(CleanPluginText("x\xC3"), "x?");
    EXPECT_EQ(CleanPluginText("\xC0\x80"), "??");            // overlong
    EXPECT_EQ(CleanPluginText("\xE0\x80\x80"), "???");       // overlong
    EXPECT_EQ(CleanPluginText("\xED\xA0\x80"), "???");       // half of a pair
    EXPECT_EQ(CleanPluginText("\xF4\x90\x80\x80"), "????");  // beyond the last one
    EXPECT_EQ(CleanPluginText("\xF0\x80\x80\x80"), "????");  // overlong
}

TEST(EffectsPluginTexts, LongTextsAreCutBetweenCharacters) {
    const std::string odd = "a" + std::string(3000, '\xC3');
    EXPECT_EQ(CleanPluginText(odd.c_str()).size(), 3001u);
    std::string text = "a";
    for (int i = 0; i < 3000; ++i) text += "ä";
    const std::string cut = CleanPluginText(text.c_str());
    EXPECT_EQ(cut.size(), 4095u);
    EXPECT_TRUE(IsCleanPluginText(cut));
}

TEST(EffectsFrameBuffer, IsAlignedAndCanBeWrittenFromEndToEnd) {
    for (const std::size_t pixels : {64u, 4800u, 76800u}) {
        FrameBuffer buffer(pixels);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.Pixels()) % 16, 0u);
        for (std::size_t i = 0; i < pixels; ++i) buffer.Pixels()[i] = static_cast<std::uint32_t>(i);
        EXPECT_EQ(buffer.Pixels()[pixels - 1], pixels - 1);
    }
}

TEST(EffectsFrameBufferDeathTest, WhatLiesBehindTheEndMayNotBeTouched) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(
        {
            FrameBuffer buffer(4800);
            static_cast<volatile std::uint32_t*>(buffer.Pixels())[4800] = 1;
        },
        "");
}

ProbedParameter Of(std::uint8_t type, ParameterValue value) { return {"p", "", type, std::move(value)}; }

TEST(EffectsParameterMoves, EachParameterIsTriedForItself_FarthestFromItsDefaultFirst) {
    const auto tries = MovesToTry({Of(parameter_type::kNumber, 0.2), Of(parameter_type::kNumber, 1.0)});
    ASSERT_GE(tries.size(), 2u);
    ASSERT_EQ(tries[0].size(), 1u);
    EXPECT_EQ(tries[0][0].index, 0);
    EXPECT_EQ(tries[0][0].value, ParameterValue(1.0));
    ASSERT_EQ(tries[1].size(), 1u);
    EXPECT_EQ(tries[1][0].index, 1);
    EXPECT_EQ(tries[1][0].value, ParameterValue(0.0));
}

TEST(EffectsParameterMoves, ADefaultIsNoMove) {
    const std::vector<ProbedParameter> parameters = {
        Of(parameter_type::kSwitch, true), Of(parameter_type::kNumber, 0.5),
        Of(parameter_type::kColour, ParameterColour{1, 0, 0}), Of(parameter_type::kPosition, ParameterPosition{1, 1})};
    const auto tries = MovesToTry(parameters);
    EXPECT_FALSE(tries.empty());
    for (const Moves& moves : tries) {
        for (const MovedParameter& move : moves) {
            EXPECT_FALSE(move.value == parameters[move.index].defaultValue) << move.index;
        }
    }
}

TEST(EffectsParameterMoves, TextsAreNeverMoved) {
    EXPECT_TRUE(MovesToTry({Of(parameter_type::kText, std::string("x"))}).empty());
    EXPECT_TRUE(MovesToTry({}).empty());
}

TEST(EffectsParameterMoves, AfterSinglesComeAllTogetherAndPairs) {
    std::set<std::size_t> sizes;
    const auto tries = MovesToTry(std::vector<ProbedParameter>(3, Of(parameter_type::kNumber, 0.0)));
    for (const Moves& moves : tries) sizes.insert(moves.size());
    EXPECT_EQ(sizes, (std::set<std::size_t>{1, 2, 3}));
    EXPECT_EQ(tries.front().size(), 1u);
    EXPECT_EQ(tries.back().size(), 2u);
}

TEST(EffectsParameterMoves, ManyParametersGiveABoundedNumberOfPairs) {
    EXPECT_LT(MovesToTry(std::vector<ProbedParameter>(256, Of(parameter_type::kNumber, 0.0))).size(), 3000u);
}

TEST(EffectsPictureMath, TransparencyShowsTheBackdrop) {
    Picture picture(32, 32, 0x00FF0000u);
    EXPECT_EQ(Flattened(picture, Backdrop::Black).At(0, 0), 0xFF000000u);
    EXPECT_EQ(Flattened(picture, Backdrop::Chequers).At(0, 0), 0xFFC8C8C8u);
    EXPECT_EQ(Flattened(picture, Backdrop::Chequers).At(16, 0), 0xFF989898u);
    picture.At(0, 0) = 0x80FF0000u;
    EXPECT_EQ(Flattened(picture, Backdrop::Black).At(0, 0), 0xFF800000u);
    picture.At(0, 0) = 0xFF123456u;
    EXPECT_EQ(Flattened(picture, Backdrop::Chequers).At(0, 0), 0xFF123456u);
}

TEST(EffectsPictureMath, APaintedPictureWithoutTransparencyBytesIsOpaque_AnEmptiedOneIsNot) {
    Picture original(8, 8), painted(8, 8);
    for (int i = 0; i < 64; ++i) {
        original.pixels[static_cast<std::size_t>(i)] = 0xFF000000u | static_cast<std::uint32_t>(i * 3);
        painted.pixels[static_cast<std::size_t>(i)] = static_cast<std::uint32_t>(i * 3) << 16;
    }
    EXPECT_EQ(OpaqueIfUnset(painted, original).At(1, 0), 0xFF030000u);
    Picture emptied = original;
    for (std::uint32_t& pixel : emptied.pixels) pixel &= 0x00FFFFFFu;
    EXPECT_EQ(OpaqueIfUnset(emptied, original).pixels, emptied.pixels);
    EXPECT_EQ(OpaqueIfUnset(Picture(8, 8, 0x00FF0000u), original).At(0, 0), 0x00FF0000u);
}

TEST(EffectsPictureMath, ChangesAreMeasured) {
    const Picture black(16, 16);
    EXPECT_EQ(ChangeBetween(black, black).mean, 0);
    EXPECT_FALSE(ChangeBetween(black, black).IsVisible());
    EXPECT_EQ(ChangeBetween(black, Picture(16, 16, 0xFF030303u)).mean, 3);
    EXPECT_TRUE(ChangeBetween(black, Picture(16, 16, 0xFF030303u)).IsVisible());
    EXPECT_FALSE(ChangeBetween(black, Picture(16, 16, 0xFF010101u)).IsVisible());
    Picture dot = black;
    dot.At(3, 3) = 0xFFFF0000u;
    EXPECT_EQ(ChangeBetween(black, dot).share, 1.0 / 256);
    EXPECT_TRUE(ChangeBetween(black, dot).IsVisible());
}

TEST(EffectsPictureMath, BlendsRunFromTheOneToTheOther) {
    const Picture from(4, 4, 0xFF640000u), to(4, 4, 0xFF0000C8u);
    EXPECT_EQ(Blended(from, to, 0).pixels, from.pixels);
    EXPECT_EQ(Blended(from, to, 1).pixels, to.pixels);
    EXPECT_EQ(Blended(from, to, 0.5).At(0, 0), 0xFF320064u);
}

TEST(EffectsPictureMath, HalvingTakesTheMeanOfFour) {
    Picture picture(4, 2);
    picture.At(0, 0) = 0xFF040000u;
    picture.At(1, 1) = 0xFF040008u;
    const Picture half = Halved(picture);
    EXPECT_EQ(half.width, 2);
    EXPECT_EQ(half.height, 1);
    EXPECT_EQ(half.At(0, 0), 0xFF020002u);
    EXPECT_EQ(half.At(1, 0), 0xFF000000u);
}

TEST(EffectsPictureMath, AFadeEndsTransparent) {
    const Picture picture(8, 8, 0xFF102030u);
    EXPECT_EQ(Faded(picture, FadeTo::Right).At(0, 7), 0xFF102030u);
    EXPECT_EQ(Faded(picture, FadeTo::Right).At(7, 0), 0x00102030u);
    EXPECT_EQ(Faded(picture, FadeTo::Bottom).At(7, 0), 0xFF102030u);
    EXPECT_EQ(Faded(picture, FadeTo::Bottom).At(0, 7), 0x00102030u);
    EXPECT_EQ(Coverage(picture), 1);
    EXPECT_EQ(Coverage(Picture(8, 8, 0x00FFFFFFu)), 0);
}

}  // namespace
