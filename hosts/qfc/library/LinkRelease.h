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
    // Looks at the items of these folders alone, and takes nothing from those that other folders hold, too. Throws
    // Failure, having given everything back, when a link cannot be taken.
    LinkRelease(Galleries& galleries, const std::vector<CQFolder*>& leaving, const std::vector<CQItem*>& items);

    // Looks which items are still there.
    void GiveBack(DBTools& tools);

private:
    struct Taken {
        std::list<GUID> tags;
        std::vector<GUID> items;
    };
    std::vector<Taken> m_taken;
};

// After a clear: no item is there any more that a link could belong to.
void ReleaseAllLinks(const Session& session);

}  // namespace qfc::host
