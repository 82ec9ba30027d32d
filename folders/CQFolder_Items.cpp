#include "db/DBTools.h"
#include "folders/CQFolder.h"
#include "folders/FolderNumbers.h"
#include "folders/GalleryFile.h"
#include "folders/HeldGuids.h"
#include "folders/ObjectArrays.h"
#include "folders/Teardown.h"
#include "items/CQItem.h"
#include "items/ItemGuid.h"

#include <utility>

namespace {

template <class Matches>
int PositionOf(CQFolder::ItemArray* items, Matches&& matches) {
    const int count = items != nullptr ? items->GetSize() : 0;
    for (int position = 0; position < count; ++position) {
        CQItem* item = items->GetAt(position);
        if (item != nullptr && matches(*item)) return position;
    }
    return -1;
}

// An item that is ended afterwards leaves every place it has; another one is passed on once it has left the last.
void TakeOut(CQFolder& folder, int position, int bDelete) {
    CQFolder::ItemArray& items = *folder.GetItemArray();
    CQItem* item = items.GetAt(position);
    if (bDelete != 0) {
        qfc::DropOccurrences(items, item);
    } else {
        items.RemoveAt(position);
        const qfc::Teardown teardown(folder, qfc::Teardown::Extent::kOwnItems);
        if (item->GetParentFolder() == &folder && !qfc::Holds(&items, item)) qfc::Teardown::PassOn(item, folder);
    }
}

}  // namespace

DWORD CQFolder::CountNumberOf(CQItem& item) {
    item.m_bCounted = true;
    return item.m_dwNumber;
}

int CQFolder::AddItem(CQItem* pItem, int bSetParent) {
    ItemArray* items = pItem != nullptr ? NeedItemArray() : nullptr;
    if (items == nullptr) return 0;
    const DWORD number = GetNewItemStreamNumber();
    items->MakeRoomForOne();
    if (pItem->m_bAttached == 0) {
        m_dwAdopt |= pItem->m_dwItemType;
        if (bSetParent != 0) {
            pItem->SetParentFolder(this);
            pItem->m_bAttached = 1;
            if (pItem->m_bCounted && pItem->m_dwNumber != number) qfc::FolderNumbers::NoteItemNumberChanged();
            pItem->m_dwNumber = number;
        }
    }
    Append(*items, *pItem);
    return 1;
}

void CQFolder::Append(ItemArray& items, CQItem& item) {
    items.Add(&item);
    m_bCleared = false;
    qfc::FolderNumbers::NoteAppended(*this, items, item);
    qfc::HeldGuids::NoteAppended(*this, items, item);
}

int CQFolder::RemoveItem(const GUID& guid, int bDelete) {
    const GUID wanted = guid;  // May be the item's own, and the item may die.
    ItemArray* items = GetItemArray();
    const int position = PositionOf(items, [&](CQItem& item) {
        item.TryLoadBB();
        return qfc::GuidOfItem(item) == wanted;
    });
    if (position < 0) return 0;
    CQItem* item = items->GetAt(position);
    TakeOut(*this, position, bDelete);
    return bDelete != 0 ? DeleteItemEx(item, m_pStorage) : 1;
}

// Kept: unlike the removal by GUID, the other two store the new positions of what stood behind.
int CQFolder::RemoveAndRenumber(int nPosition, int bDelete) {
    ItemArray* items = GetItemArray();
    CQItem* item = items->GetAt(nPosition);
    TakeOut(*this, nPosition, bDelete);
    if (bDelete == 0) return 1;
    const int deleted = DeleteItemEx(item, m_pStorage);
    ReOrderItemsDb(nPosition, items->GetSize());
    return deleted;
}

int CQFolder::RemoveItem(int nId, int bDelete) {
    const int position = PositionOf(GetItemArray(), [&](CQItem& item) {
        item.TryLoadBB();
        return item.GetDBID() == nId;
    });
    return position < 0 ? 0 : RemoveAndRenumber(position, bDelete);
}

int CQFolder::RemoveItem2(DWORD dwNumber, int bDelete) {
    const int position = PositionOf(GetItemArray(), [&](const CQItem& item) { return item.GetNumber() == dwNumber; });
    return position < 0 ? 0 : RemoveAndRenumber(position, bDelete);
}

int CQFolder::RemoveAllItems(int bDelete) {
    ItemArray* items = GetItemArray();
    if (items == nullptr) return 0;
    const qfc::Teardown teardown(*this, qfc::Teardown::Extent::kOwnItems);
    if (bDelete != 0) {
        for (int position = 0; position < items->GetSize(); ++position) {
            CQItem* item = items->GetAt(position);
            if (item == nullptr) continue;
            items->SetAt(position, nullptr);
            DeleteItemEx(item, m_pStorage);
            // Only the place just emptied: what stands behind it goes as well and keeps its position until then.
            ReOrderItemsDb(position, position + 1);
        }
    }
    for (const CObject* object : std::as_const(static_cast<CObArray&>(*items))) qfc::Teardown::PassOn(object, *this);
    items->RemoveAll();
    if (qfc::GalleryFile* file = qfc::GalleryFileOf(*this)) file->CloseFolderStorage(*this);
    return 1;
}

int CQFolder::DeleteItemEx(CQItem* pItem, IStorage* /*pStorage*/) {
    if (pItem == nullptr) return 0;
    const qfc::Teardown teardown(*this, qfc::Teardown::Extent::kOwnItems);
    const GUID guid = qfc::GuidOfItem(*pItem);
    int done = 1;
    if (qfc::GalleryFile* file = qfc::GalleryFileOf(*this)) done = file->DeleteItemStreams(*this, *pItem);
    qfc::Teardown::LetGo(pItem, *this);
    if (m_nDBId != -1 && m_pDBTools != nullptr && !m_pDBTools->DeleteItemFromFolder(guid, m_nDBId)) return 0;
    return done;
}
