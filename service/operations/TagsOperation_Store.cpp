#include "service/operations/TagsOperation_Store.h"

#include "db/DBTools.h"
#include "platform/os/Files.h"
#include "tags/CLibTagsMgr.h"
#include "tags/DefaultTags.h"
#include "tags/TagFiles.h"
#include "tags/TagFilesRollback.h"

#include <list>

int CLibTagsOperation_CreateDefaultTags::execute() {
    if (!IsReady()) return 0;
    qfc::TagFilesRollback read(*Store());
    if (PathFileExistsA(qfc::DefaultTagFilePath())) {
        Store()->GenerateCategoryTemplate();
        Store()->GeneratePresetTagData();
    }
    auto defaults = qfc::BuildDefaultCategories(Store()->GetCategoryTemplate());
    std::list<CTagCategory> categories;
    for (const auto& [dwGallery, built] : defaults) categories.insert(categories.end(), built.begin(), built.end());
    // Without categories nothing is to be stored, and the store is not to be emptied.
    if (categories.empty() || !Database()->SaveCategoriesAndTags(categories)) return 0;
    read.Keep();
    Store()->SetTagsToDefault(defaults);
    return 1;
}

int CLibTagsOperation_Load::execute() { return IsReady() && Database()->LoadTags(*Store()) ? 1 : 0; }
