// The kinds of plugins that do not keep to the interface.
#include "tests/qfc/plugins/EffectPlugin.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace qfc::test::plugin {

namespace {

constexpr int kReport = 3;  // where reports go

void Loop() {
    for (volatile int i = 0;;) i = i + 1;
}

void Print() {
    for (int i = 0; i < 5000; ++i) std::puts("QFP1 this is my report, believe me, it is all here");
    std::fputs("and on the error stream\n", stderr);
    std::fflush(stdout);
}

void Write(const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(kReport, bytes, count);
        if (written <= 0) return;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

void Flood() {
    static const char block[65536] = "QFP1";
    for (;;) Write(block, sizeof block);
}

// Leaves a process behind that holds everything open.
void LeaveOneBehind() {
    if (fork() != 0) return;
    for (;;) pause();
}

// The same, out of reach of a signal to the group.
void LeaveOneOutside() {
    if (fork() != 0) return;
    setsid();
    for (;;) pause();
}

// All that holds a process to its parent.
void CutTies() {
    prctl(PR_SET_PDEATHSIG, 0);
    alarm(0);
    setsid();
    setpgid(0, getpgid(getppid()));
    LeaveOneOutside();
    for (;;) pause();
}

// Addresses, without memory behind them.
void Take(std::size_t bytes) {
    void* const taken = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (taken == MAP_FAILED) std::abort();
}

// A file in memory.
void WriteFile(std::int64_t bytes) {
    const int file = memfd_create("large", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, bytes) != 0) std::abort();
    close(file);
}

void LoopInThreads() {
    for (int i = 0; i < 3; ++i) std::thread(Loop).detach();
    Loop();
}

void Eat() {
    for (int i = 0; i < 64; ++i) {
        auto* const block = static_cast<char*>(std::malloc(std::size_t{64} << 20));
        if (!block) std::abort();
        block[0] = 1;
    }
}

void EverySignal(void (*handler)(int)) {
    for (int number = 1; number < 32; ++number) std::signal(number, handler);
}

}  // namespace

void Misdeed(std::string_view kind, Moment moment) {
    const bool update = moment == Moment::Update;
    if (kind == "abort" && update) std::abort();
    if (kind == "segfault" && update) *reinterpret_cast<volatile int*>(16) = 1;
    if (kind == "loop" && update) Loop();
    if (kind == "stubborn" && update) {
        EverySignal(SIG_IGN);
        Loop();
    }
    if (kind == "sleep" && update) {
        for (;;) pause();
    }
    if (kind == "exit" && update) std::exit(0);
    if (kind == "exits" && update) _exit(7);
    if (kind == "print") Print();
    if (kind == "throw" && update) throw std::runtime_error("thrown by a plugin");
    if (kind == "odd" && update) throw 5;
    if (kind == "forge" && update) {
        Write("QFP1 nothing of this is true", 28);
        _exit(0);
    }
    if (kind == "spoil" && update) Write("?", 1);
    if (kind == "flood" && update) Flood();
    if (kind == "close" && update) {
        for (int descriptor = 0; descriptor < 64; ++descriptor) close(descriptor);
    }
    if (kind == "litter" && moment == Moment::Construct) LeaveOneBehind();
    if (kind == "outside" && moment == Moment::Construct) LeaveOneOutside();
    if (kind == "untied" && update) CutTies();
    if (kind == "halt" && update) std::raise(SIGSTOP);
    if (kind == "terminate" && update) std::raise(SIGTERM);
    if (kind == "killed" && update) std::raise(SIGKILL);
    if (kind == "crew" && update) LoopInThreads();
    if (kind == "modest" && moment == Moment::Init) Take(std::size_t{512} << 20);
    if (kind == "greedy" && moment == Moment::Init) Take(std::size_t{1} << 30);
    if (kind == "short" && moment == Moment::Init) WriteFile(16 << 20);
    if (kind == "large" && moment == Moment::Init) WriteFile((16 << 20) + 1);
    if (kind == "core" && moment == Moment::Init) {
        rlimit limit{};
        if (getrlimit(RLIMIT_CORE, &limit) != 0 || limit.rlim_max != 0) std::abort();
    }
    if (kind == "hungry" && moment == Moment::Construct) Eat();
    if (kind == "vanish" && update) {
        unlink(OwnPath().c_str());
        std::abort();
    }
    if (kind == "touch" && update) {
        std::ofstream(OwnPath(), std::ios::app) << "more";
        std::abort();
    }
    if (kind == "lastly" && moment == Moment::End) std::abort();
    if (kind == "atonce" && moment == Moment::Init) std::abort();
    if (kind == "whoami" && moment == Moment::Info) std::abort();
}

void MisdeedInInfo(std::string_view kind, f0r_plugin_info_t& info) {
    static const std::string longText(100000, 'x');
    if (kind == "many") info.num_params = std::numeric_limits<int>::max();
    if (kind == "fewer") info.num_params = -1;
    if (kind == "nameless") info.name = info.author = info.explanation = nullptr;
    if (kind == "garbled")
        info.name =
            "a\xFF\xC3(\n\x01"
            "b";
    if (kind == "long") info.name = info.explanation = longText.c_str();
    if (kind == "wild") info.name = reinterpret_cast<const char*>(8);
    if (kind == "numbers") info.major_version = std::numeric_limits<int>::min();
}

void MisdeedInParameter(std::string_view kind, f0r_param_info_t& info) {
    if (kind == "untyped") info.type = 77;
    if (kind == "unnamed") info.name = nullptr;
}

void MisdeedInFrame(std::string_view kind, std::size_t pixels, std::uint32_t* out) {
    if (kind == "overrun") std::memset(out + pixels, 0, 4096);
    if (kind == "onemore") out[pixels] = 0;
}

}  // namespace qfc::test::plugin
