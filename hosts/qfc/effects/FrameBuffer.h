#pragma once

#include <cstddef>
#include <cstdint>

namespace qfc::host {

// Memory for a frame that is given to a plugin. It begins and ends at memory that nobody may touch: a plugin that
// writes beyond a frame ends its process at once, instead of spoiling what is measured. One thread at a time.
class FrameBuffer {
public:
    // A number of pixels that is a multiple of 64, as frames of sides that are multiples of 8 have. Throws
    // std::bad_alloc.
    explicit FrameBuffer(std::size_t pixels);
    ~FrameBuffer();
    FrameBuffer(const FrameBuffer&) = delete;
    FrameBuffer& operator=(const FrameBuffer&) = delete;

    // Aligned to 16 bytes.
    std::uint32_t* Pixels() { return m_pixels; }

private:
    void* m_mapping = nullptr;
    std::size_t m_mapped = 0;
    std::uint32_t* m_pixels = nullptr;
};

}  // namespace qfc::host
