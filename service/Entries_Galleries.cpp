#include "items/Handles.h"
#include "service/EntrySteps.h"
#include "service/QFCLibraryManager.h"
#include "service/operations/CreateFolder.h"
#include "service/operations/CreateGallery.h"
#include "service/operations/DeleteFolder.h"
#include "service/operations/DeleteGallery.h"
#include "service/operations/LoadGallery.h"
#include "service/operations/UpdateFolder.h"

using qfc::EntrySteps;
using qfc::ResultOf;

ULONGLONG QFCLibraryManager::fnCreateGallery(int nGalleryId, CString strName, DWORD dwAdopt, DWORD dwTrusty,
                                             DWORD dwTypeExtra, DBTools* pDBTools) {
    EntrySteps::DatabaseUse database(pDBTools);
    if (database.Get() == nullptr) return 0;
    const auto pOperation = EntrySteps::RunSyncOn<LibraryOperation_CreateGallery>(
        database, nGalleryId, strName, dwAdopt, dwTrusty, dwTypeExtra, database.Get());
    return pOperation != nullptr ? pOperation->Created() : 0;
}

ULONGLONG QFCLibraryManager::fnLoadGallery(int nGalleryId, DBTools* pDBTools) {
    EntrySteps::DatabaseUse database(pDBTools);
    if (database.Get() == nullptr) return 0;
    const auto pOperation = EntrySteps::RunSyncOn<LibraryOperation_LoadGallery>(database, nGalleryId, database.Get());
    return pOperation != nullptr ? pOperation->Loaded() : 0;
}

int QFCLibraryManager::fnDeleteGallery(const std::vector<int> galleryIds) {
    EntrySteps::DatabaseUse database;
    return ResultOf(EntrySteps::RunSyncOn<LibraryOperation_DeleteGallery>(database, galleryIds, database.Get()));
}

CQFolder* QFCLibraryManager::fnCreateFolder(ULONGLONG hGallery, const CString& strParentPath, const CString& strName,
                                            DWORD dwFirst, DWORD dwSecond, DWORD dwThird, DWORD dwFolderId) {
    using Operation = LibraryOperation_CreateFolder;
    const auto pOperation = EntrySteps::RunSync<Operation>(hGallery, strParentPath, strName, dwFirst, dwSecond, dwThird,
                                                           dwFolderId, Operation::kBehindSiblings);
    return pOperation != nullptr ? pOperation->Created() : nullptr;
}

int QFCLibraryManager::fnUpdateFolder(ULONGLONG hFolder, CString strName, DWORD dwAdopt, DWORD dwTrusty,
                                      DWORD dwTypeExtra, DBTools* pDBTools) {
    EntrySteps::DatabaseUse database(pDBTools);
    if (database.Get() == nullptr) return 0;
    return ResultOf(EntrySteps::RunSyncOn<LibraryOperation_UpdateFolder>(
        database, strName, dwAdopt, dwTrusty, dwTypeExtra, database.Get(), qfc::AsFolder(hFolder)));
}

int QFCLibraryManager::fnDeleteFolder(ULONGLONG hFolder) {
    return ResultOf(EntrySteps::RunSync<LibraryOperation_DeleteFolder>(qfc::AsFolder(hFolder)));
}
