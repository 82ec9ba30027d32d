#pragma once

#include <cstdint>

// The plain types of the interface. Widths are those of the interface on every system: a DWORD or a LONG has 32 bits
// also where a C++ long has 64.
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONGLONG = std::uint64_t;
using LPARAM = std::intptr_t;
using HANDLE = void*;
using HINSTANCE = void*;

struct SIZE {
    std::int32_t cx;
    std::int32_t cy;
};

// Size of the path buffers of the interface, the closing NUL included.
inline constexpr int MAX_PATH = 260;
