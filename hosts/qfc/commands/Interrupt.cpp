#include "hosts/qfc/commands/Interrupt.h"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <unistd.h>

namespace qfc::host {
namespace {

std::atomic<bool> g_raised{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may only touch lock-free values");

// The closed terminal ends work like the user's own word.
constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Who asked to be spared, as nohup does, stays so.
bool IsIgnored(int signal) {
    struct sigaction action {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void SetUnlessIgnored(void (*handler)(int)) {
    for (const int signal : kSignals) {
        if (!IsIgnored(signal)) std::signal(signal, handler);
    }
}

constexpr char kEnding[] = "\nqfc: ending in good order; once more ends it at once\n";
std::atomic<bool> g_isWatched{false};  // Somebody looks at the error stream.

// A terminal that was told to hold its output would hold the program up, too.
void TellIfItMay() {
    pollfd terminal{STDERR_FILENO, POLLOUT, 0};
    if (poll(&terminal, 1, 0) != 1 || (terminal.revents & POLLOUT) == 0) return;
    static_cast<void>(!write(STDERR_FILENO, kEnding, sizeof kEnding - 1));
}

void OnSignal(int signal) {
    const int nError = errno;
    g_raised = true;
    std::signal(signal, SIG_DFL);
    if (g_isWatched) TellIfItMay();
    errno = nError;
}

}  // namespace

Interrupt::Interrupt() {
    g_raised = false;
    g_isWatched = isatty(STDERR_FILENO) != 0;
    SetUnlessIgnored(OnSignal);
}

Interrupt::~Interrupt() { SetUnlessIgnored(SIG_DFL); }

const std::atomic<bool>& Interrupt::Flag() const { return g_raised; }

}  // namespace qfc::host
