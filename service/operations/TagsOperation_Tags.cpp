#include "service/operations/TagsOperation_Tags.h"

#include "db/DBTools.h"
#include "service/operations/GuidsOf.h"
#include "tags/CLibTagsMgr.h"

CLibTagsOperation_UpdateTag::CLibTagsOperation_UpdateTag(DBTools* pDBTools, const std::list<CLibTag>& tags, DWORD dwKey)
    : CLibTagsOperation(pDBTools), m_tags(tags), m_dwKey(dwKey) {}

int CLibTagsOperation_UpdateTag::execute() {
    if (!IsReady() || m_tags.empty() || !Database()->UpdateTags(m_tags)) return 0;
    Store()->UpdateTag(m_dwKey, m_tags);
    return 1;
}

CLibTagsOperation_DeleteTag::CLibTagsOperation_DeleteTag(DBTools* pDBTools, const std::list<CLibTag>& tags, DWORD dwKey)
    : CLibTagsOperation(pDBTools), m_tags(tags), m_dwKey(dwKey) {}

int CLibTagsOperation_DeleteTag::execute() {
    if (!IsReady() || m_tags.empty()) return 0;
    const std::vector<GUID> guids = qfc::GuidsOf(m_tags);
    return Database()->DeleteTags(guids) ? Store()->DeleteTag(m_dwKey, guids) : 0;
}

CLibTagsOperation_MergeTag::CLibTagsOperation_MergeTag(DBTools* pDBTools, const GUID& target,
                                                       const std::list<GUID>& sources, DWORD dwKey)
    : CLibTagsOperation(pDBTools), m_target(target), m_sources(sources.begin(), sources.end()), m_dwKey(dwKey) {
    // Merged into itself a tag would be gone, with its links.
    std::erase(m_sources, m_target);
}

int CLibTagsOperation_MergeTag::execute() {
    if (!IsReady() || m_sources.empty() || !Database()->MergeTags(m_sources, m_target)) return 0;
    Store()->DeleteTag(m_dwKey, m_sources);
    return 1;
}
