#include "db/CurrentDBTools.h"
#include "db/DBTools.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/CQItem.h"
#include "items/GalleryDocument.h"
#include "items/Handles.h"
#include "items/ItemGuid.h"
#include "platform/os/Files.h"
#include "service/EntrySteps.h"
#include "service/QFCLibraryManager.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <unordered_set>
#include <vector>

using qfc::EntrySteps;

ULONGLONG QFCLibraryManager::StartDbSession4ImportLib(const CString& strPath) {
    if (!PathFileExistsA(strPath)) return 0;
    bool bOpened = true;
    auto pSession = std::make_unique<DBTools>(strPath, bOpened);
    return bOpened ? reinterpret_cast<std::uintptr_t>(pSession.release()) : 0;
}

int QFCLibraryManager::EndDbSession4ImportLib(ULONGLONG hSession) {
    if (hSession == 0) return 0;
    delete reinterpret_cast<DBTools*>(static_cast<std::uintptr_t>(hSession));
    return 1;
}

int QFCLibraryManager::fnExportDB(const char* pszTargetPath) {
    const EntrySteps::DatabaseUse database;
    return database.Get() != nullptr && database.Get()->ExportDatabase(pszTargetPath) ? 1 : 0;
}

int QFCLibraryManager::fnAddItemIntoAutoLodedTable(GUID guidItem, int nFolderId) {
    const EntrySteps::DatabaseUse database;
    return database.Get() != nullptr && database.Get()->InsertAutoLoadedItem(guidItem, nFolderId) ? 1 : 0;
}

int QFCLibraryManager::fnIsItemInAutoLoadedTable(GUID guidItem, int nFolderId) {
    const EntrySteps::DatabaseUse database;
    return database.Get() != nullptr && database.Get()->IsItemAutoLoaded(guidItem, nFolderId) ? 1 : 0;
}

int QFCLibraryManager::fnAddItemIntoAutoLodedByPathTable(const char* pszFilePath, int nFolderId) {
    const CString strPath = CString(pszFilePath).MakeLower();
    const EntrySteps::DatabaseUse database;
    return database.Get() != nullptr && database.Get()->InsertAutoLoadedFile(strPath, nFolderId) ? 1 : 0;
}

int QFCLibraryManager::fnIsItemInAutoLoadedByPathTable(const char* pszFilePath, int nFolderId) {
    const CString strPath = CString(pszFilePath).MakeLower();
    const EntrySteps::DatabaseUse database;
    return database.Get() != nullptr && database.Get()->IsFileAutoLoaded(strPath, nFolderId) ? 1 : 0;
}

int QFCLibraryManager::fnListGalleries(std::vector<qfc::StoredGallery>& galleries, DBTools* pDBTools) {
    const EntrySteps::DatabaseUse database(pDBTools);
    return database.Get() != nullptr && database.Get()->QueryGalleries(galleries) ? 1 : 0;
}

namespace {

using Items = std::unordered_set<CQItem*>;

// Closing ends the items of a folder without database, or with the service's, by itself; of the others it leaves all
// save the objects of the gallery's index, which die with the gallery.
void GatherItems(const CQGallery& gallery, CQFolder& folder, Items& left, Items& ended) {
    const auto* const pItems = folder.GetItemArray();
    if (pItems == nullptr) return;
    const bool bEnds = folder.GetDBTools() == nullptr || qfc::IsCurrentDBTools(folder.GetDBTools());
    for (CQItem* const pItem : *pItems) {
        if (pItem == nullptr) continue;
        CQItem* pIndexed = nullptr;
        gallery.IsItemHasParentByGuid(qfc::GuidOfItem(*pItem), pIndexed);
        if (pIndexed != pItem) (bEnds ? ended : left).insert(pItem);
    }
}

// Each object once, however many folders hold it.
Items ItemsLeftBehind(CQGallery& gallery) {
    Items left;
    Items ended;
    std::vector<CQFolder*> folders{&gallery};
    while (!folders.empty()) {
        CQFolder* const pFolder = folders.back();
        folders.pop_back();
        GatherItems(gallery, *pFolder, left, ended);
        if (const auto* const pChildren = pFolder->GetFolderList()) {
            std::ranges::copy_if(*pChildren, std::back_inserter(folders), [](CQFolder* p) { return p != nullptr; });
        }
    }
    std::erase_if(left, [&](CQItem* pItem) { return ended.contains(pItem); });
    return left;
}

// One that was created on a session's database is listed in the document.
void DestroyGallery(CQGallery* pGallery) {
    if (CQGalleryDoc* const pDocument = qfc::ExistingGalleryDocument()) pDocument->ReleaseGallery(pGallery);
    delete pGallery;
}

bool IsOfService(const CQGallery& gallery) {
    return gallery.GetDBTools() != nullptr && qfc::IsCurrentDBTools(gallery.GetDBTools());
}

}  // namespace

int QFCLibraryManager::fnCloseSessionGallery(ULONGLONG hGallery) {
    CQGallery* const pGallery = qfc::AsGallery(hGallery);
    if (pGallery == nullptr || IsOfService(*pGallery)) return 0;
    const Items items = ItemsLeftBehind(*pGallery);
    DestroyGallery(pGallery);
    for (CQItem* const pItem : items) delete pItem;
    return 1;
}
