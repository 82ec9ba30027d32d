#include "folders/ImportPort.h"
#include "items/Handles.h"
#include "service/EntrySteps.h"
#include "service/QFCLibraryManager.h"
#include "service/operations/AddItem.h"
#include "service/operations/DeleteItem.h"
#include "service/operations/QueryLibItemThumbnailInfo.h"
#include "service/operations/UpdateItem.h"
#include "service/operations/UpdateLibItemThumbnail.h"

#include <utility>

using qfc::EntrySteps;
using qfc::ResultOf;

int QFCLibraryManager::fnAddItem(ULONGLONG hGallery, std::vector<CString> folderPaths, CQItem* pItem) {
    return ResultOf(EntrySteps::RunSync<LibraryOperation_AddItem>(hGallery, std::move(folderPaths), pItem));
}

int QFCLibraryManager::fnAddItemAsync(ULONGLONG hGallery, std::vector<CString> folderPaths, CQItem* pItem,
                                      int nPriority) {
    return EntrySteps::RunAsync<LibraryOperation_AddItem>(nPriority, hGallery, std::move(folderPaths), pItem);
}

int QFCLibraryManager::fnDeleteItem(ULONGLONG hFolder, std::vector<GUID> items, int nMode) {
    return ResultOf(EntrySteps::RunSync<LibraryOperation_DeleteItem>(qfc::AsFolder(hFolder), std::move(items),
                                                                     static_cast<DWORD>(nMode)));
}

int QFCLibraryManager::fnUpdateItem(ULONGLONG hGallery, CQItem* pItem, GUID guidItem, DWORD dwMask) {
    return ResultOf(EntrySteps::RunSync<LibraryOperation_UpdateItem>(hGallery, pItem, dwMask, guidItem));
}

int QFCLibraryManager::fnUpdateLibItemThumbnail(CQItem* pItem) {
    EntrySteps::DatabaseUse database;
    return ResultOf(EntrySteps::RunSyncOn<LibraryOperation_UpdateLibItemThumbnail>(database, pItem, database.Get()));
}

// Kept: the result says that the worker has run the query, not that it succeeded.
int QFCLibraryManager::fnQueryLibItemThumbnailInfo(std::vector<_DS_LibItemTunmbnailInfo_>& thumbnails) {
    EntrySteps::DatabaseUse database;
    const auto pOperation = EntrySteps::RunSyncOn<LibraryOperation_QueryLibItemThumbnailInfo>(database, database.Get());
    if (pOperation == nullptr) return 0;
    thumbnails = pOperation->Thumbnails();
    return 1;
}

namespace {

// Folders reach the service through a port that must be filled before the first of them is used.
[[maybe_unused]] const bool kImportPortFilled = [] {
    qfc::SetImportPort(&QFCLibraryManager::fnAddItem);
    return true;
}();

}  // namespace
