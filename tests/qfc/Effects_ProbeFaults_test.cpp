// What goes wrong and is no plugin's fault: nothing is learned, and nothing must be concluded.
#include "tests/qfc/ProbeTest.h"

#include <csignal>
#include <cstdlib>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace qfc::host;
using namespace qfc::test;

class EffectsProbeFaults : public ProbeTest {
protected:
    ProbeReport ProbeWith(const std::filesystem::path& program) const {
        return ProbeFile(m_plugins.Make("tint"),
                         {.program = program, .limit = std::chrono::seconds(30), .stop = nullptr});
    }

    // The program in a folder of its own, with its photographs.
    std::filesystem::path CopyOfProgram() const {
        const std::filesystem::path from = std::filesystem::canonical(QFC_PROGRAM), to = m_programs / "qfc";
        std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
        std::filesystem::copy(PhotographFolder(from), PhotographFolder(to));
        return to;
    }

    // The outcome in a process that first gets a lower limit, which it cannot raise again.
    Outcome OutcomeUnder(__rlimit_resource resource, rlim_t most, const std::string& plugin) const {
        const std::string path = m_plugins.Make(plugin);
        const pid_t child = fork();
        if (child == 0) {
            const rlimit limit{most, most};
            if (setrlimit(resource, &limit) != 0) _exit(99);
            _exit(static_cast<int>(ProbeFile(path, Settings()).outcome));
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 99) << plugin;
        return static_cast<Outcome>(WEXITSTATUS(status));
    }

    TempFolder m_programs;
};

TEST_F(EffectsProbeFaults, AMissingProgramIsNoFaultOfThePlugin) {
    const ProbeReport report = ProbeWith("/nowhere/qfc");
    EXPECT_EQ(report.outcome, Outcome::Unknown);
    EXPECT_FALSE(report.reason.empty());
    EXPECT_NE(report.stamp, FileStamp());
}

TEST_F(EffectsProbeFaults, AProgramThatDoesNotBeginIsNoFaultOfThePlugin) {
    EXPECT_EQ(ProbeWith("/bin/true").outcome, Outcome::Unknown);
    EXPECT_EQ(ProbeWith("/bin/false").outcome, Outcome::Unknown);
}

TEST_F(EffectsProbeFaults, APhotographThatCannotBeReadIsNoFaultOfThePlugin) {
    const std::filesystem::path program = CopyOfProgram();
    ASSERT_EQ(ProbeWith(program).outcome, Outcome::Effects);
    std::ofstream(PhotographFolder(program) / "Arches.jpg", std::ios::trunc) << "spoilt";
    const ProbeReport report = ProbeWith(program);
    EXPECT_EQ(report.outcome, Outcome::Unknown);
    EXPECT_NE(report.reason.find("Arches.jpg"), std::string::npos) << report.reason;
    std::filesystem::remove_all(PhotographFolder(program));
    EXPECT_EQ(ProbeWith(program).outcome, Outcome::Unknown);
}

TEST_F(EffectsProbeFaults, AProgramThatIsReplacedWhileItRunsStillProbes) {
    const std::string program = CopyOfProgram(), plugin = m_plugins.Make("tint");
    // It begins when its file is gone already.
    const std::string command = "exec 9<'" + program + "'; rm '" + program + "'; exec /proc/self/fd/9 effects probe '" +
                                plugin + "' >/dev/null 2>&1";
    EXPECT_EQ(std::system(("bash -c \"" + command + "\"").c_str()), 0);
    EXPECT_FALSE(std::filesystem::exists(program));
}

TEST_F(EffectsProbeFaults, ACallerThatIgnoresTheEndsOfChildrenLearnsThem) {
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(Probe("tint").outcome, Outcome::Effects);
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(Probe("exits").reason, "it ends the process, with 7");
    std::signal(SIGCHLD, SIG_DFL);
}

TEST_F(EffectsProbeFaults, UnderALowerLimitOfTheCallerGoodPluginsAreGoodAndBadOnesUnknown) {
    EXPECT_EQ(OutcomeUnder(RLIMIT_FSIZE, 1 << 20, "tint"), Outcome::Effects);
    EXPECT_EQ(OutcomeUnder(RLIMIT_FSIZE, 1 << 20, "exits"), Outcome::Unknown);
    EXPECT_EQ(OutcomeUnder(RLIMIT_CPU, 5, "exits"), Outcome::Unknown);
    EXPECT_EQ(OutcomeUnder(RLIMIT_CORE, 0, "exits"), Outcome::Failed);
    if (kIsSanitized) return;
    EXPECT_EQ(OutcomeUnder(RLIMIT_AS, 900 << 20, "tint"), Outcome::Effects);
    EXPECT_EQ(OutcomeUnder(RLIMIT_AS, 900 << 20, "exits"), Outcome::Unknown);
}

TEST_F(EffectsProbeFaults, OfAFileThatCannotBeReadNothingIsLearned) {
    const std::string folder = m_plugins.Folder().MakeFolder("folder.so"), pipe = m_plugins.Folder() / "pipe.so";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {m_plugins.Folder() / "missing.so", folder, pipe, std::string("/dev/zero")}) {
        const ProbeReport report = ProbeFile(path, Settings());
        EXPECT_EQ(report.outcome, Outcome::Unknown) << path;
        EXPECT_EQ(report.reason.find('\n'), std::string::npos) << path;
    }
}

TEST_F(EffectsProbeFaults, AFileThatIsAnotherOneAfterwardsDidNotFail) {
    const std::string path = m_plugins.Make("vanish");
    EXPECT_EQ(ProbeFile(path, Settings()).outcome, Outcome::Unknown);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(Probe("touch").outcome, Outcome::Unknown);
}

TEST_F(EffectsProbeFaults, AnEndByASignalThatOthersSendIsNoFaultOfThePlugin) {
    EXPECT_EQ(Probe("terminate").outcome, Outcome::Unknown);
    EXPECT_EQ(Probe("killed").outcome, Outcome::Unknown);
}

}  // namespace
