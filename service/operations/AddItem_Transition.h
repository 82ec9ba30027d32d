#pragma once

#include "db/EffectRecords.h"
#include "service/operations/AddItem.h"

class CQGallery;
class DBTools;

// Adds the item of a transition, puts the items of its folders in order and stores the transition.
class LibraryOperation_AddItem_Transition : public LibraryOperation_AddItem {
public:
    LibraryOperation_AddItem_Transition(const DS_Transition_Record& transition, ULONGLONG hGallery,
                                        std::vector<CString>&& folderPaths, CQItem* pItem, DBTools* pDBTools);

    // 0, and nothing done, without database, gallery, paths or item; 0 when a folder has no item array. Else whether
    // the record was stored, whatever the folders did. The order of the items is not stored.
    int execute() override;

private:
    bool SortFolders(CQGallery& gallery) const;

    DS_Transition_Record m_transition;
    DBTools* m_pDBTools;
};
