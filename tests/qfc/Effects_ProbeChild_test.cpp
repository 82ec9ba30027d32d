#include "hosts/qfc/effects/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace qfc::host;
using How = ChildEnd::How;

constexpr std::size_t kMuch = 1 << 20;

ChildEnd RunToDo(const char* what, std::chrono::milliseconds time = std::chrono::seconds(30)) {
    return RunChild(QFC_TEST_CHILD, {what}, {.begin = time, .time = time, .answer = kMuch, .stop = nullptr});
}

// Processes of this one that are not collected; their state, too.
bool HasChildren() { return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD; }

TEST(EffectsProbeChild, OneThatLeftItsGroupAndIgnoresSignalsIsEnded) {
    const ChildEnd end = RunToDo("desert", std::chrono::milliseconds(1000));
    EXPECT_EQ(end.how, How::TooSlow);
    EXPECT_EQ(std::string(end.answer.begin(), end.answer.end()), "away");
    EXPECT_FALSE(HasChildren());
}

TEST(EffectsProbeChild, OneThatStopsItselfIsEnded) {
    EXPECT_EQ(RunToDo("stop", std::chrono::milliseconds(300)).how, How::TooSlow);
    EXPECT_FALSE(HasChildren());
}

TEST(EffectsProbeChild, ItsEndIsKnownThoughTheCallerIgnoresThoseOfChildren) {
    std::signal(SIGCHLD, SIG_IGN);
    const ChildEnd end = RunToDo("nothing");
    std::signal(SIGCHLD, SIG_DFL);
    EXPECT_EQ(end.how, How::Exited);
    EXPECT_EQ(end.code, 7);
}

void CollectEveryChild(int) {
    const int before = errno;
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    errno = before;
}

TEST(EffectsProbeChild, AnEndThatSomebodyElseCollectedIsLost) {
    std::signal(SIGCHLD, CollectEveryChild);
    const ChildEnd end = RunToDo("nothing");
    std::signal(SIGCHLD, SIG_DFL);
    EXPECT_EQ(end.how, How::Lost);
}

// Here the parent is another process, since it is stopped for longer than its child may take, which meanwhile waits for
// it to read.
TEST(EffectsProbeChild, TimeInWhichTheCallerIsStoppedDoesNotCount) {
    const pid_t parent = fork();
    if (parent == 0) {
        const ChildEnd end = RunToDo("stop-parent", std::chrono::seconds(1));
        _exit(end.how == How::Exited && end.code == 7 && end.answer.size() == kMuch ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(parent, &status, WUNTRACED), parent);
    ASSERT_TRUE(WIFSTOPPED(status));
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    kill(parent, SIGCONT);
    ASSERT_EQ(waitpid(parent, &status, 0), parent);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
