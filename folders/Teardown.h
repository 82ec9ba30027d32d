#pragma once

#include "platform/framework/Collections.h"
#include "platform/framework/Guid.h"

#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class CQFolder;
class CQGallery;
class CQItem;

namespace qfc {

// Ends items while folders lose them. One object may stand in several places (in several folders of the tree, or twice
// in one); across the whole of the outermost clearing it is ended once, and not at all while a folder that is not
// cleared has it. What no gallery's index knows is ended at the end of the outermost clearing, so that every folder
// that has it can still let go of it; what an index ends is dead at once and never looked at again. Made on the stack
// by everything that ends items; nested ones share the outermost one's memory. One thread.
class Teardown {
public:
    // What goes: the folder with everything below it, or items of the folder alone.
    enum class Extent { kSubtree, kOwnItems };

    explicit Teardown(CQFolder& cleared, Extent extent = Extent::kSubtree);
    ~Teardown();
    Teardown(const Teardown&) = delete;
    Teardown& operator=(const Teardown&) = delete;

    // The folder's gallery takes the item back; without a gallery that knows it, the item is to end unless a folder
    // that is not cleared has it. An item that lives on in other folders no longer has this one as its parent. The item
    // may be dead already: it is an address until it is known not to be.
    static void LetGo(CObject* item, CQFolder& folder);
    // The folder gives up an item that is not to end: a folder that is not cleared and has it becomes its parent.
    // Without such a folder the item is not looked at; it may be dead then.
    static void PassOn(const CObject* object, CQFolder& former);
    // Whether the object was ended since the outermost clearing began; false outside of one.
    static bool IsGone(const CObject* object);

private:
    friend bool LeaveGallery(CQGallery* gallery, CQItem& item, CQFolder& folder);
    friend void KeepForOthers(CQGallery& gallery, CQItem& canonical, const CQFolder& leaving);
    friend void PassOnParenthood(CQGallery& gallery, const GUID& guid, const CQFolder& former);

    static void NoteGone(const CObject* object);
    void LetGoOnce(CObject* object, CQFolder& folder);
    const std::unordered_set<const CQFolder*>& Survivors();
    CQFolder* SurvivorHolding(const CQGallery& gallery, const GUID& guid);
    CQFolder* SurvivorWith(const CObject* object);
    CQFolder* SearchSurvivorsFor(const CObject* object);
    void NoteWhatSurvivorsHold();

    CQFolder& m_cleared;
    const Extent m_extent;
    Teardown* const m_outer;
    // All of the outermost one.
    std::unordered_set<const CObject*> m_gone;  // Addresses only.
    std::vector<std::unique_ptr<CObject>> m_ending;
    std::unordered_set<const CObject*> m_endingObjects;
    // Made when needed: the folders that are not cleared, and which of them has which object.
    std::optional<std::unordered_set<const CQFolder*>> m_survivors;
    std::optional<std::unordered_map<const CObject*, CQFolder*>> m_held;
    bool m_searched = false;
};

// Whether a folder that is cleared ends its items: not when it belongs to another database than the current one.
bool EndsItsItems(const CQFolder& folder);

// The gallery takes back an item that a folder no longer has in its array, or is about to lose. The item dies as
// CQGallery::RemoveItemFromMap says, but not before the last folder that has it: a folder that has the canonical object
// without being its parent in the index is made one when the last of those goes, and the folder stays a parent while it
// has the canonical object beside a second one that goes. An item that lives on gets one of its folders as its parent.
// False, nothing done, when there is no gallery or it does not know the item.
bool LeaveGallery(CQGallery* gallery, CQItem& item, CQFolder& folder);

// Takes every occurrence of an object out of an array. The object may be dead.
void DropOccurrences(CObArray& array, const CObject* object);

// Called when a folder has let go of an item that stays alive and in the gallery's index: if other folders have it, the
// first of those becomes its parent in place of this folder.
void PassOnIfHeldElsewhere(CQItem& item, CQFolder& former);

// Called when the gallery has taken an item out of the folder: if it lives on in others, the first of those becomes its
// parent in place of this folder.
void PassOnParenthood(CQGallery& gallery, const GUID& guid, const CQFolder& former);

}  // namespace qfc
