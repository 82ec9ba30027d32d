#include "hosts/qfc/commands/Interrupt.h"

#include <csignal>
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

constexpr char kFinishing[] = "\nqfc: finishing what was begun; once more ends it at once\n";
std::atomic<bool> g_isWatched{false};  // Somebody looks at the error stream.

void OnSignal(int signal) {
    g_raised = true;
    if (g_isWatched) static_cast<void>(!write(STDERR_FILENO, kFinishing, sizeof kFinishing - 1));
    std::signal(signal, SIG_DFL);
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
