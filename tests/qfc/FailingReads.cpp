// Loaded into the program before all else: one read of a file fails, counted from the first write to it, or from the
// start. The environment names the end of the file's path, the number of the read, and a file that is made when it was
// that read's turn.
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

std::atomic<bool> g_isWritten{false};
std::atomic<long> g_reads{0};

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

bool IsItsTurn(int file) {
    const bool isCounted = g_isWritten || std::getenv("QFC_FAILING_READS_FROM_START") != nullptr;
    if (!isCounted || !IsTheFile(file)) return false;
    const char* const number = std::getenv("QFC_FAILING_READ");
    if (number == nullptr || ++g_reads != std::atol(number)) return false;
    if (const char* const mark = std::getenv("QFC_FAILING_READ_MARK")) close(open(mark, O_CREAT | O_WRONLY, 0600));
    return true;
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
