#include "tests/qfc/ProbeTest.h"

#include <fstream>

namespace {

using namespace qfc::host;
using namespace qfc::test;

class EffectsProbeDescription : public ProbeTest {};

TEST_F(EffectsProbeDescription, AFilterIsDescribedByItsOwnWords) {
    const ProbedEffect effect = EffectOf("tint-Warm");
    EXPECT_FALSE(effect.isTransition);
    EXPECT_EQ(effect.index, 0);
    EXPECT_EQ(effect.name, "tint-Warm");
    EXPECT_EQ(effect.author, "The tests");
    EXPECT_EQ(effect.explanation, "An effect for tests");
    EXPECT_EQ(effect.majorVersion, 3);
    EXPECT_EQ(effect.minorVersion, 14);
    EXPECT_EQ(effect.pluginType, 0);
    EXPECT_EQ(effect.colourModel, 1);
    EXPECT_EQ(effect.apiVersion, 1u);
}

TEST_F(EffectsProbeDescription, ParametersOfAllTypesComeWithTheirDefaults) {
    const std::vector<ProbedParameter> parameters = EffectOf("tint").parameters;
    ASSERT_EQ(parameters.size(), 5u);
    EXPECT_EQ(parameters[0].name, "Amount");
    EXPECT_EQ(parameters[0].explanation, "How much");
    EXPECT_EQ(parameters[0].type, parameter_type::kNumber);
    EXPECT_EQ(parameters[0].defaultValue, ParameterValue(0.75));
    EXPECT_EQ(parameters[1].type, parameter_type::kSwitch);
    EXPECT_EQ(parameters[1].defaultValue, ParameterValue(true));
    EXPECT_EQ(parameters[2].type, parameter_type::kColour);
    EXPECT_EQ(parameters[2].defaultValue, ParameterValue(ParameterColour{0.25f, 0.5f, 1}));
    EXPECT_EQ(parameters[3].type, parameter_type::kPosition);
    EXPECT_EQ(parameters[3].defaultValue, ParameterValue(ParameterPosition{0.5, 1}));
    EXPECT_EQ(parameters[4].type, parameter_type::kText);
    EXPECT_EQ(parameters[4].defaultValue, ParameterValue(std::string("hello")));
    EXPECT_EQ(parameters[4].explanation, "");
}

TEST_F(EffectsProbeDescription, AFileWithSeveralEffectsGivesEachUnderItsIndex_AndSaysWhatIsLeftOut) {
    const ProbeReport report = Probe("several");
    ASSERT_EQ(report.effects.size(), 3u);
    EXPECT_EQ(report.effects[0].index, 0);
    EXPECT_EQ(report.effects[0].name, "several");
    EXPECT_EQ(report.effects[1].index, 2);
    EXPECT_EQ(report.effects[1].name, "several 2");
    EXPECT_EQ(report.effects[1].parameters.size(), 1u);
    EXPECT_EQ(report.effects[2].index, 3);
    EXPECT_TRUE(report.effects[2].isTransition);
    EXPECT_EQ(report.reason, "effect 1: a generator");
}

TEST_F(EffectsProbeDescription, WhatIsNoFilterAndNoTransitionIsSkipped_AndSaysWhatItIs) {
    const std::pair<const char*, const char*> kinds[] = {
        {"generator", "a generator"},
        {"three", "a mixer of three pictures"},
        {"strange", "of the unknown type 9"},
        {"model", "of the unknown colour model 7"},
        {"newer", "made for the unknown version 2 of the plugin interface"}};
    for (const auto& [kind, reason] : kinds) {
        const ProbeReport report = Probe(kind);
        EXPECT_EQ(report.outcome, Outcome::Skipped) << kind;
        EXPECT_EQ(report.reason, reason);
        EXPECT_TRUE(report.effects.empty());
    }
}

TEST_F(EffectsProbeDescription, AnEffectWithoutNameIsCalledLikeItsFile) {
    const ProbedEffect effect = EffectOf("nameless-Plugin");
    EXPECT_EQ(effect.name, "nameless-Plugin");
    EXPECT_EQ(effect.author, "");
    EXPECT_EQ(effect.explanation, "");
}

TEST_F(EffectsProbeDescription, AParameterWithoutNameHasAnEmptyOne) {
    const ProbedEffect effect = EffectOf("unnamed");
    ASSERT_EQ(effect.parameters.size(), 1u);
    EXPECT_EQ(effect.parameters[0].name, "");
}

TEST_F(EffectsProbeDescription, TextsComeAsCleanUtf8) {
    EXPECT_EQ(EffectOf("garbled").name,
              "a?"
              "?(  b");
}

TEST_F(EffectsProbeDescription, EndlessTextsAreCut) { EXPECT_EQ(EffectOf("long").name, std::string(4096, 'x')); }

TEST_F(EffectsProbeDescription, ADefaultThatIsNoNumberIsZero) {
    const ProbedEffect effect = EffectOf("nan");
    ASSERT_EQ(effect.parameters.size(), 1u);
    EXPECT_EQ(effect.parameters[0].defaultValue, ParameterValue(0.0));
}

TEST_F(EffectsProbeDescription, NumbersOfAnySizePass) {
    EXPECT_EQ(EffectOf("numbers").majorVersion, std::numeric_limits<std::int32_t>::min());
}

TEST_F(EffectsProbeDescription, TheStampIsThatOfTheFile) {
    const std::string path = m_plugins.Make("generator");
    const ProbeReport report = ProbeFile(path, Settings());
    EXPECT_EQ(report.stamp.size, std::filesystem::file_size(path));
    EXPECT_EQ(report.stamp, StampOf(path));
    EXPECT_NE(report.stamp.time, 0);
}

TEST_F(EffectsProbeDescription, AnotherTimeOrSizeIsAnotherStamp_AMissingFileHasNone) {
    const std::string path = m_plugins.Make("tint");
    const FileStamp before = StampOf(path);
    std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) + std::chrono::nanoseconds(1000000));
    EXPECT_EQ(StampOf(path).size, before.size);
    EXPECT_EQ(StampOf(path).time - before.time, 1000000);
    std::ofstream(path, std::ios::app) << "x";
    EXPECT_EQ(StampOf(path).size, before.size + 1);
    std::filesystem::remove(path);
    EXPECT_EQ(StampOf(path), FileStamp{});
}

TEST_F(EffectsProbeDescription, APathMayBeRelative) {
    m_plugins.Make("generator");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(std::string(m_plugins.Folder() / ""));
    EXPECT_EQ(ProbeFile("generator.so", Settings()).outcome, Outcome::Skipped);
    std::filesystem::current_path(before);
}

TEST(EffectsDefaultBytes, EachTypeHasItsFourBytes) {
    using Bytes = std::array<std::uint8_t, 4>;
    EXPECT_EQ(DefaultBytes(true), (Bytes{0, 0, 0x80, 0x3F}));
    EXPECT_EQ(DefaultBytes(false), Bytes{});
    EXPECT_EQ(DefaultBytes(0.5), (Bytes{0, 0, 0, 0x3F}));
    EXPECT_EQ(DefaultBytes(1e300), Bytes{});
    EXPECT_EQ(DefaultBytes(ParameterColour{0, 0.5f, 1}), (Bytes{0, 128, 255, 0}));
    EXPECT_EQ(DefaultBytes(ParameterColour{-3, 7, 1}), (Bytes{0, 255, 255, 0}));
    EXPECT_EQ(DefaultBytes(ParameterPosition{1, 0}), (Bytes{0xFF, 0xFF, 0, 0}));
    EXPECT_EQ(DefaultBytes(ParameterPosition{0, 0.5}), (Bytes{0, 0, 0, 0x80}));
    EXPECT_EQ(DefaultBytes(std::string("text")), Bytes{});
}

}  // namespace
