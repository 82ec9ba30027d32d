// The kinds of plugins that do not keep to the interface.
#include "tests/qfc/plugins/EffectPlugin.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>
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
    if (kind == "hungry" && moment == Moment::Construct) Eat();
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
