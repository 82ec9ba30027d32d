#include "platform/os/Descriptor.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace qfc {

bool Descriptor::Close() { return m_number < 0 || close(std::exchange(m_number, -1)) == 0; }

bool WriteAll(const Descriptor& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file.Get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool TakeOwnersOf(const Descriptor& file, const struct stat& other) {
    struct stat own;
    if (fstat(file.Get(), &own) != 0) return false;
    if (own.st_uid == other.st_uid && own.st_gid == other.st_gid) return true;
    return fchown(file.Get(), other.st_uid, other.st_gid) == 0 || own.st_gid == other.st_gid ||
           fchown(file.Get(), -1, other.st_gid) == 0;
}

}  // namespace qfc
