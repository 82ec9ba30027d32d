#pragma once

#include <array>
#include <cstdint>
#include <ctime>

struct stat;

namespace qfc {

// What tells a file from another one and from itself after a change: device, inode, size and the times of the last
// change of its bytes and of its record.
struct FileStamp {
    std::uint64_t device;
    std::uint64_t inode;
    std::int64_t size;
    std::array<std::time_t, 2> seconds;
    std::array<long, 2> nanoseconds;
    bool operator==(const FileStamp&) const = default;
};

FileStamp StampOf(const struct stat& status);

}  // namespace qfc
