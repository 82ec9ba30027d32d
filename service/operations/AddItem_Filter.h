#pragma once

#include "db/EffectRecords.h"
#include "service/operations/AddItem.h"

class DBTools;

// Adds the item of a filter and stores the filter's file.
class LibraryOperation_AddItem_Filter : public LibraryOperation_AddItem {
public:
    // The option value is carried along and not stored.
    LibraryOperation_AddItem_Filter(const DS_Filter_File_Record& file, DWORD dwOption, ULONGLONG hGallery,
                                    std::vector<CString>&& folderPaths, CQItem* pItem, DBTools* pDBTools);

    // 0, and nothing done, without database, gallery, paths or item, or when several entries name no item; one that
    // names none is the added item's. Else whether the record was stored, whatever the folders did.
    int execute() override;
    DWORD OptionValue() const { return m_dwOption; }

private:
    DS_Filter_File_Record m_file;
    DWORD m_dwOption;
    DBTools* m_pDBTools;
};
