#include "service/operations/TagsOperation_Categories.h"

#include "db/DBTools.h"
#include "service/operations/GuidsOf.h"
#include "tags/CLibTagsMgr.h"

CLibTagsOperation_UpdateCategory::CLibTagsOperation_UpdateCategory(DBTools* pDBTools,
                                                                   const std::vector<CTagCategory>& categories,
                                                                   DWORD dwKey)
    : CLibTagsOperation(pDBTools), m_categories(categories), m_dwKey(dwKey) {
    // Stored without a category, a tag that is seen today would be gone with the next start.
    for (CTagCategory& category : m_categories) {
        for (CLibTag& tag : category.m_tags) {
            if (tag.m_guidCategory == GUID_NULL) tag.m_guidCategory = category.m_guid;
        }
    }
}

int CLibTagsOperation_UpdateCategory::execute() {
    if (!IsReady() || m_categories.empty() || !Database()->UpdateCategories(m_categories)) return 0;
    Store()->UpdateCategory(m_dwKey, m_categories);
    return 1;
}

CLibTagsOperation_DeleteCategory::CLibTagsOperation_DeleteCategory(DBTools* pDBTools,
                                                                   const std::vector<CTagCategory>& categories,
                                                                   DWORD dwKey)
    : CLibTagsOperation(pDBTools), m_categories(categories), m_dwKey(dwKey) {}

int CLibTagsOperation_DeleteCategory::execute() {
    if (!IsReady() || m_categories.empty()) return 0;
    const std::vector<GUID> guids = qfc::GuidsOf(m_categories);
    return Database()->DeleteCategories(guids) ? Store()->DeleteCategory(m_dwKey, guids) : 0;
}
