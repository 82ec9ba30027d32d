#pragma once

#include "db/EffectRecords.h"
#include "service/LibraryOperation.h"

class CQItem;
class DBTools;

// Updates the item of a transition and stores the transition.
class LibraryOperation_UpdateTransitionAsync : public LibraryOperation {
public:
    LibraryOperation_UpdateTransitionAsync(ULONGLONG hGallery, const DS_Transition_Record& transition,
                                           DBTools* pDBTools, CQItem* pItem, const GUID& guidItem);

    // 0, and nothing done, without database, item or gallery. 0 when the item cannot be updated; else whether the
    // record was stored, also when the gallery has no such item.
    int execute() override;

private:
    DS_Transition_Record m_transition;
    DBTools* m_pDBTools;
    CQItem* m_pItem;
    GUID m_guidItem;
};
