#include "hosts/qfc/effects/ChildProcess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

extern char** environ;

namespace qfc::host {

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void Throw(int error, const char* what) { throw std::system_error(error, std::generic_category(), what); }

class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const { return m_number; }
    void Close() {
        if (m_number >= 0) close(m_number);
        m_number = -1;
    }

private:
    int m_number;
};

class SpawnFiles {
public:
    SpawnFiles() { posix_spawn_file_actions_init(&m_actions); }
    ~SpawnFiles() { posix_spawn_file_actions_destroy(&m_actions); }
    SpawnFiles(const SpawnFiles&) = delete;
    SpawnFiles& operator=(const SpawnFiles&) = delete;

    void AnswerTo(int descriptor) {
        constexpr const char* kNowhere = "/dev/null";
        // First of all: it may have the number of one of the others.
        posix_spawn_file_actions_adddup2(&m_actions, descriptor, kAnswerDescriptor);
        posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, kNowhere, O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, kNowhere, O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&m_actions, STDERR_FILENO, kNowhere, O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&m_actions, kAnswerDescriptor + 1);
    }
    const posix_spawn_file_actions_t* Get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions;
};

// A group of its own, and no signal blocked or ignored that was so here.
class SpawnAttributes {
public:
    SpawnAttributes() {
        posix_spawnattr_init(&m_attributes);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        posix_spawnattr_setpgroup(&m_attributes, 0);
        sigset_t none, all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setsigdefault(&m_attributes, &all);
    }
    ~SpawnAttributes() { posix_spawnattr_destroy(&m_attributes); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    const posix_spawnattr_t* Get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes;
};

pid_t Spawn(const std::filesystem::path& program, const std::vector<std::string>& arguments, int answer) {
    std::vector<std::string> texts = arguments;
    std::vector<char*> argv;
    std::string name = program.filename();
    argv.push_back(name.data());
    for (std::string& text : texts) argv.push_back(text.data());
    argv.push_back(nullptr);
    SpawnFiles files;
    files.AnswerTo(answer);
    const SpawnAttributes attributes;
    pid_t child = -1;
    const int error = posix_spawn(&child, program.c_str(), files.Get(), attributes.Get(), argv.data(), environ);
    if (error != 0) Throw(error, "cannot start the process for plugins");
    return child;
}

// Ignored, it would have the system forget how processes ended.
void RememberEnds() {
    struct sigaction action {};
    sigaction(SIGCHLD, nullptr, &action);
    if (action.sa_handler != SIG_IGN && (action.sa_flags & SA_NOCLDWAIT) == 0) return;
    if (action.sa_handler == SIG_IGN) action.sa_handler = SIG_DFL;
    action.sa_flags &= ~SA_NOCLDWAIT;
    sigaction(SIGCHLD, &action, nullptr);
}

// As the system tells it.
struct Ending {
    int status = 0;
    std::chrono::microseconds worked{};
};

// A started process and its group; both are gone when it dies.
class Child {
public:
    explicit Child(pid_t id) : m_id(id) {}
    ~Child() { End(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // Leaves it to be collected, so that its number is not another's yet when it is killed.
    bool HasEnded() {
        siginfo_t info{};
        if (waitid(P_PID, static_cast<id_t>(m_id), &info, WEXITED | WNOHANG | WNOWAIT) == 0) return info.si_pid == m_id;
        if (errno == EINTR) return false;
        m_id = -1;
        return true;
    }

    // Kills it and what is left of its group. Nothing when it is not known how it ended.
    std::optional<Ending> End() {
        if (m_id < 0) return std::nullopt;
        kill(-m_id, SIGKILL);
        kill(m_id, SIGKILL);  // It may have left its group.
        const std::optional<Ending> ending = Collect();
        m_id = -1;
        return ending;
    }

private:
    // Killed, it ends at once, unless it hangs in the system, on a disk that does not answer.
    std::optional<Ending> Collect() const {
        constexpr int kGlance = 10, kMostGlances = 300;
        for (int glances = 0; glances < kMostGlances; ++glances) {
            Ending ending;
            rusage usage{};
            const pid_t got = wait4(m_id, &ending.status, WNOHANG, &usage);
            if (got < 0 && errno != EINTR) return std::nullopt;
            ending.worked = Microseconds(usage.ru_utime) + Microseconds(usage.ru_stime);
            if (got == m_id) return ending;
            poll(nullptr, 0, kGlance);
        }
        return std::nullopt;
    }
    static std::chrono::microseconds Microseconds(const timeval& time) {
        return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
    }

    pid_t m_id;
};

// Reads what is there. False when nothing more can come.
bool ReadAvailable(int descriptor, std::vector<std::uint8_t>& answer, std::size_t most) {
    std::uint8_t buffer[65536];
    while (answer.size() <= most) {
        const ssize_t count = read(descriptor, buffer, sizeof buffer);
        if (count > 0) answer.insert(answer.end(), buffer, buffer + count);
        if (count == 0) return false;
        if (count < 0 && errno != EINTR) return errno == EAGAIN;
    }
    return true;
}

// Until it has ended, or has to be ended; the latter is told.
std::optional<ChildEnd::How> Attend(Child& child, Descriptor& pipe, const ChildLimits& limits,
                                    std::vector<std::uint8_t>& answer) {
    constexpr std::chrono::milliseconds kGlance(20);
    // Of more time between two looks, the rest is not counted: this process was stopped, and did not read.
    constexpr Clock::duration kLongestGlance = 10 * kGlance;
    Clock::duration watched{};
    for (Clock::time_point last = Clock::now();;) {
        pollfd one{pipe.Number(), POLLIN, 0};
        poll(&one, 1, static_cast<int>(kGlance.count()));
        // First the question, then the reading: what it wrote before its end is then all there.
        const bool ended = child.HasEnded();
        const bool hadBegun = !answer.empty();
        if (pipe.Number() >= 0 && !ReadAvailable(pipe.Number(), answer, limits.answer)) pipe.Close();
        if (answer.size() > limits.answer) return ChildEnd::How::TooMuch;
        if (ended) return std::nullopt;
        if (limits.stop && limits.stop->load(std::memory_order_relaxed)) return ChildEnd::How::Stopped;
        const Clock::time_point now = Clock::now();
        const bool begins = !hadBegun && !answer.empty();
        watched = begins ? Clock::duration{} : watched + std::min(now - last, kLongestGlance);
        last = now;
        if (watched >= (answer.empty() ? limits.begin : limits.time)) return ChildEnd::How::TooSlow;
    }
}

}  // namespace

ChildEnd RunChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const ChildLimits& limits) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) Throw(errno, "cannot make a pipe");
    Descriptor reading(ends[0]), writing(ends[1]);
    fcntl(reading.Number(), F_SETFL, O_NONBLOCK);
    RememberEnds();
    Child child(Spawn(program, arguments, writing.Number()));
    writing.Close();

    ChildEnd result;
    const std::optional<ChildEnd::How> forced = Attend(child, reading, limits, result.answer);
    const std::optional<Ending> ending = child.End();
    if (ending) result.worked = ending->worked;
    if (forced) {
        result.how = *forced;
    } else if (!ending) {
        result.how = ChildEnd::How::Lost;
    } else if (WIFSIGNALED(ending->status)) {
        result.how = ChildEnd::How::Signalled;
        result.code = WTERMSIG(ending->status);
    } else {
        result.code = WEXITSTATUS(ending->status);
    }
    return result;
}

}  // namespace qfc::host
