#include "tests/support/SystemCalls.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

qfc::test::SystemCalls* s_answering = nullptr;

int Call(long result) { return static_cast<int>(result); }

}  // namespace

namespace qfc::test {

SystemCalls::SystemCalls() { s_answering = this; }
SystemCalls::~SystemCalls() { s_answering = nullptr; }

int SystemCalls::RealFlock(int file, int operation) { return Call(syscall(SYS_flock, file, operation)); }

int SystemCalls::RealRename(const char* from, const char* to, unsigned flags) {
    return Call(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, flags));
}

int SystemCalls::RealFchmod(int file, mode_t mode) { return Call(syscall(SYS_fchmod, file, mode)); }

int SystemCalls::RealLink(const char* from, const char* to) {
    return Call(syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}

int SystemCalls::Refuse(int error) {
    errno = error;
    return -1;
}

}  // namespace qfc::test

using qfc::test::SystemCalls;

extern "C" {

int flock(int file, int operation) noexcept {
    if (s_answering != nullptr && s_answering->flock) return s_answering->flock(file, operation);
    return SystemCalls::RealFlock(file, operation);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    if (s_answering != nullptr && s_answering->rename) return s_answering->rename(from, to, flags);
    return Call(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

int fchmod(int file, mode_t mode) noexcept {
    if (s_answering != nullptr && s_answering->fchmod) return s_answering->fchmod(file, mode);
    return SystemCalls::RealFchmod(file, mode);
}

int link(const char* from, const char* to) noexcept {
    if (s_answering != nullptr && s_answering->link) return s_answering->link(from, to);
    return SystemCalls::RealLink(from, to);
}

}  // extern "C"
