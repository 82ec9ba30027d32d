// Loaded into the program before all else: one read of a file fails, counted from the first write to it, or from the
// start; or something else happens before one look of SQLite at it. The environment names the end of the file's path,
// the number of the read or of the look, what happens, and a file that is made when it was the turn.
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

std::atomic<bool> g_isWritten{false};
std::atomic<long> g_reads{0};
std::atomic<long> g_looks{0};

bool IsTheFile(int file) {
    const char* const path = std::getenv("QFC_FAILING_READS_OF");
    if (path == nullptr) return false;
    char opened[PATH_MAX];
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    const ssize_t length = readlink(link.c_str(), opened, sizeof opened);
    const std::string whole(opened, length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::string end(path);
    return whole.size() >= end.size() && whole.compare(whole.size() - end.size(), end.size(), end) == 0;
}

bool IsNumber(const char* variable, std::atomic<long>& count) {
    const char* const number = std::getenv(variable);
    if (number == nullptr || ++count != std::atol(number)) return false;
    if (const char* const mark = std::getenv("QFC_FAILING_READ_MARK")) close(open(mark, O_CREAT | O_WRONLY, 0600));
    return true;
}

bool IsItsTurn(int file) {
    const bool isCounted = g_isWritten || std::getenv("QFC_FAILING_READS_FROM_START") != nullptr;
    return isCounted && IsTheFile(file) && IsNumber("QFC_FAILING_READ", g_reads);
}

// SQLite begins to read where this byte lies.
bool IsLook(int file, int command, const struct flock* lock) {
    constexpr off_t kPendingByte = 0x40000000;
    return command == F_SETLK && lock->l_type == F_RDLCK && lock->l_start == kPendingByte && IsTheFile(file);
}

template <class Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

using Read = ssize_t (*)(int, void*, std::size_t, off64_t);
using Write = ssize_t (*)(int, const void*, std::size_t, off64_t);

ssize_t ReadUnless(Read next, int file, void* bytes, std::size_t count, off64_t offset) {
    if (!IsItsTurn(file)) return next(file, bytes, count, offset);
    errno = EIO;
    return -1;
}

ssize_t WriteAndNote(Write next, int file, const void* bytes, std::size_t count, off64_t offset) {
    if (!g_isWritten && IsTheFile(file)) g_isWritten = true;
    return next(file, bytes, count, offset);
}

}  // namespace

extern "C" {

int fcntl64(int file, int command, ...) {
    static const auto next = Next<int (*)(int, int, void*)>("fcntl64");
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (IsLook(file, command, static_cast<const struct flock*>(argument)) && IsNumber("QFC_LOOK", g_looks)) {
        if (std::system(std::getenv("QFC_MEANWHILE")) != 0) std::abort();
    }
    return next(file, command, argument);
}

ssize_t pread(int file, void* bytes, std::size_t count, off_t offset) {
    static const auto next = Next<Read>("pread");
    return ReadUnless(next, file, bytes, count, offset);
}
ssize_t pread64(int file, void* bytes, std::size_t count, off64_t offset) {
    static const auto next = Next<Read>("pread64");
    return ReadUnless(next, file, bytes, count, offset);
}
ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t offset) {
    static const auto next = Next<Write>("pwrite");
    return WriteAndNote(next, file, bytes, count, offset);
}
ssize_t pwrite64(int file, const void* bytes, std::size_t count, off64_t offset) {
    static const auto next = Next<Write>("pwrite64");
    return WriteAndNote(next, file, bytes, count, offset);
}

}  // extern "C"
