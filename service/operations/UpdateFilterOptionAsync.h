#pragma once

#include "db/EffectRecords.h"
#include "service/LibraryOperation.h"

class CQItem;
class DBTools;

// Updates the item of a filter and stores the filter's file.
class LibraryOperation_UpdateFilterOptionAsync : public LibraryOperation {
public:
    // The option value is carried along and not stored.
    LibraryOperation_UpdateFilterOptionAsync(ULONGLONG hGallery, const DS_Filter_File_Record& file, DWORD dwOption,
                                             DBTools* pDBTools, CQItem* pItem, const GUID& guidItem);

    // 0, and nothing done, without database, item or gallery, or when several entries name no item; one that names none
    // is that of the GUID. 0 when the item cannot be updated; else whether the record was stored, also when the gallery
    // has no such item.
    int execute() override;
    DWORD OptionValue() const { return m_dwOption; }

private:
    DS_Filter_File_Record m_file;
    DWORD m_dwOption;
    DBTools* m_pDBTools;
    CQItem* m_pItem;
    GUID m_guidItem;
};
