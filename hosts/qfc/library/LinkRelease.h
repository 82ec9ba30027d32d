#pragma once

#include "hosts/qfc/library/Galleries.h"
#include "platform/framework/Guid.h"

#include <list>
#include <vector>

class DBTools;

namespace qfc::host {

// Links of tags to items by their GUIDs. Loaded items learn nothing of it. Main thread.

// After a removal: the library leaves the links of an item behind that is gone. Takes those of the items that are not
// stored any more, and leaves the others alone. Whatever ends the process in between, an item that stays has its tags,
// and `check` tells of links that are left. Gives the items whose links could not be taken, or of which nobody can say
// whether they are stored.
std::vector<GUID> ReleaseLinks(DBTools& tools, const std::vector<GUID>& items);

// Look at what is stored afterwards.
void LinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags);
void UnlinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags);

}  // namespace qfc::host
