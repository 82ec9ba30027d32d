#pragma once

#include "platform/framework/Types.h"
#include "service/operations/TagsOperation.h"
#include "tags/TagRecords.h"

#include <vector>

// Stores categories with the tags in them, new ones and known ones, and files them under the key. A tag that names no
// category belongs to the one that it is in; any other is stored where it says.
class CLibTagsOperation_UpdateCategory : public CLibTagsOperation {
public:
    CLibTagsOperation_UpdateCategory(DBTools* pDBTools, const std::vector<CTagCategory>& categories, DWORD dwKey);

    int execute() override;

private:
    std::vector<CTagCategory> m_categories;
    DWORD m_dwKey;
};

// Removes categories. In the database their tags and links stay.
class CLibTagsOperation_DeleteCategory : public CLibTagsOperation {
public:
    CLibTagsOperation_DeleteCategory(DBTools* pDBTools, const std::vector<CTagCategory>& categories, DWORD dwKey);

    int execute() override;

private:
    std::vector<CTagCategory> m_categories;
    DWORD m_dwKey;
};
