#include "folders/HeldGuids.h"

#include "items/CQItem.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

namespace qfc {

namespace {

// Comparing with so few is as fast as any set.
constexpr int kFewItems = 32;
// Making a set costs about as much as comparing with its items so many times.
constexpr std::uint64_t kComparisonsWorthASet = 32;

std::atomic<std::uint64_t> g_guidChanges = 0;
std::atomic<std::uint64_t> g_visits = 0;

}  // namespace

std::uint64_t HeldGuids::VisitsSoFar() { return g_visits; }

void HeldGuids::NoteGuidChanged() { ++g_guidChanges; }

bool HeldGuids::MayKnow(const CQFolder::ItemArray& items) {
    return items.GetSize() >= kFewItems && items.NoticesChanges();
}

bool HeldGuids::Has(CQFolder& folder, const GUID& guid) {
    const CQFolder::ItemArray* items = folder.GetItemArray();
    if (items == nullptr) return false;
    const HeldGuids* held = folder.m_pHeldGuids.get();
    const bool known = held != nullptr && MayKnow(*items) && held->IsCurrent(*items);
    return known ? held->Knows(guid) : CompareEach(*items, guid);
}

bool HeldGuids::HasBeforeAdd(CQFolder& folder, const GUID& guid) {
    const CQFolder::ItemArray* items = folder.GetItemArray();
    if (items == nullptr || !MayKnow(*items)) return Has(folder, guid);
    try {
        if (folder.m_pHeldGuids == nullptr) folder.m_pHeldGuids = std::make_unique<HeldGuids>();
        HeldGuids& held = *folder.m_pHeldGuids;
        if (!held.IsCurrent(*items)) held.TakeStockIfItPays(*items);
    } catch (const std::bad_alloc&) {
        folder.m_pHeldGuids.reset();
    }
    return Has(folder, guid);
}

bool HeldGuids::CompareEach(const CQFolder::ItemArray& items, const GUID& guid) {
    g_visits += static_cast<std::uint64_t>(items.GetSize());
    return std::any_of(items.begin(), items.end(),
                       [&](const CQItem* item) { return item != nullptr && item->GetUniqueID() == guid; });
}

bool HeldGuids::IsCurrent(const CQFolder::ItemArray& items) const {
    return m_items == &items && m_itemsModification == items.ModificationCount() && m_guidChanges == g_guidChanges;
}

void HeldGuids::TakeStockIfItPays(const CQFolder::ItemArray& items) {
    m_items = nullptr;
    const auto size = static_cast<std::uint64_t>(items.GetSize());
    if (m_compared < kComparisonsWorthASet * size) {
        m_compared += size;
        return;
    }
    m_compared = 0;
    m_guidChanges = g_guidChanges;
    m_guids.clear();
    m_handedOut.clear();
    for (CQItem* item : items) {
        if (item != nullptr) Take(*item);
    }
    g_visits += size;
    m_items = &items;
    m_itemsModification = items.ModificationCount();
}

void HeldGuids::Take(CQItem& item) {
    if (item.WatchGuid()) {
        m_guids.insert(std::as_const(item).GetUniqueID());
    } else {
        m_handedOut.push_back(&item);
    }
}

bool HeldGuids::Knows(const GUID& guid) const {
    if (m_guids.contains(guid)) return true;
    g_visits += m_handedOut.size();
    return std::any_of(m_handedOut.begin(), m_handedOut.end(),
                       [&](const CQItem* item) { return item->GetUniqueID() == guid; });
}

void HeldGuids::NoteReordered(CQFolder& folder, const CQFolder::ItemArray& items, unsigned long long nBefore) noexcept {
    HeldGuids* held = folder.m_pHeldGuids.get();
    if (held == nullptr || held->m_items != &items || held->m_itemsModification != nBefore) return;
    held->m_itemsModification = items.ModificationCount();
}

void HeldGuids::NoteAppended(CQFolder& folder, const CQFolder::ItemArray& items, CQItem& item) noexcept {
    HeldGuids* held = folder.m_pHeldGuids.get();
    const bool wasCurrent = held != nullptr && held->m_items == &items && held->m_guidChanges == g_guidChanges &&
                            held->m_itemsModification + 1 == items.ModificationCount();
    if (!wasCurrent) return;
    try {
        held->Take(item);
    } catch (const std::bad_alloc&) {
        held->m_items = nullptr;
        return;
    }
    held->m_itemsModification = items.ModificationCount();
}

}  // namespace qfc
