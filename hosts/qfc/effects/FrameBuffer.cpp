#include "hosts/qfc/effects/FrameBuffer.h"

#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace qfc::host {

FrameBuffer::FrameBuffer(std::size_t pixels) {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t bytes = pixels * sizeof(std::uint32_t);
    const std::size_t usable = (bytes + page - 1) / page * page;
    m_mapped = usable + 2 * page;
    m_mapping = mmap(nullptr, m_mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m_mapping == MAP_FAILED) throw std::bad_alloc();
    auto* const first = static_cast<std::uint8_t*>(m_mapping) + page;
    if (mprotect(first, usable, PROT_READ | PROT_WRITE) != 0) {
        munmap(m_mapping, m_mapped);
        throw std::bad_alloc();
    }
    // The end is where plugins overrun, so it is the end that lies against the wall.
    m_pixels = reinterpret_cast<std::uint32_t*>(first + usable - bytes);
}

FrameBuffer::~FrameBuffer() { munmap(m_mapping, m_mapped); }

}  // namespace qfc::host
