#include "platform/os/Descriptor.h"

#include <cerrno>
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

}  // namespace qfc
