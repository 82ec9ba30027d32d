#include "api/names/PathRules.h"
#include "folders/CQFolder.h"
#include "folders/FolderConstants.h"
#include "folders/FolderWalk.h"
#include "folders/GalleryOf.h"
#include "folders/HeldGuids.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/ItemTypes.h"

namespace {

// Items with this path are told apart by their names.
constexpr const char* kBaseClip = "BaseClip";

template <class Matches>
CQItem* FirstItem(CQFolder::ItemArray* items, Matches&& matches) {
    if (items == nullptr) return nullptr;
    for (CQItem* item : *items) {
        if (item != nullptr && matches(*item)) return item;
    }
    return nullptr;
}

template <class Matches>
CQFolder* FirstFolder(CQFolder& start, Matches&& matches) {
    for (CQFolder* folder : qfc::SubtreeOf(start)) {
        if (matches(*folder)) return folder;
    }
    return nullptr;
}

// In the folder itself or, recursively, in the folders met until the walk is back at it.
template <class Matches>
CQItem* FirstItemIn(CQFolder& folder, int bRecursive, Matches&& matches) {
    if (bRecursive == 0) return FirstItem(folder.GetItemArray(), matches);
    for (CQFolder* met : qfc::UntilBackAt(folder)) {
        if (CQItem* item = FirstItem(met->GetItemArray(), matches)) return item;
    }
    return nullptr;
}

int Found(CQItem* item, CQItem*& pFound) {
    if (item == nullptr) return 0;
    pFound = item;
    return 1;
}

void LoadFilmOf(CQItem& item) {
    if ((item.GetAttrib() & qfc::kAttribHasFilm) != 0) item.TryLoadFilm();
}

}  // namespace

CQFolder* CQFolder::GetFolderByName(const CString& strName) {
    const FolderList* list = GetFolderList();
    if (list == nullptr) return nullptr;
    for (CQFolder* child : *list) {
        if (child != nullptr && child->m_strFolderName == strName) return child;
    }
    return nullptr;
}

CQFolder* CQFolder::GetFolderByPath(const CString& strPath) {
    CQFolder* reached = nullptr;
    for (const CString& name : qfc::SplitFolderPath(strPath)) {
        reached = (reached != nullptr ? reached : this)->GetFolderByName(name);
        if (reached == nullptr) return nullptr;
    }
    return reached;
}

CQFolder* CQFolder::GetSubFolder(const CString& strName, POSITION pos) {
    CQFolder* reached = GetFolderByName(strName);
    const CStringList steps;  // Positions stand for themselves: any list can follow one.
    while (reached != nullptr && pos != nullptr) reached = reached->GetFolderByName(steps.GetNext(pos));
    return reached;
}

CQFolder* CQFolder::GetSubFolderByName(const CString& strName) {
    return FirstFolder(*this, [&](const CQFolder& folder) { return folder.m_strFolderName == strName; });
}

CQFolder* CQFolder::GetSubFolderByStrID(const CString& strName) { return GetSubFolderByName(strName); }

CQFolder* CQFolder::GetSubFolderByID(DWORD dwId) {
    return FirstFolder(*this, [&](const CQFolder& folder) { return folder.m_dwFolderID == dwId; });
}

CQFolder* CQFolder::GetPreSubFolderByName(const CString& strName) {
    CQFolder* previous = nullptr;
    for (CQFolder* folder : qfc::SubtreeOf(*this)) {
        if (folder->m_strFolderName == strName) return previous;
        previous = folder;
    }
    return nullptr;
}

CQItem* CQFolder::GetItemByGUID(const GUID& guid) {
    const auto matches = [&](const CQItem& item) { return item.GetUniqueID() == guid; };
    CQItem* own = FirstItemIn(*this, 0, matches);
    return own != nullptr ? own : FirstItemIn(*this, 1, matches);
}

CQItem* CQFolder::GetItemByItemId(int nId) {
    CQItem* found = FirstItem(GetItemArray(), [&](CQItem& item) {
        item.TryLoadBB();
        return item.GetDBID() == nId;
    });
    if (found != nullptr) LoadFilmOf(*found);
    return found;
}

CQItem* CQFolder::GetItemByItemNumber(DWORD dwNumber) {
    CQItem* found = FirstItem(GetItemArray(), [&](const CQItem& item) { return item.GetNumber() == dwNumber; });
    if (found == nullptr) return nullptr;
    found->TryLoadBB();
    LoadFilmOf(*found);
    return found;
}

int CQFolder::HasItem(const GUID& guid, int bRecursive) {
    if (bRecursive == 0) return qfc::HeldGuids::Has(*this, guid);
    return FirstItemIn(*this, 1, [&](const CQItem& item) { return item.GetUniqueID() == guid; }) != nullptr;
}

int CQFolder::HasItemByFilePath(const CString& strPath, CQItem*& pFound, int bRecursive) {
    const auto matches = [&](const CQItem& item) { return item.GetFileName() == strPath; };
    return Found(FirstItemIn(*this, bRecursive, matches), pFound);
}

int CQFolder::HasItemByFileName(const CString& strName, CQItem*& pFound, int bRecursive) {
    const CString name = qfc::AsFileNameTail(strName);
    const auto matches = [&](const CQItem& item) { return qfc::FileNameTail(item.GetFileName()) == name; };
    return Found(FirstItemIn(*this, bRecursive, matches), pFound);
}

CQItem* CQFolder::GetBaseClipItemByItemName(const CString& strName, int bRecursive) {
    ItemArray* items = bRecursive != 0 ? GetAllSubItemArray() : GetItemArray();
    return FirstItem(items, [&](const CQItem& item) { return item.GetItemName() == strName; });
}

int CQFolder::IsItemInFolder(CQFolder* pFolder, CQItem* pItem, CQItem*& pFound, int bRecursive) {
    if (pFolder == nullptr || pItem == nullptr) return 0;
    const CString& path = pItem->GetFileName();
    if (path == kBaseClip) return Found(pFolder->GetBaseClipItemByItemName(pItem->GetItemName(), bRecursive), pFound);
    const CQGallery* gallery = qfc::GalleryOf(*pFolder);
    if (gallery != nullptr && qfc::IsTemplatesGallery(gallery->GetFolderID())) {
        return pFolder->HasItemByFileName(qfc::FileNameTail(path), pFound, bRecursive);
    }
    return pFolder->HasItemByFilePath(path, pFound, bRecursive);
}

CQFolder::ItemArray* CQFolder::GetAllSubItemArray() {
    const FolderList* list = GetFolderList();
    if (list == nullptr || list->IsEmpty()) return GetItemArray();
    if (m_pAllSubItemArray == nullptr) m_pAllSubItemArray = std::make_unique<ItemArray>();
    m_pAllSubItemArray->RemoveAll();
    const auto append = [this](CQFolder& folder) {
        const ItemArray* items = folder.GetItemArray();
        if (items == nullptr) return;
        for (CQItem* item : *items) m_pAllSubItemArray->Add(item);
    };
    append(*this);
    for (CQFolder* folder : qfc::SubtreeOf(*this)) append(*folder);
    return m_pAllSubItemArray.get();
}

int CQFolder::IsItemHasTimestmap() {
    return FirstItem(GetAllSubItemArray(), [](const CQItem& item) { return item.fnGetTimeStamp() != 0; }) != nullptr;
}

int CQFolder::IsTagExist(const GUID& tag) {
    return FirstItem(GetAllSubItemArray(), [&](const CQItem& item) { return item.IsTagExist(tag) != 0; }) != nullptr;
}
