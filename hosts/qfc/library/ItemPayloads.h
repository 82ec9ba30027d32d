#pragma once

#include <cstdint>
#include <span>
#include <string>

class CQItem;

namespace qfc::host {

// The payloads of items, in memory that the library frees with its own means. Functions without state; the thread that
// may change the item.

// Each is false when there is no memory for it, and the item then has none.
bool GiveBlackBox(CQItem& item, const std::string& text);
bool GiveCache(CQItem& item, std::span<const std::uint8_t> dib);
// Frames of one size, back to back; `shown` is the one that the cache shows. No bytes: the item stays without a film.
bool GiveFilm(CQItem& item, std::span<const std::uint8_t> film, std::uint32_t frameSize, std::uint32_t shown);

// Lets go of what is stored: afterwards the item is as after loading. The film keeps its sizes, which the row repeats;
// the others are loaded on demand.
void ReleasePayloads(CQItem& item);

}  // namespace qfc::host
