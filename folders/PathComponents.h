#pragma once

#include "platform/framework/CString.h"
#include "platform/framework/Collections.h"

// The one list into which folder paths are split, and the position of the next component in it. Process-wide and
// unguarded: whoever walks paths does so on one thread.
namespace qfc {

// Replaces the list by the components of the path (in reverse order unless `bInOrder`) and sets the position to the
// first one. True when there is at least one.
bool SplitIntoComponents(const CString& path, bool bInOrder);

// The component at the position, which then moves on; an empty text when none is left.
CString TakeComponent();

CStringList& PathComponents();
// Null behind the last component. Callers hand it on by reference.
POSITION& PathPosition();

}  // namespace qfc
