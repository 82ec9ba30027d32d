#pragma once

#include "service/LibraryOperation.h"

#include <vector>

class CQGallery;
class DBTools;
struct DS_Transition_Record;

// Deletes transitions from the store, their items from a gallery, and the folders that are empty then.
class LibraryOperation_DeleteTransition : public LibraryOperation {
public:
    // The records are borrowed. Every transition of a record's file is deleted, the items of the records only.
    LibraryOperation_DeleteTransition(ULONGLONG hGallery, const std::vector<DS_Transition_Record>* pTransitions,
                                      DBTools* pDBTools);

    // As with filters.
    int execute() override;

private:
    const std::vector<DS_Transition_Record>* m_pTransitions;
    DBTools* m_pDBTools;
};
