#include "folders/FolderNumbers.h"

#include "folders/TreeChanges.h"
#include "items/CQItem.h"

#include <atomic>
#include <limits>
#include <new>
#include <vector>

namespace qfc {

namespace {
std::atomic<std::uint64_t> g_itemNumberChanges = 0;
std::atomic<std::uint64_t> g_visits = 0;
}  // namespace

void NumberRuns::Add(DWORD dwNumber) {
    auto next = m_runs.upper_bound(dwNumber);
    if (next != m_runs.begin()) {
        auto run = std::prev(next);
        if (dwNumber <= run->second) return;
        if (dwNumber - run->second == 1) {
            run->second = dwNumber;
            if (next != m_runs.end() && next->first - dwNumber == 1) {
                run->second = next->second;
                m_runs.erase(next);
            }
            return;
        }
    }
    if (next != m_runs.end() && next->first - dwNumber == 1) {
        const DWORD last = next->second;
        m_runs.erase(next);
        m_runs.emplace(dwNumber, last);
        return;
    }
    m_runs.emplace(dwNumber, dwNumber);
}

bool NumberRuns::Has(DWORD dwNumber) const {
    auto next = m_runs.upper_bound(dwNumber);
    return next != m_runs.begin() && dwNumber <= std::prev(next)->second;
}

DWORD NumberRuns::FirstFree(DWORD dwFrom) const {
    auto next = m_runs.upper_bound(dwFrom);
    if (next == m_runs.begin() || dwFrom > std::prev(next)->second) return dwFrom;
    const DWORD last = std::prev(next)->second;
    if (last != std::numeric_limits<DWORD>::max()) return last + 1;
    const auto first = m_runs.begin();
    return first->first != 0 ? 0 : first->second + 1;
}

FolderNumbers& FolderNumbers::Of(CQFolder& folder) {
    if (folder.m_pNumbers == nullptr) folder.m_pNumbers = std::make_unique<FolderNumbers>();
    return *folder.m_pNumbers;
}

std::uint64_t FolderNumbers::VisitsSoFar() { return g_visits; }

void FolderNumbers::NoteItemNumberChanged() { ++g_itemNumberChanges; }

const NumberRuns& FolderNumbers::StreamNumbersOf(CQFolder& folder, CQFolder::ItemArray& items) {
    FolderNumbers& numbers = Of(folder);
    if (numbers.m_items == &items && numbers.m_itemsModification == items.ModificationCount() &&
        items.NoticesChanges() && numbers.m_itemNumberChanges == g_itemNumberChanges) {
        return numbers.m_streams;
    }
    numbers.m_itemNumberChanges = g_itemNumberChanges;
    numbers.m_streams.Clear();
    for (CQItem* item : items) {
        if (item == nullptr) continue;
        numbers.m_streams.Add(CQFolder::CountNumberOf(*item));
    }
    g_visits += static_cast<std::uint64_t>(items.GetSize());
    numbers.m_items = &items;
    numbers.m_itemsModification = items.ModificationCount();
    return numbers.m_streams;
}

void FolderNumbers::NoteAppended(CQFolder& folder, const CQFolder::ItemArray& items, CQItem& item) noexcept {
    FolderNumbers* numbers = folder.m_pNumbers.get();
    if (numbers == nullptr || numbers->m_items != &items ||
        numbers->m_itemsModification + 1 != items.ModificationCount()) {
        return;
    }
    try {
        numbers->m_streams.Add(CQFolder::CountNumberOf(item));
    } catch (const std::bad_alloc&) {
        numbers->m_items = nullptr;
        return;
    }
    numbers->m_itemsModification = items.ModificationCount();
}

bool FolderNumbers::CountStorages(CQFolder& fileRoot) {
    bool watched = true;
    std::vector<CQFolder*> pending{&fileRoot};
    while (!pending.empty()) {
        CQFolder* folder = pending.back();
        pending.pop_back();
        ++g_visits;
        m_storages.Add(folder->m_dwStorageNumber);
        CQFolder::FolderList* list = folder->GetFolderList();
        if (list == nullptr) continue;
        watched = watched && list->ChangeCounter() == &TreeChanges();
        for (CQFolder* child : *list) {
            if (child != nullptr && child->GetFilePath().IsEmpty()) pending.push_back(child);
        }
    }
    return watched;
}

const NumberRuns& FolderNumbers::StorageNumbersOf(CQFolder& fileRoot) {
    FolderNumbers& numbers = Of(fileRoot);
    const std::uint64_t changes = TreeChanges();
    if (numbers.m_storagesKnown && numbers.m_treeChanges == changes) return numbers.m_storages;
    numbers.m_storages.Clear();
    numbers.m_storagesKnown = numbers.CountStorages(fileRoot);
    numbers.m_treeChanges = changes;
    return numbers.m_storages;
}

void FolderNumbers::NoteReordered(CQFolder& folder, std::uint64_t nTreeChangesBefore) {
    FolderNumbers* numbers = folder.GetFileRoot()->m_pNumbers.get();
    if (numbers != nullptr && numbers->m_treeChanges == nTreeChangesBefore) numbers->m_treeChanges = TreeChanges();
}

void FolderNumbers::AssignStorageNumber(CQFolder& child, std::uint64_t nTreeChangesBefore) {
    CQFolder* fileRoot = child.GetFileRoot();
    FolderNumbers& numbers = Of(*fileRoot);
    const std::uint64_t changes = TreeChanges();
    // A childless folder without a number adds only the number 0, which is never asked for.
    const bool bare = child.m_dwStorageNumber == 0 && child.GetFirstSubFolder() == nullptr;
    if (bare && numbers.m_treeChanges == nTreeChangesBefore && changes == nTreeChangesBefore + 1) {
        numbers.m_treeChanges = changes;
    }
    child.m_dwStorageNumber = fileRoot->GetNewFolderStorageNumber();
    if (bare) {
        numbers.m_storages.Add(child.m_dwStorageNumber);
    } else {
        ++TreeChanges();
    }
}

}  // namespace qfc
