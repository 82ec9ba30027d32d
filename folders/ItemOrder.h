#pragma once

#include "platform/framework/Types.h"

#include <array>
#include <optional>
#include <vector>

class CQItem;

// How the items of a folder are put in order.
namespace qfc {

// The twelve numbers of a description: recording time, then time of the file, year to second. Empty unless there are
// twelve.
using ItemDate = std::array<int, 12>;
std::optional<ItemDate> ReadItemDate(const char* pszDescription);

// "Audio", "Image" or "Movie".
const char* KindWord(DWORD dwItemType);

// Sorts as inserting each item, from the second on, behind the last one that it does not belong in front of. Stable.
// Null entries end up behind all others.
void SortItems(std::vector<CQItem*>& items, DWORD dwSortType, int bAscending);

}  // namespace qfc
