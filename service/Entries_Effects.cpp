#include "db/EffectRecords.h"
#include "service/EntrySteps.h"
#include "service/QFCLibraryManager.h"
#include "service/operations/AddItem_Filter.h"
#include "service/operations/AddItem_Transition.h"
#include "service/operations/DeleteFilter.h"
#include "service/operations/DeleteTransition.h"
#include "service/operations/UpdateFilterOptionAsync.h"
#include "service/operations/UpdateTransitionAsync.h"

#include <utility>

using qfc::EntrySteps;
using qfc::ResultOf;

int QFCLibraryManager::fnAddItemAsync_Filter(const DS_Filter_File_Record& file, unsigned int nOption,
                                             ULONGLONG hGallery, std::vector<CString> folderPaths, CQItem* pItem,
                                             int nPriority) {
    EntrySteps::DatabaseUse database;
    return EntrySteps::RunAsyncOn<LibraryOperation_AddItem_Filter>(database, nPriority, file, nOption, hGallery,
                                                                   std::move(folderPaths), pItem, database.Get());
}

int QFCLibraryManager::fnAddItemAsync_Transition(const DS_Transition_Record& transition, ULONGLONG hGallery,
                                                 std::vector<CString> folderPaths, CQItem* pItem, int nPriority) {
    EntrySteps::DatabaseUse database;
    return EntrySteps::RunAsyncOn<LibraryOperation_AddItem_Transition>(database, nPriority, transition, hGallery,
                                                                       std::move(folderPaths), pItem, database.Get());
}

int QFCLibraryManager::fnUpdateFilterOptionAsync(ULONGLONG hGallery, CQItem* pItem, const GUID& guidItem,
                                                 const DS_Filter_File_Record& file, unsigned int nOption) {
    if (pItem == nullptr) return 0;
    EntrySteps::DatabaseUse database;
    return EntrySteps::RunAsyncAndWait<LibraryOperation_UpdateFilterOptionAsync>(database, hGallery, file, nOption,
                                                                                 database.Get(), pItem, guidItem);
}

int QFCLibraryManager::fnUpdateTransitionAsync(ULONGLONG hGallery, CQItem* pItem, const GUID& guidItem,
                                               const DS_Transition_Record& transition) {
    if (pItem == nullptr) return 0;
    EntrySteps::DatabaseUse database;
    return EntrySteps::RunAsyncAndWait<LibraryOperation_UpdateTransitionAsync>(database, hGallery, transition,
                                                                               database.Get(), pItem, guidItem);
}

int QFCLibraryManager::fnDeleteFilter(const std::vector<DS_Filter_File_Record> files, ULONGLONG hGallery) {
    EntrySteps::DatabaseUse database;
    return ResultOf(EntrySteps::RunSyncOn<LibraryOperation_DeleteFilter>(database, hGallery, &files, database.Get()));
}

int QFCLibraryManager::fnDeleteTransition(const std::vector<DS_Transition_Record> transitions, ULONGLONG hGallery) {
    EntrySteps::DatabaseUse database;
    return ResultOf(
        EntrySteps::RunSyncOn<LibraryOperation_DeleteTransition>(database, hGallery, &transitions, database.Get()));
}
