#include "platform/os/FolderLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace qfc {

FolderLock::FolderLock(const std::string& folder)
    : m_folder(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

bool FolderLock::TryLock() {
    if (!m_folder.IsOpen()) return true;
    return flock(m_folder.Get(), LOCK_EX | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR);
}

}  // namespace qfc
