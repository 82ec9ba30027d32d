#include "folders/CQFolder.h"
#include "folders/FolderConstants.h"
#include "folders/FolderNumbers.h"
#include "folders/GlobalProc.h"
#include "folders/ItemOrder.h"
#include "folders/TreeChanges.h"
#include "items/CQItem.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace {

int Sign(int value) { return value > 0 ? 1 : value < 0 ? -1 : 0; }

// Compares two items by a list of keys; the first key that tells them apart decides.
class KeyComparison {
public:
    KeyComparison(std::span<const int> keys, qfc::GlobalProc proc) : m_keys(keys), m_proc(proc) {}

    int operator()(CQItem* a, CQItem* b) const {
        if (a == nullptr || b == nullptr) return 0;
        for (const int key : m_keys) {
            const int result = Sign(ByKey(key, *a, *b));
            if (result != 0) return result;
        }
        return 0;
    }

private:
    int ByKey(int key, CQItem& a, CQItem& b) const {
        if (key > qfc::kKeyAnnotation) {
            return m_proc(qfc::kMessageCompareItems, static_cast<ULONGLONG>(key), reinterpret_cast<std::intptr_t>(&a),
                          &b);
        }
        if (key == qfc::kKeyName) return a.GetItemName().CompareNoCase(b.GetItemName());
        if (key == qfc::kKeyDescription) return a.GetDescription().CompareNoCase(b.GetDescription());
        if (key == qfc::kKeyAnnotation) return a.GetAnnotation().CompareNoCase(b.GetAnnotation());
        return 0;
    }

    std::span<const int> m_keys;
    qfc::GlobalProc m_proc;
};

// Moves the item at `first` to its place in [first, last] and returns that place.
int Partition(CQFolder::ItemArray& items, int first, int last, const KeyComparison& compare) {
    const auto swap = [&](int x, int y) {
        CQItem* kept = items.GetAt(x);
        items.SetAt(x, items.GetAt(y));
        items.SetAt(y, kept);
    };
    if (compare(items.GetAt(first), items.GetAt(last)) > 0) swap(first, last);
    CQItem* pivot = items.GetAt(first);
    int i = first;
    int j = last + 1;
    while (true) {
        do ++i;
        while (i < last && compare(items.GetAt(i), pivot) < 0);
        do --j;
        while (j > first && compare(items.GetAt(j), pivot) > 0);
        if (i >= j) break;
        swap(i, j);
    }
    if (first != j) swap(first, j);
    return j;
}

}  // namespace

int CQFolder::SortSubFolder() {
    FolderList* list = GetFolderList();
    if (list == nullptr) return 0;
    if (list->GetCount() < 2) return 1;
    const auto before = [](const CQFolder* a, const CQFolder* b) { return a->m_nIndex < b->m_nIndex; };
    std::vector<CQFolder*> folders;
    try {
        folders.assign(list->begin(), list->end());
    } catch (const std::bad_alloc&) {
        return 0;
    }
    if (std::erase(folders, nullptr) == 0 && std::is_sorted(folders.begin(), folders.end(), before)) return 1;
    std::stable_sort(folders.begin(), folders.end(), before);
    const std::uint64_t changes = qfc::TreeChanges();
    // In place: a list that is filled anew could lose folders when memory ends.
    POSITION position = list->GetHeadPosition();
    for (CQFolder* folder : folders) {
        list->SetAt(position, folder);
        list->GetNext(position);
    }
    while (list->GetCount() > static_cast<int>(folders.size())) list->RemoveTail();
    qfc::FolderNumbers::NoteReordered(*this, changes);
    return 1;
}

int CQFolder::SortingAllItem(DWORD dwSortType, int bAscending) {
    ItemArray* items = GetItemArray();
    if (items == nullptr || items->GetSize() < 2) return 0;
    std::vector<CQItem*> sorted(items->begin(), items->end());
    qfc::SortItems(sorted, dwSortType, bAscending);
    for (int position = 0; position < items->GetSize(); ++position) {
        items->SetAt(position, sorted[static_cast<std::size_t>(position)]);
    }
    SetSortInfo(dwSortType, bAscending);
    return 1;
}

// The parts still to be sorted stand on a stack of our own, the left one on top, so that an unlucky order cannot
// overflow the thread's.
int CQFolder::Sorting(int* pKeys, int nKeyCount, int nFirst, int nLast) {
    ItemArray* items = GetItemArray();
    if (items == nullptr) return 1;
    if (nFirst >= nLast) return 0;
    const qfc::GlobalProc proc = qfc::CurrentGlobalProc();
    if (proc == nullptr || pKeys == nullptr || nKeyCount < 1) return 1;
    if (nFirst < 0 || nLast >= items->GetSize()) AfxThrowInvalidArgException();
    const KeyComparison compare(std::span(pKeys, static_cast<std::size_t>(nKeyCount)), proc);
    std::vector<std::pair<int, int>> parts{{nFirst, nLast}};
    while (!parts.empty()) {
        const auto [first, last] = parts.back();
        parts.pop_back();
        if (first >= last) continue;
        const int place = Partition(*items, first, last, compare);
        parts.emplace_back(place + 1, last);
        parts.emplace_back(first, place - 1);
    }
    return 1;
}
