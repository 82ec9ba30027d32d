#include "hosts/qfc/effects/ProbeArguments.h"
#include "tests/qfc/ProbeTest.h"

#include <sys/wait.h>
#include <thread>

namespace {

using namespace qfc::host;
using namespace qfc::test;

class EffectsProbeProcess : public ProbeTest {};

TEST_F(EffectsProbeProcess, APluginThatAbortsFails) {
    const std::string why = Failure("abort");
    if (!kIsSanitized) {
        EXPECT_EQ(why, "it aborts");
    }
    Failure("atonce");
    Failure("whoami");
    EXPECT_FALSE(Probe("abort").isStarved);
}

TEST_F(EffectsProbeProcess, APluginThatCrashesFails) {
    const std::string why = Failure("segfault");
    if (!kIsSanitized) {
        EXPECT_EQ(why, "it uses memory that is not its own");
    }
    Failure("wild");
    Failure("dangling");
}

TEST_F(EffectsProbeProcess, APluginThatCrashesAtItsEndFails) { Failure("lastly"); }

TEST_F(EffectsProbeProcess, APluginThatLoopsIsEnded) {
    const ProbeReport report = ProbeFor("loop", std::chrono::seconds(1));
    EXPECT_EQ(report.outcome, Outcome::Failed);
    EXPECT_EQ(report.reason, "it takes longer than 1 s");
}

TEST_F(EffectsProbeProcess, APluginThatLoopsAndIgnoresEverySignalIsEnded) {
    EXPECT_EQ(ProbeFor("stubborn", std::chrono::milliseconds(500)).outcome, Outcome::Failed);
}

TEST_F(EffectsProbeProcess, APluginThatSleepsIsEnded) {
    const ProbeReport report = ProbeFor("sleep", std::chrono::milliseconds(1500));
    EXPECT_EQ(report.outcome, Outcome::Failed);
    EXPECT_EQ(report.reason, "it takes longer than 1.5 s");
    EXPECT_TRUE(report.isStarved);
}

TEST_F(EffectsProbeProcess, APluginThatEndsTheProcessFails) {
    EXPECT_EQ(Failure("exit"), "it ends the process, with 0");
    EXPECT_EQ(Failure("exits"), "it ends the process, with 7");
}

TEST_F(EffectsProbeProcess, WhatAPluginPrintsIsNobodysBusiness) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const ProbedEffect effect = EffectOf("print");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(effect.name, "print");
}

TEST_F(EffectsProbeProcess, APluginThatThrowsFailsWithItsWords) {
    EXPECT_EQ(Failure("throw"), "thrown by a plugin");
    EXPECT_EQ(Failure("odd"), "it throws an exception");
}

TEST_F(EffectsProbeProcess, AForgedReportIsNotBelieved) {
    EXPECT_EQ(Failure("forge"), "its report makes no sense");
    EXPECT_EQ(Failure("spoil"), "its report makes no sense");
}

TEST_F(EffectsProbeProcess, EndlessAnswersAreCutOff) {
    EXPECT_EQ(Failure("flood"), "it answers more than a report can hold");
}

TEST_F(EffectsProbeProcess, APluginThatClosesEverythingFails) { Failure("close"); }

TEST_F(EffectsProbeProcess, APluginThatWritesBeyondAFrameFails) {
    Failure("overrun");
    Failure("onemore");
}

TEST_F(EffectsProbeProcess, APluginThatEatsMemoryFails) {
    if (kIsSanitized) GTEST_SKIP() << "the sanitizers need all addresses";
    EXPECT_EQ(Failure("hungry"), "it aborts");
}

TEST_F(EffectsProbeProcess, AbsurdNumbersOfEffectsAndParametersFail) {
    EXPECT_EQ(Failure("many"), "it announces 2147483647 parameters");
    EXPECT_EQ(Failure("fewer"), "it announces -1 parameters");
    EXPECT_EQ(Failure("crowd"), "it announces 1000 effects");
    EXPECT_EQ(Failure("nobody"), "it announces 0 effects");
    EXPECT_EQ(Failure("untyped"), "parameter 0 has the unknown type 77");
    EXPECT_EQ(Failure("barren"), "it makes no instance");
}

TEST_F(EffectsProbeProcess, WhatIsNoPluginFails) {
    const std::string text = m_plugins.Folder().Write("text.so", "This is a text.\n");
    EXPECT_EQ(ProbeFile(text, Settings()).outcome, Outcome::Failed);
    const ProbeReport report = ProbeFile(m_plugins.Folder().Write("empty.so", ""), Settings());
    EXPECT_EQ(report.outcome, Outcome::Failed);
    EXPECT_EQ(report.reason.find('\n'), std::string::npos);
}

TEST_F(EffectsProbeProcess, ALibraryThatIsNoPluginFails) {
    const ProbeReport report = ProbeFile("/usr/lib/x86_64-linux-gnu/libz.so.1", Settings());
    EXPECT_EQ(report.outcome, Outcome::Failed);
}

TEST_F(EffectsProbeProcess, ARaisedFlagEndsIt) {
    const std::atomic<bool> stop{true};
    ProbeSettings settings = Settings();
    settings.stop = &stop;
    EXPECT_EQ(ProbeFile(m_plugins.Make("sleep"), settings).outcome, Outcome::Stopped);
}

TEST_F(EffectsProbeProcess, SeveralMayRunAtOnce) {
    const std::string good = m_plugins.Make("quiet"), bad = m_plugins.Make("abort");
    std::vector<ProbeReport> reports(4);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < reports.size(); ++i)
        threads.emplace_back([&, i] { reports[i] = ProbeFile(i % 2 == 0 ? good : bad, Settings()); });
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < reports.size(); ++i)
        EXPECT_EQ(reports[i].outcome, i % 2 == 0 ? Outcome::Effects : Outcome::Failed) << i;
}

// Called by hand, without somebody to answer to: nothing is printed and nothing run.
TEST_F(EffectsProbeProcess, WithoutADescriptorToAnswerOnItDoesNothing) {
    const std::vector<std::string> arguments = ProbeArguments(m_plugins.Make("abort"), std::chrono::seconds(5));
    std::string command = QFC_PROGRAM;
    for (const std::string& argument : arguments) command += " '" + argument + "'";
    EXPECT_EQ(WEXITSTATUS(std::system((command + " 3>&- 2>&1 >/dev/null").c_str())), 2);
    EXPECT_EQ(WEXITSTATUS(std::system((command + "x 3>/dev/null").c_str())), 2);
}

}  // namespace
