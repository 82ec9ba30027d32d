#include "platform/os/Memory.h"

#include "platform/os/LastError.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

constexpr std::uint64_t kAlive = 0x4B4C4247'4B434F4C;
// Payload sizes have 32 bits; anything larger is a wrong size, not a wish for memory.
constexpr std::size_t kLargestBlock = 0xFFFFFFFF;

// Stands directly before the bytes. Its address is the handle.
struct alignas(std::max_align_t) BlockHeader {
    std::uint64_t mark;
    std::size_t size;
    std::atomic<int> locks;

    void* Bytes() { return size != 0 ? this + 1 : nullptr; }
};

BlockHeader* AsHeader(HGLOBAL block) {
    auto* header = static_cast<BlockHeader*>(block);
    if (header != nullptr && header->mark == kAlive) return header;
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

}  // namespace

HGLOBAL GlobalAlloc(UINT flags, std::size_t size) {
    if ((flags & GMEM_MOVEABLE) == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    void* memory = size <= kLargestBlock ? std::calloc(1, sizeof(BlockHeader) + size) : nullptr;
    if (memory == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    return new (memory) BlockHeader{kAlive, size, 0};
}

void* GlobalLock(HGLOBAL block) {
    BlockHeader* header = AsHeader(block);
    if (header == nullptr || header->size == 0) return nullptr;
    ++header->locks;
    return header->Bytes();
}

int GlobalUnlock(HGLOBAL block) {
    BlockHeader* header = AsHeader(block);
    if (header == nullptr || header->locks == 0) return 0;
    return --header->locks != 0;
}

HGLOBAL GlobalFree(HGLOBAL block) {
    if (block == nullptr) return nullptr;
    BlockHeader* header = AsHeader(block);
    if (header == nullptr) return block;
    header->mark = 0;
    header->~BlockHeader();
    std::free(header);
    return nullptr;
}

HGLOBAL GlobalHandle(const void* pointer) {
    if (pointer == nullptr) return nullptr;
    return AsHeader(static_cast<BlockHeader*>(const_cast<void*>(pointer)) - 1);
}

std::size_t GlobalSize(HGLOBAL block) {
    const BlockHeader* header = AsHeader(block);
    return header != nullptr ? header->size : 0;
}

namespace qfc {

void* AllocGlobalBlock(std::size_t size) {
    if (size == 0) return nullptr;
    const HGLOBAL block = GlobalAlloc(GHND, size);
    return block != nullptr ? GlobalLock(block) : nullptr;
}

void FreeGlobalBlock(void* pointer) {
    const HGLOBAL block = GlobalHandle(pointer);
    if (block == nullptr) return;
    GlobalUnlock(block);
    GlobalFree(block);
}

void* AllocPlainBlock(std::size_t size) {
    if (size == 0 || size > kLargestBlock) return nullptr;
    return new (std::nothrow) BYTE[size]();
}

void FreePlainBlock(void* pointer) { delete[] static_cast<BYTE*>(pointer); }

}  // namespace qfc
