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
#include <utility>

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

// For file systems whose rename knows no flags, and some of them no second names either.
bool MoveToNewWithoutFlags(const std::string& from, const std::string& to) {
    if (link(from.c_str(), to.c_str()) == 0) return unlink(from.c_str()) == 0;
    if (errno == EEXIST) return false;
    if (faccessat(AT_FDCWD, to.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return false;
    }
    return rename(from.c_str(), to.c_str()) == 0;
}

// A name that is taken, were it by another process this moment, is not given once more.
bool MoveToNew(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    return errno == EINVAL && MoveToNewWithoutFlags(from, to);
}

// Gives the finished file its name.
bool MoveInPlace(const std::string& temporary, const std::string& target, bool replace) {
    return replace ? rename(temporary.c_str(), target.c_str()) == 0 : MoveToNew(temporary, target);
}

bool GroupIsLikeOthers(mode_t mode) { return (mode & S_IRWXG) >> 3 == (mode & S_IRWXO); }

// A new file with the rights of the one that it is to replace. The writer's alone until it has them, so that at no time
// somebody can read it who could not read the old one. Not open where the group cannot be kept and has rights of its
// own: they would go to another group, and be missed by those who had them.
Descriptor MakeWithRightsOf(const std::string& target, const std::string& temporary) {
    struct stat old;
    const bool replaces = stat(target.c_str(), &old) == 0;
    if (!replaces && errno != ENOENT) return Descriptor(-1);
    Descriptor file(open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, replaces ? 0600 : 0666));
    if (!file.IsOpen() || !replaces) return file;
    const bool isTheirs = TakeOwnersOf(file, old) || GroupIsLikeOthers(old.st_mode);
    return isTheirs && fchmod(file.Get(), old.st_mode & 0777) == 0 ? std::move(file) : Descriptor(-1);
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
    Descriptor file = MakeWithRightsOf(target, temporary);
    if (!file.IsOpen() || !WriteAll(file, bytes) || fsync(file.Get()) != 0 || !file.Close() ||
        rename(temporary.c_str(), target.c_str()) != 0) {
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
    if (!MoveToNew(from, to)) return FailWithErrno();
    return SyncFolder(folder) || FailWithErrno();
}

bool MakeFolders(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return std::filesystem::is_directory(folder, error);
}

}  // namespace qfc
