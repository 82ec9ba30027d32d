#include "service/EntrySteps.h"
#include "service/QFCLibraryManager.h"
#include "service/operations/TagsOperation_Categories.h"
#include "service/operations/TagsOperation_Items.h"
#include "service/operations/TagsOperation_Store.h"
#include "service/operations/TagsOperation_Tags.h"

using qfc::EntrySteps;

namespace {

// Kept: the result says that the worker has run the operation, not that the tags were written.
template <typename Operation, typename... Args>
int RunOnTags(const Args&... args) {
    EntrySteps::DatabaseUse database;
    if (database.Get() == nullptr) return 0;
    return EntrySteps::RunSyncOn<Operation>(database, database.Get(), args...) != nullptr ? 1 : 0;
}

}  // namespace

int QFCLibraryManager::fnCreateDefaultTag() { return RunOnTags<CLibTagsOperation_CreateDefaultTags>(); }

int QFCLibraryManager::fnLoadLibTag() { return RunOnTags<CLibTagsOperation_Load>(); }

int QFCLibraryManager::fnUpdateTagCategory(DWORD dwKey, const std::vector<CTagCategory> categories) {
    return RunOnTags<CLibTagsOperation_UpdateCategory>(categories, dwKey);
}

int QFCLibraryManager::fnDeleteTagCategory(DWORD dwKey, const std::vector<CTagCategory> categories) {
    return RunOnTags<CLibTagsOperation_DeleteCategory>(categories, dwKey);
}

int QFCLibraryManager::fnUpdateTag(DWORD dwKey, const std::list<CLibTag> tags) {
    return RunOnTags<CLibTagsOperation_UpdateTag>(tags, dwKey);
}

int QFCLibraryManager::fnDeleteTag(DWORD dwKey, const std::list<CLibTag> tags) {
    return RunOnTags<CLibTagsOperation_DeleteTag>(tags, dwKey);
}

int QFCLibraryManager::fnInsertLibTag2Item(const std::vector<CQItem*> items, const std::list<GUID> tags) {
    return RunOnTags<CLibTagsOperation_InsertTag2Item>(items, tags);
}

int QFCLibraryManager::fnDeleteLibTagFromItem(const std::vector<CQItem*> items, const std::list<GUID> tags) {
    return RunOnTags<CLibTagsOperation_DeleteTagFromItem>(items, tags);
}

int QFCLibraryManager::fnMergeFaceTag(DWORD dwKey, const GUID& target, const std::list<GUID> sources) {
    return RunOnTags<CLibTagsOperation_MergeTag>(target, sources, dwKey);
}
