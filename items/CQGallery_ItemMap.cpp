#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/ItemGuid.h"

int CQGallery::AddItem2Map(CQItem* pItem, ULONGLONG hParent) {
    if (pItem == nullptr) return 0;
    std::list<ULONGLONG> parent{hParent};  // Made first: once the item is owned, nothing may throw.
    ItemEntry& entry = m_itemMap[qfc::GuidOfItem(*pItem)];
    if (entry.parents.empty()) entry.pItem.reset(pItem);
    entry.parents.splice(entry.parents.end(), parent);
    // Kept: only neighbours are made one, so a parent that comes back after another one stands twice.
    entry.parents.unique();
    return 1;
}

int CQGallery::RemoveItemFromMap(CQItem* pItem, ULONGLONG hParent) {
    if (pItem == nullptr) return 0;
    const auto found = m_itemMap.find(qfc::GuidOfItem(*pItem));
    if (found == m_itemMap.end()) return 0;
    ItemEntry& entry = found->second;
    if (entry.pItem == nullptr) return 1;
    entry.parents.remove(hParent);
    if (pItem != entry.pItem.get()) delete pItem;
    if (entry.parents.empty()) m_itemMap.erase(found);
    return 1;
}

int CQGallery::IsItemHasParentByGuid(const GUID& guid, CQItem*& pOut) const {
    const auto found = m_itemMap.find(guid);
    if (found == m_itemMap.end() || found->second.parents.empty()) return 0;
    pOut = found->second.pItem.get();
    return 1;
}

std::list<ULONGLONG> CQGallery::GetItemParentList(const GUID& guid) const {
    const auto found = m_itemMap.find(guid);
    return found != m_itemMap.end() ? found->second.parents : std::list<ULONGLONG>{};
}
