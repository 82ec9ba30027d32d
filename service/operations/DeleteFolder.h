#pragma once

#include "service/LibraryOperation.h"

class CQFolder;

// Removes a folder with everything below it through its parent. A folder without parent is refused.
class LibraryOperation_DeleteFolder : public LibraryOperation {
public:
    explicit LibraryOperation_DeleteFolder(CQFolder* pFolder);

    int execute() override;

private:
    CQFolder* m_pFolder;
};
