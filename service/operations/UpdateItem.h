#pragma once

#include "platform/framework/Guid.h"
#include "service/LibraryOperation.h"

class CQItem;

// Copies groups of fields from one item into the gallery's item of a GUID and stores it.
class LibraryOperation_UpdateItem : public LibraryOperation {
public:
    LibraryOperation_UpdateItem(ULONGLONG hGallery, CQItem* pItem, DWORD dwMask, const GUID& guidItem);

    // 1 whatever the update said; 0 only without gallery or item.
    int execute() override;

private:
    CQItem* m_pItem;
    DWORD m_dwMask;
    GUID m_guidItem;
};
