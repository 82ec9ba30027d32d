#pragma once

#include "service/LibraryOperation.h"

#include <vector>

class CQGallery;
class DBTools;
struct DS_Filter_File_Record;

// Deletes filter files from the store, their items from a gallery, and the folders that are empty then.
class LibraryOperation_DeleteFilter : public LibraryOperation {
public:
    // The records are borrowed.
    LibraryOperation_DeleteFilter(ULONGLONG hGallery, const std::vector<DS_Filter_File_Record>* pFiles,
                                  DBTools* pDBTools);

    // 0, and nothing done, without gallery, records or database, or when the store refuses one of the files. 0, too,
    // when a folder cannot be deleted: what was deleted before stays so.
    int execute() override;

private:
    const std::vector<DS_Filter_File_Record>* m_pFiles;
    DBTools* m_pDBTools;
};
