#include "items/CQItem.h"
#include "tags/CLibTagsMgr.h"

#include <algorithm>

CString CQItem::GetTagTooltip() const {
    CString strTooltip;
    if (m_tags.empty()) return strTooltip;
    std::list<CLibTag> known;
    CLibTagsMgr::GetLibTagMgr()->GetAllTagList(known);
    for (const GUID& guid : m_tags) {
        const auto tag = std::ranges::find(known, guid, &CLibTag::m_guid);
        if (tag == known.end() || tag->m_strName.IsEmpty()) continue;
        if (!strTooltip.IsEmpty()) strTooltip += ", ";
        strTooltip += tag->m_strName;
    }
    return strTooltip;
}
