#pragma once

#include "service/LibraryOperation.h"

class CQItem;
class DBTools;

// Stores an item's bitmap cache.
class LibraryOperation_UpdateLibItemThumbnail : public LibraryOperation {
public:
    LibraryOperation_UpdateLibItemThumbnail(CQItem* pItem, DBTools* pDBTools);

    int execute() override;

private:
    CQItem* m_pItem;
    DBTools* m_pDBTools;
};
