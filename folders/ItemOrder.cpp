#include "folders/ItemOrder.h"

#include "folders/FolderConstants.h"
#include "items/CQItem.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace qfc {

namespace {

int Negated(int result, bool bNegate) { return bNegate ? -result : result; }

// Items without a readable date, or without a year, end up last whatever the direction.
int CompareDates(const std::optional<ItemDate>& a, const std::optional<ItemDate>& b, int bAscending) {
    if (!a.has_value()) return b.has_value() ? -1 : 0;
    if (!b.has_value()) return 1;
    const bool aWithoutYear = a->front() == 0;
    const bool bWithoutYear = b->front() == 0;
    if (aWithoutYear != bWithoutYear) return aWithoutYear ? -1 : 1;
    if (*a == *b) return 0;
    return Negated(*a < *b ? 1 : -1, bAscending == 0);
}

// What is compared, read once per item.
struct SortKey {
    CQItem* item;
    std::optional<ItemDate> date;
};

int CompareKeys(const SortKey& a, const SortKey& b, DWORD dwSortType, int bAscending) {
    switch (dwSortType) {
        case kSortByDate:
            return CompareDates(a.date, b.date, bAscending);
        case kSortByKind: {
            const CString later = KindWord(b.item->GetItemType());
            return Negated(later.CompareNoCase(KindWord(a.item->GetItemType())), bAscending == 0);
        }
        default:
            return Negated(b.item->GetItemName().CompareNoCase(a.item->GetItemName()), bAscending == 0);
    }
}

}  // namespace

std::optional<ItemDate> ReadItemDate(const char* pszDescription) {
    ItemDate date{};
    const char* next = pszDescription;
    for (int& number : date) {
        // Blanks, a sign and decimal digits, as the scanning functions read a number; what is too large is limited.
        char* end = nullptr;
        const long value = std::strtol(next, &end, 10);
        if (end == next) return std::nullopt;
        number =
            static_cast<int>(std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
        next = end;
    }
    return date;
}

const char* KindWord(DWORD dwItemType) {
    switch (dwItemType) {
        case 2:
        case 0x80000:
            return "Audio";
        case 4:
        case 0x800:
        case 0x100000:
            return "Image";
        default:
            return "Movie";
    }
}

// Every comparison is a strict weak order, so a stable merge sort gives what inserting one by one would.
void SortItems(std::vector<CQItem*>& items, DWORD dwSortType, int bAscending) {
    std::vector<SortKey> keys;
    keys.reserve(items.size());
    for (CQItem* item : items) {
        if (item == nullptr) continue;
        item->TryLoadBB();
        keys.push_back({item, dwSortType == kSortByDate ? ReadItemDate(item->GetDescription()) : std::nullopt});
    }
    std::stable_sort(keys.begin(), keys.end(),
                     [&](const SortKey& x, const SortKey& y) { return CompareKeys(y, x, dwSortType, bAscending) < 0; });
    std::fill(items.begin(), items.end(), nullptr);
    std::transform(keys.begin(), keys.end(), items.begin(), [](const SortKey& key) { return key.item; });
}

}  // namespace qfc
