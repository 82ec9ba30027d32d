// What a plugin cannot get out of.
#include "hosts/qfc/effects/ProbeArguments.h"
#include "tests/qfc/ProbeTest.h"

#include <csignal>
#include <fcntl.h>
#include <linux/seccomp.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace qfc::host;
using namespace qfc::test;

class EffectsProbeLimits : public ProbeTest {
protected:
    // Whether processes can be forbidden to start others.
    static bool CanForbid() {
        const unsigned refusal = SECCOMP_RET_ERRNO;
        return syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &refusal) == 0;
    }

    // Kills the parent of a process that runs the plugin; true when everybody who holds its answer ends, too.
    bool EndsWithItsParent(const std::string& plugin) const {
        const std::string path = m_plugins.Make(plugin);
        int life[2];
        if (pipe2(life, O_CLOEXEC) != 0) return false;
        const pid_t parent = fork();
        if (parent == 0) {
            // The writing end goes into the other process as the descriptor to answer on, and nowhere else.
            const pid_t child = fork();
            if (child == 0) {
                dup2(life[1], 3);
                const auto arguments = ProbeArguments(path, std::chrono::seconds(600));
                execl(QFC_PROGRAM, "qfc", arguments[0].c_str(), arguments[1].c_str(), arguments[2].c_str(),
                      arguments[3].c_str(), arguments[4].c_str(), nullptr);
                _exit(127);
            }
            for (;;) pause();
        }
        close(life[1]);
        // It has its limits before it loads the plugin.
        while (!IsMappedByAnybody(path)) usleep(10000);
        kill(parent, SIGKILL);
        waitpid(parent, nullptr, 0);
        char bytes[4096];
        ssize_t count;
        while ((count = read(life[0], bytes, sizeof bytes)) > 0) {
        }
        close(life[0]);
        return count == 0;
    }
};

TEST_F(EffectsProbeLimits, TheTimeIsTenSecondsWhereNobodySaysOtherwise) {
    EXPECT_EQ(ProbeSettings{}.limit, std::chrono::seconds(10));
}

// Its parent is killed, and nobody is there to watch the clock.
TEST_F(EffectsProbeLimits, TheProcessEndsWithItsParent) { EXPECT_TRUE(EndsWithItsParent("sleep")); }

TEST_F(EffectsProbeLimits, TheProcessEndsWithItsParentWhateverThePluginTries) {
    if (!CanForbid()) GTEST_SKIP() << "this system cannot forbid system calls";
    EXPECT_TRUE(EndsWithItsParent("untied"));
}

TEST_F(EffectsProbeLimits, ProcessesThatAPluginStartsEndWithIt) {
    const std::string path = m_plugins.Make("litter");
    EXPECT_EQ(ProbeFile(path, Settings()).outcome, Outcome::Effects);
    // They are killed by then, and gone as soon as they run again. If one stayed, this would not end.
    while (IsMappedByAnybody(path)) usleep(10000);
}

TEST_F(EffectsProbeLimits, NoProcessOfAPluginStaysOutsideItsGroup) {
    if (!CanForbid()) GTEST_SKIP() << "this system cannot forbid system calls";
    const std::string path = m_plugins.Make("outside");
    EXPECT_EQ(ProbeFile(path, Settings()).outcome, Outcome::Effects);
    EXPECT_FALSE(IsMappedByAnybody(path));
    const std::string untied = m_plugins.Make("untied");
    EXPECT_EQ(ProbeFile(untied, Settings(std::chrono::milliseconds(1500))).reason, "it takes longer than 1.5 s");
    EXPECT_FALSE(IsMappedByAnybody(untied));
}

TEST_F(EffectsProbeLimits, APluginThatStopsItselfIsEnded) {
    EXPECT_EQ(ProbeFor("halt", std::chrono::milliseconds(1500)).reason, "it takes longer than 1.5 s");
}

TEST_F(EffectsProbeLimits, APluginMayHaveThreadsButTheirTimeIsTheProcesss) {
    const ProbeReport report = ProbeFor("crew", std::chrono::seconds(1));
    EXPECT_EQ(report.outcome, Outcome::Failed);
    EXPECT_EQ(report.reason, "it takes longer than 1 s");
}

TEST_F(EffectsProbeLimits, MemoryEndsAtAGigabyte) {
    if (kIsSanitized) GTEST_SKIP() << "the sanitizers need all addresses";
    EXPECT_EQ(Probe("modest").outcome, Outcome::Effects);
    EXPECT_EQ(Failure("greedy"), "it aborts");
}

TEST_F(EffectsProbeLimits, FilesEndAtSixteenMegabytes) {
    EXPECT_EQ(Probe("short").outcome, Outcome::Effects);
    EXPECT_EQ(Failure("large"), "it writes too large a file");
}

TEST_F(EffectsProbeLimits, NoCoreIsWritten) { EXPECT_EQ(Probe("core").outcome, Outcome::Effects); }

}  // namespace
