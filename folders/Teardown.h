#pragma once

#include "platform/framework/Collections.h"
#include "platform/framework/Guid.h"

#include <optional>
#include <unordered_set>

class CQFolder;
class CQGallery;
class CQItem;

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
    // Whether the object was ended since the outermost clearing began; false outside of one.
    static bool IsGone(const CObject* object);

private:
    friend bool LeaveGallery(CQGallery* gallery, CQItem& item, CQFolder& folder);
    friend void PassOnParenthood(CQGallery& gallery, const GUID& guid, const CQFolder& former);

    static void NoteGone(const CObject* object);
    void LetGoOnce(CObject* object, CQFolder& folder);
    CQFolder* SurvivorHolding(CQGallery& gallery, const GUID& guid);

    CQFolder& m_cleared;
    Teardown* const m_outer;
    // Of the outermost one; addresses only.
    std::unordered_set<const CObject*> m_gone;
    std::optional<std::unordered_set<const CQFolder*>> m_survivors;  // Folders outside what is cleared; when needed.
};

// The gallery takes back an item that a folder no longer has in its array. The item dies as
// CQGallery::RemoveItemFromMap says, but a second object of a GUID not before the last folder that has it. False,
// nothing done, when there is no gallery or it does not know the item.
bool LeaveGallery(CQGallery* gallery, CQItem& item, CQFolder& folder);

// Takes every occurrence of an object out of an array. The object may be dead.
void DropOccurrences(CObArray& array, const CObject* object);

// Called when the gallery has taken an item out of the folder: if it lives on in others, the first of those becomes its
// parent in place of this folder.
void PassOnParenthood(CQGallery& gallery, const GUID& guid, const CQFolder& former);

}  // namespace qfc
