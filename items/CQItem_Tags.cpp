#include "items/CQItem.h"
#include "tags/CLibTagsMgr.h"

CString CQItem::GetTagTooltip() const {
    CString strTooltip;
    for (const GUID& guid : m_tags) {
        CLibTag tag;
        if (CLibTagsMgr::GetLibTagMgr()->GetTagByGuid(guid, tag) == 0 || tag.m_strName.IsEmpty()) continue;
        if (!strTooltip.IsEmpty()) strTooltip += ", ";
        strTooltip += tag.m_strName;
    }
    return strTooltip;
}
