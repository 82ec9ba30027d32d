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

    // 0, and nothing done, without gallery, records or database, or when the store refuses one of the files. Otherwise
    // 1, whether or not the database takes the empty folders: as with fnDeleteFolder their objects are gone, their rows
    // may stay.
    int execute() override;

private:
    const std::vector<DS_Filter_File_Record>* m_pFiles;
    DBTools* m_pDBTools;
};
