#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace qfc::host {

// How a process came to its end, and what it had to say.
struct ChildEnd {
    enum class How {
        Exited,     // by itself, with `code`
        Signalled,  // by the signal `code`
        TooSlow,
        TooMuch,  // more bytes than it may answer
        Stopped,  // because the caller wanted it so
        Lost,     // somebody else took the news of its end
    };
    How how = How::Exited;
    int code = 0;
    std::chrono::microseconds worked{};  // processor time, of all its threads
    std::vector<std::uint8_t> answer;
};

struct ChildLimits {
    // Of both, only time counts in which the caller is there to see it pass, not stopped itself.
    std::chrono::milliseconds begin{};        // until the first byte of the answer
    std::chrono::milliseconds time{};         // from then on
    std::size_t answer = 0;                   // bytes
    const std::atomic<bool>* stop = nullptr;  // may be null
};

// The descriptor on which a child answers.
inline constexpr int kAnswerDescriptor = 3;

// Runs a program in a process group of its own, reads what it writes to kAnswerDescriptor, and waits for its end. It
// has no other descriptors; what it prints is lost, since more than the program itself may print there. At its end,
// however it comes, the whole group is killed, and the process itself in whatever group it is then. One that cannot
// even be killed, since the system does not let it go, is left. Should this process ignore SIGCHLD, it does so no more.
// Throws std::system_error when it cannot be started. Any thread; several at once.
ChildEnd RunChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const ChildLimits& limits);

}  // namespace qfc::host
