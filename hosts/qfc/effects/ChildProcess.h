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
    };
    How how = How::Exited;
    int code = 0;
    std::vector<std::uint8_t> answer;
};

struct ChildLimits {
    std::chrono::milliseconds time{};
    std::size_t answer = 0;                   // bytes
    const std::atomic<bool>* stop = nullptr;  // may be null
};

// The descriptor on which a child answers.
inline constexpr int kAnswerDescriptor = 3;

// Runs a program in a process group of its own, reads what it writes to kAnswerDescriptor, and waits for its end. It
// has no other descriptors; what it prints is lost, since more than the program itself may print there. At its end,
// however it comes, the whole group is killed. Throws std::system_error when it cannot be started. Any thread; several
// at once.
ChildEnd RunChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const ChildLimits& limits);

}  // namespace qfc::host
