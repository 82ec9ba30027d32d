#include "hosts/qfc/commands/Interrupt.h"

#include <csignal>

namespace qfc::host {
namespace {

std::atomic<bool> g_raised{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may only touch lock-free values");

void OnSignal(int signal) {
    g_raised = true;
    std::signal(signal, SIG_DFL);
}

}  // namespace

Interrupt::Interrupt() {
    g_raised = false;
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
}

Interrupt::~Interrupt() {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

const std::atomic<bool>& Interrupt::Flag() const { return g_raised; }

}  // namespace qfc::host
