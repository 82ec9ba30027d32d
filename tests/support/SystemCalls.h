#pragma once

#include <functional>
#include <sys/types.h>

namespace qfc::test {

// Calls of the system that a test answers in its stead while the object lives; what is empty goes to the system, and an
// answer may go there, too. A program that links the source file has its own definitions of them, which hold for
// everything that is linked into it. Set before threads are started. One at a time.
class SystemCalls {
public:
    using Flock = std::function<int(int file, int operation)>;
    using Rename = std::function<int(const char* from, const char* to, unsigned flags)>;
    using Chmod = std::function<int(int file, mode_t mode)>;
    using Link = std::function<int(const char* from, const char* to)>;

    SystemCalls();
    ~SystemCalls();
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    // Of files, and of folders.
    Flock flock;
    // renameat2: of paths relative to no descriptor.
    Rename rename;
    Chmod fchmod;
    Link link;

    static int RealFlock(int file, int operation);
    static int RealRename(const char* from, const char* to, unsigned flags);
    static int RealFchmod(int file, mode_t mode);
    static int RealLink(const char* from, const char* to);
    // -1, with errno.
    static int Refuse(int error);
};

}  // namespace qfc::test
