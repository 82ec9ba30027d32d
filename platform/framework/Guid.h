#pragma once

#include "platform/Export.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Identifier of items, tags and tag categories. Its 16 bytes in memory are what the database stores. A plain value:
// each object belongs to one thread at a time.
struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16, "a GUID is stored as its 16 bytes");

inline constexpr GUID GUID_NULL{};

inline bool operator==(const GUID& left, const GUID& right) { return std::memcmp(&left, &right, sizeof(GUID)) == 0; }

// The order of the 16 raw bytes, the same in which the database sorts them.
inline bool operator<(const GUID& left, const GUID& right) { return std::memcmp(&left, &right, sizeof(GUID)) < 0; }

namespace qfc {

// The bytes as stored; valid as long as the GUID is.
inline std::span<const std::byte, 16> GuidBytes(const GUID& guid) {
    return std::span<const std::byte, 16>(reinterpret_cast<const std::byte*>(&guid), sizeof(GUID));
}

// Empty unless there are exactly 16 bytes: columns that hold GUIDs are untyped and may hold anything.
inline std::optional<GUID> GuidFromBytes(const void* bytes, std::size_t length) {
    if (bytes == nullptr || length != sizeof(GUID)) return std::nullopt;
    GUID guid;
    std::memcpy(&guid, bytes, sizeof(GUID));
    return guid;
}

// "00112233-4455-6677-8899-AABBCCDDEEFF": upper case, no braces.
QFCLIB_API std::string GuidToText(const GUID& guid);

// Reads the same form, in either case, with or without one pair of braces; anything else is empty.
QFCLIB_API std::optional<GUID> GuidFromText(std::string_view text);

}  // namespace qfc
