#pragma once

#include "platform/Export.h"
#include "platform/framework/Types.h"

#include <cstddef>
#include <span>
#include <utility>

using HGLOBAL = void*;

inline constexpr UINT GMEM_MOVEABLE = 0x0002;
inline constexpr UINT GMEM_ZEROINIT = 0x0040;
inline constexpr UINT GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;

// Global memory blocks: a handle, and a pointer to its bytes while it is locked. Every function may be called from any
// thread; a block itself is not locked against use from two.

// A zeroed block; null when there is no memory or the flags lack GMEM_MOVEABLE. Size 0 gives the handle of a block
// without bytes, for which GlobalLock is null.
QFCLIB_API HGLOBAL GlobalAlloc(UINT flags, std::size_t size);
// Each lock wants one GlobalUnlock. The pointer stays the same as long as the block lives.
QFCLIB_API void* GlobalLock(HGLOBAL block);
// Non-zero while other locks remain.
QFCLIB_API int GlobalUnlock(HGLOBAL block);
// Null on success, also for null; the handle itself when it is none.
QFCLIB_API HGLOBAL GlobalFree(HGLOBAL block);
// The handle of a pointer that GlobalLock gave; null for null.
QFCLIB_API HGLOBAL GlobalHandle(const void* pointer);
QFCLIB_API std::size_t GlobalSize(HGLOBAL block);

namespace qfc {

// The allocators of payload buffers. Bitmap caches and films are global blocks, black boxes plain ones; a buffer given
// to an item is freed by the library, so hosts get it from here too. Bytes are zeroed. Null for size 0 or without
// memory; freeing null does nothing.
QFCLIB_API void* AllocGlobalBlock(std::size_t size);
QFCLIB_API void FreeGlobalBlock(void* pointer);
QFCLIB_API void* AllocPlainBlock(std::size_t size);
QFCLIB_API void FreePlainBlock(void* pointer);

// Owns one payload buffer together with its size. Empty when the allocation failed or the size is 0.
template <void* (*Allocate)(std::size_t), void (*Free)(void*)>
class PayloadBlock {
public:
    PayloadBlock() = default;
    explicit PayloadBlock(std::size_t size) : m_pointer(Allocate(size)), m_size(m_pointer != nullptr ? size : 0) {}
    // Takes ownership.
    PayloadBlock(void* pointer, std::size_t size) : m_pointer(pointer), m_size(pointer != nullptr ? size : 0) {}
    ~PayloadBlock() { reset(); }
    PayloadBlock(PayloadBlock&& other) noexcept
        : m_pointer(std::exchange(other.m_pointer, nullptr)), m_size(std::exchange(other.m_size, 0)) {}
    PayloadBlock& operator=(PayloadBlock&& other) noexcept {
        std::swap(m_pointer, other.m_pointer);
        std::swap(m_size, other.m_size);
        return *this;
    }

    explicit operator bool() const { return m_pointer != nullptr; }
    BYTE* data() const { return static_cast<BYTE*>(m_pointer); }
    std::size_t size() const { return m_size; }
    std::span<std::byte> bytes() const { return {static_cast<std::byte*>(m_pointer), m_size}; }

    // Hands the buffer over; the caller frees it.
    [[nodiscard]] void* release() {
        m_size = 0;
        return std::exchange(m_pointer, nullptr);
    }
    void reset() {
        m_size = 0;
        Free(std::exchange(m_pointer, nullptr));
    }

private:
    void* m_pointer = nullptr;
    std::size_t m_size = 0;
};

using GlobalBlock = PayloadBlock<&AllocGlobalBlock, &FreeGlobalBlock>;
using PlainBlock = PayloadBlock<&AllocPlainBlock, &FreePlainBlock>;

}  // namespace qfc
