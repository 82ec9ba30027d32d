#include "hosts/qfc/effects/PluginTexts.h"
#include "hosts/qfc/effects/ReportBytes.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

using namespace qfc::host;
using Outcome = ProbeReport::Outcome;

Picture Pattern(std::uint32_t seed) {
    Picture picture(kEffectPictureSize.width, kEffectPictureSize.height);
    std::uint32_t next = seed;
    for (std::uint32_t& pixel : picture.pixels) pixel = 0xFF000000u | ((next = next * 1664525 + 1013904223) >> 8);
    return picture;
}

ProbedEffect Filter() {
    ProbedEffect effect;
    effect.index = 3;
    effect.name = "Färber";
    effect.author = "Somebody";
    effect.explanation = "Makes it warm";
    effect.majorVersion = -1;
    effect.minorVersion = 2;
    effect.colourModel = 2;
    effect.apiVersion = 1;
    effect.parameters = {{"On", "", parameter_type::kSwitch, true},
                         {"Amount", "How much", parameter_type::kNumber, 0.25},
                         {"Colour", "", parameter_type::kColour, ParameterColour{0, 0.5f, 1}},
                         {"Place", "", parameter_type::kPosition, ParameterPosition{0.25, 0.75}},
                         {"Text", "", parameter_type::kText, std::string("hello")}};
    effect.pictures = {Pattern(1)};
    effect.dependsOnTime = true;
    effect.noVisibleEffect = true;
    effect.moved = {{1, 1.0}, {4, std::string("other")}};
    return effect;
}

ProbedEffect Transition() {
    ProbedEffect effect;
    effect.isTransition = true;
    effect.index = 7;
    effect.name = "Fade";
    effect.pluginType = 2;
    effect.parameters = {{"Progress", "", parameter_type::kNumber, 0.0}};
    for (std::uint32_t k = 0; k < kTransitionFrames; ++k) effect.pictures.push_back(Pattern(k));
    effect.progressMode = 1;
    effect.progressParameter = 0;
    effect.start = 1;
    effect.end = 0;
    return effect;
}

ProbeReport Report() {
    ProbeReport report;
    report.outcome = Outcome::Effects;
    report.reason = "effect 4: a generator";
    report.effects = {Filter(), Transition()};
    return report;
}

void ExpectEqual(const ProbedEffect& left, const ProbedEffect& right) {
    EXPECT_EQ(left.isTransition, right.isTransition);
    EXPECT_EQ(left.index, right.index);
    EXPECT_EQ(left.name, right.name);
    EXPECT_EQ(left.author, right.author);
    EXPECT_EQ(left.explanation, right.explanation);
    EXPECT_EQ(left.majorVersion, right.majorVersion);
    EXPECT_EQ(left.minorVersion, right.minorVersion);
    EXPECT_EQ(left.pluginType, right.pluginType);
    EXPECT_EQ(left.colourModel, right.colourModel);
    EXPECT_EQ(left.apiVersion, right.apiVersion);
    ASSERT_EQ(left.parameters.size(), right.parameters.size());
    for (std::size_t i = 0; i < left.parameters.size(); ++i) {
        EXPECT_EQ(left.parameters[i].name, right.parameters[i].name);
        EXPECT_EQ(left.parameters[i].explanation, right.parameters[i].explanation);
        EXPECT_EQ(left.parameters[i].type, right.parameters[i].type);
        EXPECT_EQ(left.parameters[i].defaultValue, right.parameters[i].defaultValue);
    }
    ASSERT_EQ(left.pictures.size(), right.pictures.size());
    for (std::size_t i = 0; i < left.pictures.size(); ++i) EXPECT_EQ(left.pictures[i].pixels, right.pictures[i].pixels);
    EXPECT_EQ(left.dependsOnTime, right.dependsOnTime);
    EXPECT_EQ(left.noVisibleEffect, right.noVisibleEffect);
    ASSERT_EQ(left.moved.size(), right.moved.size());
    for (std::size_t i = 0; i < left.moved.size(); ++i) {
        EXPECT_EQ(left.moved[i].index, right.moved[i].index);
        EXPECT_EQ(left.moved[i].value, right.moved[i].value);
    }
    EXPECT_EQ(left.progressMode, right.progressMode);
    EXPECT_EQ(left.progressParameter, right.progressParameter);
    EXPECT_EQ(left.start, right.start);
    EXPECT_EQ(left.end, right.end);
    EXPECT_EQ(left.fadedInputs, right.fadedInputs);
}

TEST(EffectsProbeReport, EverythingComesThrough) {
    const auto report = UnpackReport(PackReport(Report()));
    ASSERT_TRUE(report);
    EXPECT_EQ(report->outcome, Outcome::Effects);
    EXPECT_EQ(report->reason, "effect 4: a generator");
    ASSERT_EQ(report->effects.size(), 2u);
    ExpectEqual(report->effects[0], Filter());
    ExpectEqual(report->effects[1], Transition());
}

TEST(EffectsProbeReport, ReportsWithoutEffectsSayWhy) {
    ProbeReport report;
    report.outcome = Outcome::Skipped;
    report.reason = "a generator";
    ASSERT_TRUE(UnpackReport(PackReport(report)));
    EXPECT_EQ(UnpackReport(PackReport(report))->outcome, Outcome::Skipped);
    report.reason.clear();
    EXPECT_FALSE(UnpackReport(PackReport(report)));
}

TEST(EffectsProbeReport, AnyPartOfOneIsNone) {
    const std::vector<std::uint8_t> bytes = PackReport(Report());
    for (std::size_t size = 0; size < bytes.size(); size += size < 600 || size + 200 > bytes.size() ? 1 : 997)
        EXPECT_FALSE(UnpackReport({bytes.data(), size})) << size;
}

TEST(EffectsProbeReport, NothingMayFollow) {
    std::vector<std::uint8_t> bytes = PackReport(Report());
    bytes.push_back(0);
    EXPECT_FALSE(UnpackReport(bytes));
}

TEST(EffectsProbeReport, WhatCannotBeTrueIsRefused) {
    using Change = std::function<void(ProbeReport&)>;
    const std::pair<const char*, Change> changes[] = {
        {"no effects", [](ProbeReport& r) { r.effects.clear(); }},
        {"effects of a failure", [](ProbeReport& r) { r.outcome = Outcome::Failed; }},
        {"a stop from the other side",
         [](ProbeReport& r) {
             r.outcome = Outcome::Stopped;
             r.effects.clear();
         }},
        {"a reason of two lines", [](ProbeReport& r) { r.reason = "a\nb"; }},
        {"an index twice", [](ProbeReport& r) { r.effects[1].index = 3; }},
        {"an index too large", [](ProbeReport& r) { r.effects[1].index = 256; }},
        {"no name", [](ProbeReport& r) { r.effects[0].name.clear(); }},
        {"a name with a zero", [](ProbeReport& r) { r.effects[0].name = std::string("a\0b", 3); }},
        {"a name that is no UTF-8", [](ProbeReport& r) { r.effects[0].name = "\xC3"; }},
        {"a text too long", [](ProbeReport& r) { r.effects[0].author.assign(4097, 'a'); }},
        {"another plugin type", [](ProbeReport& r) { r.effects[0].pluginType = 2; }},
        {"a transition of a filter's type", [](ProbeReport& r) { r.effects[1].pluginType = 0; }},
        {"another colour model", [](ProbeReport& r) { r.effects[0].colourModel = 3; }},
        {"too many parameters", [](ProbeReport& r) { r.effects[0].parameters.resize(257); }},
        {"an unknown type of parameter", [](ProbeReport& r) { r.effects[0].parameters[1].type = 5; }},
        {"a value of another type", [](ProbeReport& r) { r.effects[0].parameters[1].defaultValue = true; }},
        {"a default that is no number", [](ProbeReport& r) { r.effects[0].parameters[1].defaultValue = std::nan(""); }},
        {"a colour that is no number",
         [](ProbeReport& r) {
             r.effects[0].parameters[2].defaultValue = ParameterColour{std::numeric_limits<float>::infinity(), 0, 0};
         }},
        {"no picture", [](ProbeReport& r) { r.effects[0].pictures.clear(); }},
        {"two pictures of a filter", [](ProbeReport& r) { r.effects[0].pictures.push_back(Pattern(2)); }},
        {"nine frames", [](ProbeReport& r) { r.effects[1].pictures.pop_back(); }},
        {"a picture of another size", [](ProbeReport& r) { r.effects[0].pictures[0] = Picture(8, 8); }},
        {"a moved parameter that is none", [](ProbeReport& r) { r.effects[0].moved[0].index = 5; }},
        {"more moves than parameters",
         [](ProbeReport& r) {
             r.effects[0].moved.assign(6, MovedParameter{1, 1.0});
         }},
        {"progress of a filter", [](ProbeReport& r) { r.effects[0].progressMode = 2; }},
        {"progress by time", [](ProbeReport& r) { r.effects[1].progressMode = 0; }},
        {"progress by no parameter", [](ProbeReport& r) { r.effects[1].progressParameter = 1; }},
        {"progress by another parameter's end", [](ProbeReport& r) { r.effects[1].progressParameter = -2; }},
        {"a mix with a parameter", [](ProbeReport& r) { r.effects[1].progressMode = 2; }},
        {"a start that is no number", [](ProbeReport& r) { r.effects[1].start = std::nanf(""); }},
        {"a transition without effect", [](ProbeReport& r) { r.effects[1].noVisibleEffect = true; }},
    };
    for (const auto& [what, change] : changes) {
        ProbeReport report = Report();
        change(report);
        EXPECT_FALSE(UnpackReport(PackReport(report))) << what;
    }
}

TEST(EffectsProbeReport, SpoiltBytesNeverDoHarm) {
    const std::vector<std::uint8_t> good = PackReport(Report());
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        std::vector<std::uint8_t> bytes = good;
        // The heads are where the lengths are; the pictures take anything.
        for (int n = 0; n < 3; ++n) bytes[random() % 420] = static_cast<std::uint8_t>(random());
        const auto report = UnpackReport(bytes);
        if (!report) continue;
        EXPECT_LE(report->effects.size(), kMostEffects);
        for (const ProbedEffect& effect : report->effects) EXPECT_TRUE(IsCleanPluginText(effect.name));
    }
}

TEST(EffectsProbeReport, MoreThanAReportCanHoldIsNotPacked) {
    ProbeReport report = Report();
    const ProbedEffect transition = report.effects[1];
    for (int i = 0; i < 60; ++i) report.effects.push_back(transition);
    EXPECT_TRUE(PackReport(report).empty());
}

}  // namespace
