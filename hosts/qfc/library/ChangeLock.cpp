#include "hosts/qfc/library/ChangeLock.h"

#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Session.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/file.h>
#include <unistd.h>

namespace qfc::host {
namespace {

// One that is there is not opened as if it were to be made: in a folder that all share, systems refuse that for the
// files of others.
int OpenLock(const std::string& path, int access) {
    const int flags = access | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const int file = open(path.c_str(), flags);
    return file != -1 || errno != ENOENT ? file : open(path.c_str(), flags | O_CREAT, 0666);
}

// For writing, since a network file system locks nothing else exclusively; for reading where only that is allowed, as
// the lock of another user may be.
int OpenLock(const std::string& path) {
    const int file = OpenLock(path, O_RDWR);
    return file != -1 || (errno != EACCES && errno != EROFS) ? file : OpenLock(path, O_RDONLY);
}

}  // namespace

ChangeLock::ChangeLock() {
    const std::filesystem::path library = LibraryPath();
    std::error_code error;
    std::filesystem::create_directories(library.parent_path(), error);
    m_file = OpenLock(library.string() + ".lock");
    if (m_file == -1) return;
    if (flock(m_file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
    close(m_file);
    throw Failure("another qfc is changing the library");
}

ChangeLock::~ChangeLock() {
    if (m_file != -1) close(m_file);
}

}  // namespace qfc::host
