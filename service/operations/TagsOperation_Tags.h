#pragma once

#include "platform/framework/Guid.h"
#include "platform/framework/Types.h"
#include "service/operations/TagsOperation.h"
#include "tags/TagRecords.h"

#include <list>
#include <vector>

// Stores tags, new ones and known ones; those whose category is filed under the key enter the tag store.
class CLibTagsOperation_UpdateTag : public CLibTagsOperation {
public:
    CLibTagsOperation_UpdateTag(DBTools* pDBTools, const std::list<CLibTag>& tags, DWORD dwKey);

    int execute() override;

private:
    std::list<CLibTag> m_tags;
    DWORD m_dwKey;
};

// Removes tags with their links. Items in memory keep them.
class CLibTagsOperation_DeleteTag : public CLibTagsOperation {
public:
    CLibTagsOperation_DeleteTag(DBTools* pDBTools, const std::list<CLibTag>& tags, DWORD dwKey);

    int execute() override;

private:
    std::list<CLibTag> m_tags;
    DWORD m_dwKey;
};

// Gives the target to every item that carries a source and removes the sources. Items in memory keep them.
class CLibTagsOperation_MergeTag : public CLibTagsOperation {
public:
    // The target among the sources is left out.
    CLibTagsOperation_MergeTag(DBTools* pDBTools, const GUID& target, const std::list<GUID>& sources, DWORD dwKey);

    int execute() override;

private:
    GUID m_target;
    std::vector<GUID> m_sources;
    DWORD m_dwKey;
};
