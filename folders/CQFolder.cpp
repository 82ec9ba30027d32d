#include "folders/CQFolder.h"

#include "folders/FolderConstants.h"
#include "folders/FolderLife.h"
#include "folders/FolderNumbers.h"
#include "folders/GalleryFile.h"
#include "folders/HeldGuids.h"
#include "folders/Teardown.h"
#include "folders/TreeChanges.h"
#include "items/CQItem.h"

#include <memory>

IMPLEMENT_SERIAL(CQFolder, CObject, 1)

CQFolder* CQFolder::m_pCurrentFolder = nullptr;
IStorage* CQFolder::m_pCurrentFileStorage = nullptr;
int CQFolder::m_bLoadBBNow = 0;

CQFolder::CQFolder() = default;

CQFolder::CQFolder(const CString& strName, DWORD dwTrusty, DWORD dwAdopt, DWORD dwExtra)
    : m_dwExtra(dwExtra), m_strFolderName(strName), m_dwAdopt(dwAdopt), m_dwTrusty(dwTrusty) {}

CQFolder::CQFolder(const CQFolder& source) : CObject(), CQFolderCtrl() { *this = source; }

// taken                                           left as they are
// parent, row number, DBTools                     file path, storage number, both counters
// name, adopt, trusty, extra, expand status       subject, description
// storages, writable; CQFolderCtrl's part         string id, index
// What was found for the old name is forgotten.
CQFolder& CQFolder::operator=(const CQFolder& source) {
    if (this == &source) return *this;
    if (source.IsSubfolderOf(this)) {
        // The source goes with the clearing, and so may the parent it would give.
        CQFolder taken(source);
        taken.m_pParent = m_pParent;
        return *this = taken;
    }
    Clear();
    m_pParent = source.m_pParent;
    m_strFolderName = source.m_strFolderName;
    m_strTranslateName.Empty();
    m_dwAdopt = source.m_dwAdopt;
    m_dwTrusty = source.m_dwTrusty;
    m_dwExtra = source.m_dwExtra;
    m_pStorage = source.m_pStorage;
    m_pFileStorage = source.m_pFileStorage;
    // Kept: the second storage of a copy is the file storage of its source.
    m_pSecondStorage = source.m_pFileStorage;
    m_bWritable = source.m_bWritable;
    m_nDBId = source.m_nDBId;
    m_pDBTools = source.m_pDBTools;
    m_bDeleted = 0;
    _Copy(source);
    return *this;
}

CQFolder::~CQFolder() {
    Clear();
    m_life->folder = nullptr;
}

std::shared_ptr<qfc::FolderLife> CQFolder::BeginLife(CQFolder& folder) {
    return std::make_shared<qfc::FolderLife>(&folder);
}

CQFolder::FolderList* CQFolder::GetFolderList() { return m_pFolderList.get(); }
CQFolder::ItemArray* CQFolder::GetItemArray() { return m_pItemArray.get(); }

CQFolder::FolderList* CQFolder::NeedFolderList() {
    if (GetFolderList() == nullptr && m_pFolderList == nullptr) {
        m_pFolderList = std::make_unique<FolderList>(10);
        m_pFolderList->SetChangeCounter(&qfc::TreeChanges());
    }
    return GetFolderList();
}

CQFolder::ItemArray* CQFolder::NeedItemArray() {
    if (GetItemArray() == nullptr && m_pItemArray == nullptr) m_pItemArray = std::make_unique<ItemArray>();
    return GetItemArray();
}

int CQFolder::SetDBTools(DBTools* pTools) {
    if (pTools == nullptr) return 0;
    m_pDBTools = pTools;
    return 1;
}

void CQFolder::SetItemArray(ItemArray* pItems) {
    if (pItems == m_pItemArray.get()) return;
    m_pNumbers.reset();
    m_pHeldGuids.reset();
    static_cast<void>(m_pItemArray.release());
    m_pItemArray.reset(pItems);
}

int CQFolder::GetItemsCount() {
    const ItemArray* items = GetItemArray();
    return items != nullptr ? items->GetSize() : 0;
}

void CQFolder::SetStorageNumber(DWORD dwNumber) {
    m_dwStorageNumber = dwNumber;
    ++qfc::TreeChanges();
}

int CQFolder::CanMatchAdopt(DWORD dwMask) const { return dwMask != 0 && (m_dwAdopt & dwMask) == dwMask; }
int CQFolder::CanMatchTrusty(DWORD dwMask) const { return (m_dwTrusty & dwMask) == dwMask; }

int CQFolder::IsPredefinedFolder() const {
    if (m_dwFolderID != 0) return 1;
    return m_pParent != nullptr && qfc::IsTemplatesGallery(m_pParent->GetFolderID());
}

// A folder that is the root of a gallery file writes it before its content goes. Whether it is such a root: what was
// not to be written, or could not be, is lost as well.
bool CQFolder::SaveOwnFile() {
    if (m_strFilePath.IsEmpty()) return false;
    // What a clearing has emptied is not what the file is to hold.
    const bool emptied = m_bCleared && GetFirstSubFolder() == nullptr && GetItemsCount() == 0;
    if (m_bDeleted != 0 || emptied) return true;
    qfc::GalleryFile* file = qfc::GalleryFileOf(*this);
    if (file == nullptr) return true;
    if (FolderList* list = GetFolderList()) {
        for (CQFolder* child : *list) {
            if (child != nullptr) file->FlushFolder(*child);
        }
    }
    file->SaveTreeAndClose(*this);
    return true;
}

// Bottom-up, without recursion and without memory: however deep the tree, its end cannot fail. A sub-folder with a file
// of its own is destroyed whole: it saves its tree first.
void CQFolder::DestroySubFolders() {
    CQFolder* folder = this;
    while (true) {
        FolderList* list = folder->GetFolderList();
        if (list == nullptr || list->IsEmpty()) {
            if (folder == this) break;
            folder = folder->m_pParent;
            delete folder->GetFolderList()->RemoveHead();
            continue;
        }
        CQFolder* child = list->GetHead();
        if (child != nullptr) child->m_pParent = folder;  // Also when it was put into the list by hand.
        const bool filled = child != nullptr && child->GetFirstSubFolder() != nullptr;
        if (filled && child->m_strFilePath.IsEmpty()) {
            folder = child;
        } else {
            list->RemoveHead();
            delete child;
        }
    }
    m_pFolderList.reset();
}

// Items of a folder that belongs to another database than the current one are left alone.
void CQFolder::LetGoOfItems() {
    ItemArray* items = GetItemArray();
    if (items == nullptr) return;
    if (qfc::Teardown::EndsItemsOf(*this)) {
        for (CQItem* item : *items) qfc::Teardown::LetGo(item, *this);
    } else {
        const CObArray& objects = *items;  // Some may be dead: who left them alone may have ended them.
        for (const CObject* object : objects) qfc::Teardown::PassOn(object, *this);
    }
    items->RemoveAll();
    m_pNumbers.reset();
    m_pHeldGuids.reset();
    m_pItemArray.reset();
}

void CQFolder::Clear() {
    const qfc::Teardown teardown(*this);
    m_bCleared = SaveOwnFile();
    m_pAllSubItemArray.reset();
    DestroySubFolders();
    LetGoOfItems();
}
