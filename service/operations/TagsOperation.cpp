#include "service/operations/TagsOperation.h"

#include "tags/CLibTagsMgr.h"

CLibTagsOperation::CLibTagsOperation(DBTools* pDBTools) : m_pDBTools(pDBTools), m_pStore(CLibTagsMgr::GetLibTagMgr()) {}
