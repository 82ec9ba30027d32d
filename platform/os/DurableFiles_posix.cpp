#include "platform/os/Descriptor.h"
#include "platform/os/ErrnoError.h"
#include "platform/os/Files.h"
#include "platform/os/LastError.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace qfc {
namespace {

Descriptor OpenFolderOf(const std::string& path) {
    return Descriptor(open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// Some file systems cannot sync a folder and say so; then there is nothing more to do.
bool SyncFolder(const Descriptor& folder) { return fsync(folder.Get()) == 0 || errno == EINVAL || errno == ENOTSUP; }

bool CopyBytes(int source, const Descriptor& target) {
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t count = read(source, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count == 0;
        if (!WriteAll(target, {buffer.data(), static_cast<std::size_t>(count)})) return false;
    }
}

// Fills, syncs and closes the new file. It takes the source's permissions, but can always be written by its owner.
bool FillAndSync(int source, Descriptor& target) {
    struct stat status;
    if (fstat(source, &status) != 0) return false;
    if (!S_ISREG(status.st_mode)) {
        errno = EACCES;
        return false;
    }
    return CopyBytes(source, target) && fchmod(target.Get(), (status.st_mode & 0777) | S_IRUSR | S_IWUSR) == 0 &&
           fsync(target.Get()) == 0 && target.Close();
}

// Gives the finished file its name. A target that another process made meanwhile is only replaced when it may be.
bool MoveInPlace(const std::string& temporary, const std::string& target, bool replace) {
    const unsigned flags = replace ? 0 : RENAME_NOREPLACE;
    if (renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, target.c_str(), flags) == 0) return true;
    // Some file systems know no flags.
    return errno == EINVAL && rename(temporary.c_str(), target.c_str()) == 0;
}

// For file systems that know no flags, or no second names either: a name that is taken is not given once more.
bool MoveToNew(const std::string& from, const std::string& to) {
    if (link(from.c_str(), to.c_str()) == 0) return unlink(from.c_str()) == 0;
    if (errno == EEXIST) return false;
    if (faccessat(AT_FDCWD, to.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return false;
    }
    return rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace

std::string FolderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

bool CopyFileDurably(const std::string& source, const std::string& target, bool replace) {
    const Descriptor from(open(source.c_str(), O_RDONLY | O_CLOEXEC));
    const Descriptor folder = OpenFolderOf(target);
    if (!from.IsOpen() || !folder.IsOpen()) return FailWithErrno();
    std::string temporary = FolderOf(target) + ".qfclib-XXXXXX";
    Descriptor to(mkostemp(temporary.data(), O_CLOEXEC));
    if (!to.IsOpen()) return FailWithErrno();
    if (!FillAndSync(from.Get(), to) || !MoveInPlace(temporary, target, replace)) {
        FailWithErrno();
        unlink(temporary.c_str());
        return false;
    }
    return SyncFolder(folder) || FailWithErrno();
}

bool WriteFileDurably(const std::string& target, std::string_view bytes) {
    const Descriptor folder = OpenFolderOf(target);
    if (!folder.IsOpen()) return FailWithErrno();
    const std::string temporary = target + ".new";
    unlink(temporary.c_str());
    Descriptor file(open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.IsOpen()) return FailWithErrno();
    struct stat status;
    const bool replaces = stat(target.c_str(), &status) == 0;
    if (!WriteAll(file, bytes) || (replaces && fchmod(file.Get(), status.st_mode & 0777) != 0) ||
        fsync(file.Get()) != 0 || !file.Close() || rename(temporary.c_str(), target.c_str()) != 0) {
        FailWithErrno();
        unlink(temporary.c_str());
        return false;
    }
    return SyncFolder(folder) || FailWithErrno();
}

bool RenameDurably(const std::string& from, const std::string& to) {
    const Descriptor folder = OpenFolderOf(to);
    if (!folder.IsOpen()) return FailWithErrno();
    if (rename(from.c_str(), to.c_str()) != 0) return FailWithErrno();
    return SyncFolder(folder) || FailWithErrno();
}

bool RenameDurablyToNew(const std::string& from, const std::string& to) {
    const Descriptor folder = OpenFolderOf(to);
    if (!folder.IsOpen()) return FailWithErrno();
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) != 0 &&
        (errno != EINVAL || !MoveToNew(from, to))) {
        return FailWithErrno();
    }
    return SyncFolder(folder) || FailWithErrno();
}

bool MakeFolders(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return std::filesystem::is_directory(folder, error);
}

}  // namespace qfc
