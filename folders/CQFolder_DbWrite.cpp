#include "db/DBTools.h"
#include "folders/CQFolder.h"
#include "folders/GalleryOf.h"
#include "folders/Teardown.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/ItemGuid.h"

#include <utility>
#include <vector>

int CQFolder::InsertOrUpdateFolder() {
    if (m_pDBTools == nullptr) return 0;
    return m_pDBTools->InsertOrUpdateFolder(m_strVersion, static_cast<int>(m_dwFolderID), m_strFolderName,
                                            static_cast<int>(m_dwAdopt), static_cast<int>(m_dwTrusty),
                                            static_cast<int>(m_dwExtra), m_pParent != nullptr ? m_pParent->m_nDBId : -1,
                                            m_nExpandStatus, m_nIndex, m_nDBId);
}

int CQFolder::UpdateFolderDb() { return m_nDBId != -1 ? InsertOrUpdateFolder() : 0; }

// Kept: a list of a single sub-folder is not written, nor what lies below it.
int CQFolder::UpdateSubFolderIndexDB() {
    FolderList* own = GetFolderList();
    if (own == nullptr) return 0;
    std::vector<std::pair<FolderList*, POSITION>> levels;
    const auto enter = [&](FolderList* list) {
        if (list != nullptr && list->GetCount() >= 2) levels.emplace_back(list, list->GetHeadPosition());
    };
    enter(own);
    while (!levels.empty()) {
        auto& [list, next] = levels.back();
        if (next == nullptr) {
            levels.pop_back();
            continue;
        }
        CQFolder* child = list->GetNext(next);
        if (child == nullptr) continue;
        child->InsertOrUpdateFolder();
        enter(child->GetFolderList());
    }
    return 1;
}

int CQFolder::InsertOrUpdateGallery() {
    return m_pDBTools != nullptr && m_pDBTools->InsertGallery(static_cast<int>(m_dwFolderID), m_nDBId);
}

// Every pass shortens the array by itself, also when the removal is refused; what is refused before it was looked at
// is ended as the folder's clearing would end it.
void CQFolder::EmptyOfItemsInDb() {
    ItemArray* items = GetItemArray();
    const CQGallery* gallery = qfc::GalleryOf(*this);
    while (items != nullptr && !items->IsEmpty()) {
        CQItem* item = items->GetAt(0);
        if (item == nullptr) {
            items->RemoveAt(0);
            continue;
        }
        CQItem* canonical = nullptr;
        const bool known = gallery != nullptr && gallery->IsItemHasParentByGuid(qfc::GuidOfItem(*item), canonical) != 0;
        const int before = items->GetSize();
        RemoveItemDB(qfc::GuidOfItem(*item), 0);
        if (items->GetSize() < before) {
            // An item that its gallery does not know ends with the last folder that has it.
            if (!known) qfc::Teardown::LetGo(item, *this);
            continue;
        }
        items->RemoveAt(0);
        if (qfc::Teardown::EndsItemsOf(*this)) {
            qfc::Teardown::LetGo(item, *this);
        } else {
            qfc::Teardown::PassOn(item, *this);
        }
    }
}

void CQFolder::EndSubFolderInDb(CQFolder* pTaken, int nRowId) {
    if (m_pDBTools != nullptr) m_pDBTools->DeleteFolderRow(nRowId);
    FolderList* list = GetFolderList();
    list->RemoveAt(list->Find(static_cast<CObject*>(pTaken)));
    delete pTaken;
}

// Depth-first without recursion, as deep as the tree may be: each folder's items, then its sub-folders one by one.
int CQFolder::DeleteFolderFromDb() {
    const qfc::Teardown teardown(*this);
    EmptyOfItemsInDb();
    CQFolder* folder = this;
    while (true) {
        FolderList* list = folder->GetFolderList();
        if (list != nullptr && !list->IsEmpty()) {
            CQFolder* child = list->GetHead();
            if (child == nullptr) {
                list->RemoveHead();
                continue;
            }
            child->m_pParent = folder;  // Also when it was put into the list by hand.
            child->EmptyOfItemsInDb();
            folder = child;
            continue;
        }
        if (folder == this) return 1;
        CQFolder* emptied = std::exchange(folder, folder->m_pParent);
        folder->EndSubFolderInDb(emptied, emptied->m_nDBId);
    }
}

int CQFolder::DeleteFolderFromDb(int nRowId) {
    FolderList* list = GetFolderList();
    if (list == nullptr || list->IsEmpty()) return 0;
    // Without a match the last one is taken, and the row of the asked number deleted all the same.
    CQFolder* taken = list->GetTail();
    for (CQFolder* child : *list) {
        if (child != nullptr && child->m_nDBId == nRowId) {
            taken = child;
            break;
        }
    }
    if (taken != nullptr) {
        taken->m_pParent = this;  // Also when it was put into the list by hand.
        if (taken->DeleteFolderFromDb() == 0) return 0;
    }
    EndSubFolderInDb(taken, nRowId);
    return 1;
}
