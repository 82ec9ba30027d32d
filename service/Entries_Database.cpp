#include "db/CurrentDBTools.h"
#include "db/DBTools.h"
#include "folders/GalleryEnd.h"
#include "items/CQGallery.h"
#include "items/Handles.h"
#include "platform/os/Files.h"
#include "service/EntrySteps.h"
#include "service/QFCLibraryManager.h"

#include <cstdint>
#include <memory>
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

bool IsOfService(const CQGallery& gallery) {
    return gallery.GetDBTools() != nullptr && qfc::IsCurrentDBTools(gallery.GetDBTools());
}

}  // namespace

int QFCLibraryManager::fnCloseSessionGallery(ULONGLONG hGallery) {
    CQGallery* const pGallery = qfc::AsGallery(hGallery);
    if (pGallery == nullptr || IsOfService(*pGallery)) return 0;
    qfc::DestroyWithItems(pGallery);
    return 1;
}
