#pragma once

#include "hosts/qfc/library/Galleries.h"
#include "platform/framework/Guid.h"

#include <list>
#include <vector>

class CQFolder;
class CQItem;
class DBTools;

namespace qfc::host {

// Takes the tags from items that are about to lose their last placement: the library itself would leave the links
// behind. Items that are still stored afterwards get them back. Main thread.
class LinkRelease {
public:
    // Looks at the items of these folders alone, and takes nothing from those that other folders hold, too.
    LinkRelease(Galleries& galleries, const std::vector<CQFolder*>& leaving, const std::vector<CQItem*>& items);

    // False when a link could not be taken: everything was given back, and the items have to stay.
    bool IsComplete() const { return m_isComplete; }
    // Looks which items are still there.
    void GiveBack(DBTools& tools);

private:
    struct Taken {
        std::list<GUID> tags;
        std::vector<GUID> items;
    };
    std::vector<Taken> m_taken;
    bool m_isComplete = true;
};

// Changes links of stored items by their GUIDs; loaded items learn nothing of it. Look at what is stored afterwards.
void LinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags);
void UnlinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags);

// After a clear: no item is there any more that a link could belong to.
void ReleaseAllLinks(const Session& session);

}  // namespace qfc::host
