#include "db/DBTools.h"
#include "folders/CQFolder.h"
#include "folders/FolderPath.h"
#include "folders/FolderWalk.h"
#include "folders/GalleryOf.h"
#include "folders/HeldGuids.h"
#include "folders/ImportPort.h"
#include "folders/ObjectArrays.h"
#include "folders/Teardown.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "items/ItemGuid.h"
#include "items/ItemRows.h"
#include "items/ItemTypes.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace {

// The payloads that are only in the item's own library or gallery file are fetched, so that a full copy of it has them.
void FetchPayloads(CQItem& item) {
    for (const int kind : {qfc::kBlackBox, qfc::kBitmapCache, qfc::kFilm}) qfc::FetchPayload(item, kind);
}

}  // namespace

int CQFolder::AddItemDb(CQItem* pItem, int bWriteDb) {
    CQGallery* gallery = qfc::GalleryOf(*this);
    ItemArray* items = pItem != nullptr && gallery != nullptr ? NeedItemArray() : nullptr;
    if (items == nullptr || qfc::HeldGuids::HasBeforeAdd(*this, qfc::GuidOfItem(*pItem))) return 0;
    // What only the item's own library has would be out of reach behind the new tools.
    if (pItem->fnGetDbTools() != m_pDBTools) FetchPayloads(*pItem);
    pItem->fnSetDbTools(m_pDBTools);
    items->MakeRoomForOne();
    if (bWriteDb != 0) {
        // A folder without a row takes nothing: the placement would belong to no folder.
        if (m_nDBId == -1 || m_pDBTools == nullptr || !m_pDBTools->AddItemDb(pItem, this, items->GetSize())) return 0;
        if (gallery->AddItem2Map(pItem, qfc::ToHandle(this)) == 0) return 0;
    }
    Append(*items, *pItem);
    pItem->SetParentFolder(this);
    m_dwAdopt |= pItem->GetItemType();
    return 1;
}

int CQFolder::AddItemFromImportLib(CQItem* pItem) {
    CQGallery* gallery = qfc::GalleryOf(*this);
    const qfc::ImportPort add = qfc::CurrentImportPort();
    if (pItem == nullptr || gallery == nullptr || add == nullptr) return 0;
    const std::vector<CString> paths{qfc::FolderPathText(this)};
    // A path that leads to another folder (a sibling of the same name) would put the item there.
    if (gallery->GetFolderByPath(paths.front()) != this) return 0;
    const ULONGLONG handle = qfc::ToHandle(gallery);
    CQItem* existing = nullptr;
    if (gallery->IsItemInFolder(gallery, pItem, existing, 1) != 0) {
        CQItem* held = nullptr;
        return IsItemInFolder(this, pItem, held, 0) != 0 ? 0 : add(handle, paths, existing);
    }
    FetchPayloads(*pItem);
    auto copy = std::make_unique<CQItem>();
    copy->Copy(pItem, qfc::copy_mask::kAll);
    copy->SetParentFolder(this);
    copy->SetUniqueID(qfc::GuidOfItem(*pItem));
    const int added = add(handle, paths, copy.get());
    // The service answers 1 also when the folder did not take the item; then it is still ours.
    CQItem* known = nullptr;
    const bool taken = gallery->IsItemHasParentByGuid(qfc::GuidOfItem(*copy), known) != 0 && known == copy.get();
    if (taken || qfc::Holds(GetItemArray(), copy.get())) static_cast<void>(copy.release());
    return added;
}

int CQFolder::RemoveItemDB(GUID guid, int bRecursive) {
    CQGallery* gallery = qfc::GalleryOf(*this);
    if (m_nDBId < 0 || m_pDBTools == nullptr || gallery == nullptr) return 0;
    if (bRecursive != 0) {
        for (CQFolder* folder : qfc::SubtreeOf(*gallery)) {
            if (folder->HasItem(guid, 0) != 0) folder->RemoveItemDB(guid, 0);
        }
        return 1;
    }
    ItemArray* items = GetItemArray();
    const int count = items != nullptr ? items->GetSize() : 0;
    for (int position = 0; position < count; ++position) {
        CQItem* item = items->GetAt(position);
        if (item == nullptr || !(qfc::GuidOfItem(*item) == guid)) continue;
        qfc::DropOccurrences(*items, item);
        const qfc::Teardown teardown(*this, qfc::Teardown::Extent::kOwnItems);
        if (!qfc::Teardown::LeaveIndex(*item, *this)) qfc::Teardown::PassOn(item, *this);
        return m_pDBTools->DeleteItemFromFolder(guid, m_nDBId);
    }
    return 0;
}

int CQFolder::UpdateItemDB(const CQItem* pSource, const GUID& guid, DWORD dwFlags) {
    if (pSource == nullptr) return 0;
    for (CQFolder* folder : qfc::UntilBackAt(*this)) {
        const ItemArray* items = folder->GetItemArray();
        if (items == nullptr) continue;
        for (CQItem* item : *items) {
            if (item == nullptr || !(qfc::GuidOfItem(*item) == guid)) continue;
            item->TryLoadBB();
            item->Copy(pSource, dwFlags);
            return item->UpdateItemDB();
        }
    }
    return 1;
}

int CQFolder::ReOrderItemsDb(int nFirst, int nCount) {
    const ItemArray* items = GetItemArray();
    if (items == nullptr) return 0;
    const bool stored = m_pDBTools != nullptr && m_nDBId != -1;
    const int end = nCount == -1 ? items->GetSize() : std::min(nCount, items->GetSize());
    for (int position = std::max(nFirst, 0); position < end; ++position) {
        CQItem* item = items->GetAt(position);
        if (item != nullptr && stored) m_pDBTools->ReOrderItemsDb(item, this, position);
    }
    return 1;
}
