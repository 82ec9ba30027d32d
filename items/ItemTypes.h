#pragma once

#include "db/DbRecords.h"
#include "platform/framework/Types.h"

#include <bit>
#include <optional>

// Constants of the library item: type and attribute bits, payload kinds (from db/) and the groups that CQItem::Copy
// knows. Plain values only; every layer above may include this.
namespace qfc {

// Item types are single bits. These five have translated names; hosts may use any other bit.
namespace item_type {
inline constexpr DWORD kVideo = 1;
inline constexpr DWORD kTransition = 64;
inline constexpr DWORD kVideoFilter = 128;
inline constexpr DWORD kAudioFilter = 256;
inline constexpr DWORD kSpeed = 0x4000000;
}  // namespace item_type

// Attribute bit 0: the item has a film. Without it no film is loaded or handed out.
inline constexpr DWORD kAttribHasFilm = 1;

// Mask bits of CQItem::Copy.
namespace copy_mask {
inline constexpr DWORD kFields = 1;
inline constexpr DWORD kBlackBox = 2;
inline constexpr DWORD kDataBlock = 4;
inline constexpr DWORD kCache = 8;
inline constexpr DWORD kFilm = 16;
inline constexpr DWORD kAll = 0xFFFFFFFF;
}  // namespace copy_mask

// Per-type tables have one entry for each type bit.
inline constexpr int kItemTypeSlots = 32;

// The table entry of an item type: the position of its highest set bit. Type 0 has no entry.
constexpr std::optional<int> ItemTypeSlot(DWORD dwType) {
    if (dwType == 0) return std::nullopt;
    return std::bit_width(dwType) - 1;
}

}  // namespace qfc
