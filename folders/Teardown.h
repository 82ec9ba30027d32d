#pragma once

#include "platform/framework/Guid.h"

#include <optional>
#include <unordered_set>

class CQFolder;
class CQGallery;
class CQItem;
class CObject;

namespace qfc {

// Ends items while folders are cleared. One object may stand in several places (in several folders of the tree, or
// twice in one); across the whole of the outermost clearing it is ended once and never looked at again. Made on the
// stack by every Clear; nested ones share the outermost one's memory. One thread.
class Teardown {
public:
    explicit Teardown(CQFolder& cleared);
    ~Teardown();
    Teardown(const Teardown&) = delete;
    Teardown& operator=(const Teardown&) = delete;

    // The folder's gallery takes the item back; the item is destroyed when there is no gallery or it does not know it.
    // An item that lives on in other folders no longer has this one as its parent. The item may be dead already: it is
    // an address until it is known not to be.
    static void LetGo(CObject* item, CQFolder& folder);

private:
    void LetGoOnce(CObject* object, CQFolder& folder);
    CQFolder* SurvivorHolding(CQGallery& gallery, const GUID& guid);

    CQFolder& m_cleared;
    Teardown* const m_outer;
    // Of the outermost one; addresses only.
    std::unordered_set<const CObject*> m_gone;
    std::optional<std::unordered_set<const CQFolder*>> m_survivors;  // Folders outside what is cleared; when needed.
};

// Called when the gallery has taken an item out of the folder: if it lives on in others, the first of those becomes its
// parent in place of this folder.
void PassOnParenthood(CQGallery& gallery, const GUID& guid, const CQFolder& former);

}  // namespace qfc
