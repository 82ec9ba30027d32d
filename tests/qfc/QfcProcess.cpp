#include "QfcProcess.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace qfc::test {
namespace {

constexpr uid_t kNobody = 65534;
constexpr const char* kNowhere = "/nowhere";

#ifdef QFC_FAILING_READS
void MakeReadFail(const FailingRead& read) {
    setenv("QFC_FAILING_READS_OF", read.file.c_str(), 1);
    setenv("QFC_FAILING_READ", std::to_string(read.number).c_str(), 1);
    setenv("QFC_FAILING_READ_MARK", read.mark.c_str(), 1);
    if (read.fromStart) setenv("QFC_FAILING_READS_FROM_START", "1", 1);
}

void LetHappen(const Meanwhile& meanwhile) {
    setenv("QFC_FAILING_READS_OF", meanwhile.file.c_str(), 1);
    setenv("QFC_LOOK", std::to_string(meanwhile.look).c_str(), 1);
    setenv("QFC_FAILING_READ_MARK", meanwhile.mark.c_str(), 1);
    setenv("QFC_MEANWHILE", ("unset LD_PRELOAD; " + meanwhile.command).c_str(), 1);
}

void Preload() {
    setenv("LD_PRELOAD", QFC_FAILING_READS, 1);
    // The sanitizer wants to be the first of all libraries; what stands before it replaces a few calls only.
    const char* const options = std::getenv("ASAN_OPTIONS");
    setenv("ASAN_OPTIONS", ((options ? std::string(options) + ":" : "") + "verify_asan_link_order=0").c_str(), 1);
}
#endif

void EnterWorld(const QfcWorld& world) {
#ifdef QFC_FAILING_READS
    if (world.failingRead) MakeReadFail(*world.failingRead);
    if (world.meanwhile) LetHappen(*world.meanwhile);
    if (world.failingRead || world.meanwhile) Preload();
#endif

    // Libraries of these tests begin empty, not as a copy of the shipped one.
    setenv("QFCLIB_HOST_DIR", kNowhere, 0);
    if (world.largestFile) {
        const rlimit limit{static_cast<rlim_t>(*world.largestFile), static_cast<rlim_t>(*world.largestFile)};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(127);
        std::signal(SIGXFSZ, SIG_IGN);
    }
    if (world.unprivileged && geteuid() == 0) {
        if (setgid(kNobody) != 0 || setuid(kNobody) != 0) _exit(127);
    }
}

[[noreturn]] void Become(const std::vector<std::string>& arguments) {
    std::vector<char*> argv{const_cast<char*>(QFC_PROGRAM)};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    execv(QFC_PROGRAM, argv.data());
    _exit(127);
}

// A terminal that is nobody's controlling one: only what is sent by hand reaches the program as a signal.
std::pair<int, int> MakeTerminal() {
    const int ours = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (ours < 0 || grantpt(ours) != 0 || unlockpt(ours) != 0) throw std::runtime_error("no terminal");
    char name[64];
    if (ptsname_r(ours, name, sizeof name) != 0) throw std::runtime_error("no terminal");
    return {ours, open(name, O_RDWR | O_NOCTTY | O_CLOEXEC)};
}

// Of a file; a terminal has no start and gives what is there.
std::string ReadFromStart(int file) {
    std::string text;
    char buffer[4096];
    lseek(file, 0, SEEK_SET);
    for (ssize_t n; (n = read(file, buffer, sizeof buffer)) > 0;) text.append(buffer, static_cast<std::size_t>(n));
    return text;
}

}  // namespace

QfcProcess::QfcProcess(const std::vector<std::string>& arguments, const QfcWorld& world) {
    int out[2];
    if (pipe2(out, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    if (world.narrowPipe) fcntl(out[1], F_SETPIPE_SZ, 4096);
    m_out = out[0];
    if (world.terminal) {
        std::tie(m_err, m_terminal) = MakeTerminal();
    } else {
        m_err = open("/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    }
    m_child = fork();
    if (m_child == 0) {
        dup2(world.outToTerminal ? m_terminal : out[1], STDOUT_FILENO);
        dup2(world.terminal ? m_terminal : m_err, STDERR_FILENO);
        EnterWorld(world);
        Become(arguments);
    }
    close(out[1]);
    if (m_child < 0 || m_err < 0) throw std::runtime_error("no process");
}

QfcProcess::~QfcProcess() {
    if (m_child > 0) {
        kill(m_child, SIGKILL);
        waitpid(m_child, nullptr, 0);
    }
    for (const int file : {m_out, m_err, m_terminal}) {
        if (file >= 0) close(file);
    }
}

bool QfcProcess::ReadMore() {
    char buffer[4096];
    const ssize_t n = read(m_out, buffer, sizeof buffer);
    if (n > 0) m_read.append(buffer, static_cast<std::size_t>(n));
    return n > 0;
}

std::optional<std::string> QfcProcess::ReadLine() {
    std::size_t end;
    while ((end = m_read.find('\n', m_line)) == std::string::npos) {
        if (!ReadMore()) return std::nullopt;
    }
    const std::string line = m_read.substr(m_line, end - m_line);
    m_line = end + 1;
    return line;
}

void QfcProcess::Signal(int signal) { kill(m_child, signal); }

bool QfcProcess::WaitUntilCaught(int signal, bool caught) const {
    const std::string status = "/proc/" + std::to_string(m_child) + "/status";
    for (;; std::this_thread::yield()) {
        std::ifstream file(status);
        std::string line, signals, state;
        while (std::getline(file, line)) {
            if (line.starts_with("SigCgt:")) signals = line.substr(7);
            if (line.starts_with("State:")) state = line.substr(6);
        }
        if (signals.empty() || state.find('Z') != std::string::npos) return false;
        if (((std::stoull(signals, nullptr, 16) >> (signal - 1)) & 1U) == (caught ? 1U : 0U)) return true;
    }
}

void QfcProcess::StopReading() {
    close(m_out);
    m_out = -1;
}

void QfcProcess::HoldTerminal() { tcflow(m_terminal, TCOOFF); }

QfcResult QfcProcess::Wait() {
    while (ReadMore()) {
    }
    int status = 0;
    waitpid(m_child, &status, 0);
    m_child = -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), m_read, ReadFromStart(m_err)};
}

bool CanMakeTerminal() {
    const int ours = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (ours >= 0) close(ours);
    return ours >= 0;
}

bool CanRunUnprivileged() {
    const pid_t child = fork();
    if (child == 0) {
        const QfcWorld world{.unprivileged = true, .largestFile = std::nullopt, .narrowPipe = false};
        EnterWorld(world);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        Become({"--help"});
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace qfc::test
