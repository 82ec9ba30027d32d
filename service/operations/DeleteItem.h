#pragma once

#include "platform/framework/Guid.h"
#include "service/LibraryOperation.h"

#include <vector>

class CQFolder;

// Removes items from one folder or from all folders of its gallery that hold them.
class LibraryOperation_DeleteItem : public LibraryOperation {
public:
    // Mode 0: from every folder, whichever folder is given.
    LibraryOperation_DeleteItem(CQFolder* pFolder, std::vector<GUID>&& items, DWORD dwMode);

    // 0 in every case.
    int execute() override;

private:
    CQFolder* m_pFolder;
    std::vector<GUID> m_items;
    DWORD m_dwMode;
};
