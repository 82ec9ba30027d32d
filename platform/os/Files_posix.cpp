#include "platform/os/ErrnoError.h"
#include "platform/os/Files.h"
#include "platform/os/LastError.h"
#include "platform/text/CodePages.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

// What the name "\GALFFFF.tmp" and the closing NUL need behind the folder.
constexpr std::size_t kTempNameRoom = 14;

bool Fail(DWORD error) {
    SetLastError(error);
    return false;
}

bool MayCopyOver(const std::string& target, bool failIfExists) {
    struct stat status;
    if (stat(target.c_str(), &status) != 0) return true;
    if (failIfExists) return Fail(ERROR_FILE_EXISTS);
    const bool readOnly = (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
    return !readOnly && S_ISREG(status.st_mode) ? true : Fail(ERROR_ACCESS_DENIED);
}

std::string TempName(std::string_view folder, std::string_view prefix, UINT number) {
    char digits[16];
    std::snprintf(digits, sizeof(digits), "%X", number);
    std::string name(folder);
    if (name.back() != '/' && name.back() != '\\') name += '/';
    return name.append(prefix.substr(0, 3)).append(digits).append(".tmp");
}

enum class Made { Yes, Exists, Failed };

Made MakeEmptyFile(const std::string& name) {
    const int file = open(qfc::NativePath(name.c_str()).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file >= 0) {
        close(file);
        return Made::Yes;
    }
    if (errno == EEXIST) return Made::Exists;
    qfc::FailWithErrno();
    return Made::Failed;
}

UINT StartingNumber() {
    return static_cast<UINT>(std::chrono::system_clock::now().time_since_epoch() / std::chrono::microseconds(1)) &
           0xFFFF;
}

// 0 when no number is free or the folder takes no file.
UINT MakeTempFile(std::string_view folder, std::string_view prefix) {
    UINT number = StartingNumber();
    for (int tries = 0; tries < 0xFFFF; ++tries, ++number) {
        number = (number & 0xFFFF) != 0 ? number & 0xFFFF : 1;
        const Made made = MakeEmptyFile(TempName(folder, prefix, number));
        if (made == Made::Yes) return number;
        if (made == Made::Failed) return 0;
    }
    SetLastError(ERROR_FILE_EXISTS);
    return 0;
}

}  // namespace

namespace qfc {

std::string WithoutLinks(const std::string& path) {
    constexpr int kMostLinks = 40;  // As many as the system follows.
    std::error_code error;
    std::filesystem::path target(path);
    for (int links = 0; links < kMostLinks && std::filesystem::is_symlink(target, error); ++links) {
        const std::filesystem::path next = std::filesystem::read_symlink(target, error);
        if (error) break;
        target = target.parent_path() / next;
    }
    return target.string();
}

}  // namespace qfc

int PathFileExistsA(const char* path) {
    if (path == nullptr || *path == '\0') return 0;
    struct stat status;
    return stat(qfc::NativePath(path).c_str(), &status) == 0 ? 1 : qfc::FailWithErrno();
}

int CopyFileA(const char* source, const char* target, int failIfExists) {
    if (source == nullptr || target == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    // A copy must replace what a link points to, not the link.
    const std::string to = qfc::WithoutLinks(qfc::NativePath(target));
    if (!MayCopyOver(to, failIfExists != 0)) return 0;
    return qfc::CopyFileDurably(qfc::NativePath(source), to, failIfExists == 0) ? 1 : 0;
}

int DeleteFileA(const char* path) {
    if (path == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    return unlink(qfc::NativePath(path).c_str()) == 0 ? 1 : qfc::FailWithErrno();
}

DWORD GetTempPathA(DWORD size, char* buffer) {
    const char* chosen = std::getenv("TMPDIR");
    std::string folder = qfc::Utf8ToAnsi(chosen != nullptr && *chosen != '\0' ? chosen : "/tmp");
    if (folder.back() != '/') folder += '/';
    if (buffer == nullptr || folder.size() >= size) return static_cast<DWORD>(folder.size() + 1);
    std::memcpy(buffer, folder.c_str(), folder.size() + 1);
    return static_cast<DWORD>(folder.size());
}

UINT GetTempFileNameA(const char* folder, const char* prefix, UINT unique, char* buffer) {
    if (folder == nullptr || *folder == '\0' || buffer == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    if (std::strlen(folder) > MAX_PATH - kTempNameRoom) return Fail(ERROR_INSUFFICIENT_BUFFER);
    const std::string_view start = prefix != nullptr ? prefix : "";
    const UINT number = unique != 0 ? unique & 0xFFFF : MakeTempFile(folder, start);
    if (number == 0 && unique == 0) return 0;
    const std::string name = TempName(folder, start, number);
    std::memcpy(buffer, name.c_str(), name.size() + 1);
    return number;
}
