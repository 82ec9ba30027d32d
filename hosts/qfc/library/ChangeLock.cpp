#include "hosts/qfc/library/ChangeLock.h"

#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Session.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <unistd.h>

namespace qfc::host {

ChangeLock::ChangeLock() {
    const std::filesystem::path library = LibraryPath();
    std::error_code error;
    std::filesystem::create_directories(library.parent_path(), error);
    m_file = open((library.string() + ".lock").c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666);
    if (m_file == -1) return;
    if (flock(m_file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
    close(m_file);
    throw Failure("another qfc is changing the library");
}

ChangeLock::~ChangeLock() {
    if (m_file != -1) close(m_file);
}

}  // namespace qfc::host
