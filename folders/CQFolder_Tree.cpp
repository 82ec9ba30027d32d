#include "folders/CQFolder.h"
#include "folders/FolderConstants.h"
#include "folders/FolderNumbers.h"
#include "folders/FolderWalk.h"
#include "folders/GalleryFile.h"
#include "folders/GalleryOf.h"
#include "folders/GlobalProc.h"
#include "folders/Teardown.h"
#include "folders/TreeChanges.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "items/ItemGuid.h"

#include <memory>
#include <new>
#include <vector>

CQFolder& qfc::TopmostOf(const CQFolder& folder) {
    const CQFolder* top = &folder;
    while (top->GetParent() != nullptr) top = top->GetParent();
    return const_cast<CQFolder&>(*top);
}

CQGallery* qfc::GalleryOf(const CQFolder& folder) { return DYNAMIC_DOWNCAST(CQGallery, &TopmostOf(folder)); }

CQFolder* CQFolder::GetRoot() const { return qfc::GalleryOf(*this); }

CQFolder* CQFolder::GetFileRoot() const {
    for (const CQFolder* folder = this; folder != nullptr; folder = folder->m_pParent) {
        if (!folder->m_strFilePath.IsEmpty()) return const_cast<CQFolder*>(folder);
    }
    return &qfc::TopmostOf(*this);
}

CQFolder* CQFolder::GetFirstSubFolder() {
    const FolderList* list = GetFolderList();
    return list != nullptr && !list->IsEmpty() ? list->GetHead() : nullptr;
}

CQFolder* CQFolder::GetNextSib() {
    FolderList* siblings = m_pParent != nullptr ? m_pParent->GetFolderList() : nullptr;
    POSITION position = siblings != nullptr ? siblings->Find(static_cast<CObject*>(this)) : nullptr;
    if (position == nullptr) return nullptr;
    siblings->GetNext(position);
    return position != nullptr ? siblings->GetAt(position) : nullptr;
}

CQFolder* CQFolder::NextFolder(int bSkipChildren) {
    if (bSkipChildren == 0) {
        if (CQFolder* child = GetFirstSubFolder()) return child;
    }
    CQFolder* folder = this;
    while (true) {
        if (CQFolder* sibling = folder->GetNextSib()) return sibling;
        if (folder->m_pParent == nullptr) return folder;
        folder = folder->m_pParent;
    }
}

int CQFolder::IsSubfolderOf(const CQFolder* pOther) const {
    if (pOther == nullptr) return 0;
    for (const CQFolder* folder = this; folder != nullptr; folder = folder->m_pParent) {
        if (folder == pOther) return 1;
    }
    return 0;
}

int CQFolder::IsSubFolderValid(const CQFolder* pFolder) {
    if (pFolder == nullptr) return 0;
    if (pFolder == this) return 1;
    const auto isIt = [=](const CQFolder& folder) { return &folder == pFolder ? qfc::Met::kFound : qfc::Met::kGoOn; };
    if (qfc::FirstBelow(*this, isIt) != nullptr) return 1;
    if (IsRoot()) return 0;
    return qfc::TopmostOf(*this).IsSubFolderValid(pFolder);
}

int CQFolder::AddFolder(CQFolder* pChild, int bAssignStorage, int bAtTail) {
    if (pChild == nullptr || IsSubfolderOf(pChild)) return 0;
    const std::uint64_t changes = qfc::TreeChanges();
    CQFolder* const formerParent = pChild->m_pParent;
    DBTools* const formerTools = pChild->m_pDBTools;
    const DWORD formerNumber = pChild->m_dwStorageNumber;
    FolderList* list = nullptr;
    POSITION place = nullptr;
    try {
        list = NeedFolderList();
        if (list == nullptr) return 0;
        place = bAtTail != 0 ? list->AddTail(pChild) : list->AddHead(pChild);
        pChild->m_pParent = this;
        pChild->m_pDBTools = m_pDBTools;
        if (bAssignStorage != 0) qfc::FolderNumbers::AssignStorageNumber(*pChild, changes);
    } catch (const std::bad_alloc&) {
        if (place != nullptr) list->RemoveAt(place);
        pChild->m_pParent = formerParent;
        pChild->m_pDBTools = formerTools;
        pChild->m_dwStorageNumber = formerNumber;
        return 0;
    }
    m_bCleared = false;
    if (bAssignStorage != 0) {
        if (qfc::GalleryFile* file = qfc::GalleryFileOf(*pChild)) file->OpenFolderStorage(*pChild);
    }
    qfc::SetTreeModified(true);
    return 1;
}

int CQFolder::Insert(CQFolder* pReference, CQFolder* pChild, int bAfter) {
    FolderList* list = GetFolderList();
    if (list == nullptr || pReference == nullptr || pChild == nullptr || IsSubfolderOf(pChild)) return 0;
    POSITION position = list->Find(static_cast<CObject*>(pReference));
    if (position == nullptr) return 0;
    try {
        if (bAfter != 0) {
            list->InsertAfter(position, pChild);
        } else {
            list->InsertBefore(position, pChild);
        }
    } catch (const std::bad_alloc&) {
        return 0;
    }
    pChild->m_pParent = this;
    m_bCleared = false;
    return 1;
}

void CQFolder::EraseStoredData() {
    if (m_nDBId != -1) {
        DeleteFolderFromDb();
    } else if (qfc::GalleryFile* file = qfc::GalleryFileOf(*this)) {
        file->DeleteFolderStorage(*this);
    }
}

int CQFolder::DetachParent(int bDestroyData) {
    FolderList* siblings = m_pParent != nullptr ? m_pParent->GetFolderList() : nullptr;
    POSITION position = siblings != nullptr ? siblings->Find(static_cast<CObject*>(this)) : nullptr;
    if (position == nullptr) return 0;
    siblings->RemoveAt(position);
    if (bDestroyData != 0) EraseStoredData();
    return 1;
}

int CQFolder::RemoveSubFolder() {
    const qfc::Teardown teardown(*this);
    RemoveAllItems(1);
    FolderList* list = GetFolderList();
    while (list != nullptr && !list->IsEmpty()) {
        CQFolder* child = list->GetHead();
        if (child != nullptr) {
            child->m_pParent = this;  // Also when it was put into the list by hand.
            child->RemoveSubFolder();
        }
        list->RemoveHead();
        if (child != nullptr) child->EraseStoredData();
        delete child;
    }
    return 1;
}

void CQFolder::SetAllParent() {
    const auto adoptItems = [](CQFolder& folder) {
        const ItemArray* items = folder.GetItemArray();
        if (items == nullptr) return;
        for (CQItem* item : *items) {
            if (item != nullptr) item->SetParentFolder(&folder);
        }
    };
    adoptItems(*this);
    for (CQFolder* folder : qfc::SubtreeOf(*this)) adoptItems(*folder);
}

int CQFolder::CopyItems(CQFolder* pSource, int bKeepGuid) {
    const ItemArray* sourceItems = pSource != nullptr ? pSource->GetItemArray() : nullptr;
    if (sourceItems == nullptr) return pSource != nullptr;
    // Taken first: source and target may be the same folder.
    const std::vector<CQItem*> items(sourceItems->begin(), sourceItems->end());
    for (CQItem* item : items) {
        if (item == nullptr) continue;
        item->TryLoadBB();
        item->TryLoadFilm();
        auto copy = std::make_unique<CQItem>(*item);
        copy->SetDBID(0);
        if (bKeepGuid != 0) copy->SetUniqueID(qfc::GuidOfItem(*item));
        const qfc::GlobalProc proc = qfc::CurrentGlobalProc();
        if ((pSource->m_dwTrusty & qfc::kTrustyAnnounceCopies) != 0 && proc != nullptr) {
            proc(qfc::kMessageItemCopied, qfc::ToHandle(this), reinterpret_cast<std::intptr_t>(copy.get()), nullptr);
        }
        if (AddItem(copy.get(), 1) != 0) static_cast<void>(copy.release());
    }
    return 1;
}

// The source's tree is listed before anything is copied, so that copying a folder into its own subtree ends.
int CQFolder::CopyRecursive(CQFolder* pSource, int bKeepGuid) {
    if (pSource == nullptr) return 0;
    struct Step {
        CQFolder* source;
        std::size_t depth;
    };
    std::vector<Step> steps;
    qfc::FolderWalk walk(*pSource, qfc::FolderWalk::Stop::BehindSubtree);
    for (; walk.Current() != nullptr; walk.Advance()) steps.push_back({walk.Current(), walk.Depth()});

    CopyItems(pSource, bKeepGuid);
    std::vector<CQFolder*> branch{this};
    for (const Step& step : steps) {
        branch.resize(step.depth);
        // Kept: the copy has the row number of its source, so it IS that row until the host stores it elsewhere.
        auto copy = std::make_unique<CQFolder>(*step.source);
        if (branch.back()->AddFolder(copy.get(), 1, 1) == 0) return 0;
        branch.push_back(copy.release());
        branch.back()->CopyItems(step.source, bKeepGuid);
    }
    return 1;
}
