#pragma once

#include "hosts/qfc/library/Remains.h"
#include "platform/framework/Guid.h"

#include <list>
#include <vector>

class DBTools;

namespace qfc::host {

// Links of tags to items by their GUIDs. Loaded items learn nothing of it. Main thread.

// After a removal: the library leaves the links of an item behind that is gone. Takes those of the items that are not
// stored any more, and leaves the others alone. Whatever ends the process in between, an item that stays has its tags,
// and `check` tells of links that are left. Gives the links of gone items that are still there, or nobody knows.
Remains ReleaseLinks(DBTools& tools, const std::vector<GUID>& items);

// Look at what is stored afterwards.
void LinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags);
void UnlinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags);

}  // namespace qfc::host
