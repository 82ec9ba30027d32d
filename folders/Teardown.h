#pragma once

#include "platform/framework/Guid.h"
#include "platform/framework/Types.h"

#include <list>
#include <optional>
#include <unordered_map>
#include <unordered_set>

class CObject;
class CQFolder;
class CQGallery;
class CQItem;

namespace qfc {

// Ends items while folders lose them. One object may stand in several places (in several folders of the tree, or twice
// in one); across the whole of the outermost clearing it is ended once, and not at all while a folder that is not
// cleared has it. Whatever ends does so at the end of the outermost clearing: until then every folder that has it can
// look at it and take its placement out of the database. Made on the stack by everything that ends items; nested ones
// share the outermost one. Needs no memory to end anything: what is noted makes it fast, and without memory for that
// the tree is searched. One thread.
class Teardown {
public:
    // What goes: the folder with everything below it, or items of the folder alone, or a whole tree with all of its
    // items, those included that a clearing leaves alone.
    enum class Extent { kSubtree, kOwnItems, kTreeAndAllItems };

    explicit Teardown(CQFolder& cleared, Extent extent = Extent::kSubtree);
    ~Teardown();
    Teardown(const Teardown&) = delete;
    Teardown& operator=(const Teardown&) = delete;

    // The rest is called while there is one.

    // Whether a folder that is cleared ends its items: not when it belongs to another database than the current one,
    // unless all items go.
    static bool EndsItemsOf(const CQFolder& folder);
    // The folder loses the item: leaves the index or, when the index does not know it, ends it unless a folder that is
    // not cleared has it. An item that lives on in other folders no longer has this one as its parent.
    static void LetGo(CQItem* item, CQFolder& folder);
    // The gallery takes back an item that the folder no longer has in its array, or is about to lose. The canonical
    // object ends with its last parent, a second one at once, but neither before the last folder that has it: a folder
    // that has the canonical object without being its parent in the index is made one when the last of those goes, and
    // the folder stays a parent while it has the canonical object beside a second one that goes. False, nothing done,
    // when there is no gallery or it does not know the item.
    static bool LeaveIndex(CQItem& item, CQFolder& folder);
    // The folder gives up an item that is not to end: a folder that is not cleared and has it becomes its parent.
    // Without such a folder the item is not looked at; it may be dead then.
    static void PassOn(const CObject* object, CQFolder& former);

private:
    bool IsNobodyLeft() const;
    template <class IsAccepted>
    CQFolder* FirstSurvivor(IsAccepted&& isAccepted) const;
    bool IsSurvivor(const CQFolder* address);
    CQFolder* SurvivorWith(const CObject* object);
    bool HasNotedSurvivors();
    bool HasNotedWhatSurvivorsHold();
    void EndLater(CQItem& item);
    void EndUnlessHeld(CQItem& item, CQFolder& former);
    void LeaveEntry(CQGallery& gallery, const GUID& guid, CQFolder& folder);
    CQFolder* NextParent(const CQItem& item, const std::list<ULONGLONG>& parents);

    CQFolder& m_cleared;
    const Extent m_extent;
    Teardown* const m_outer;
    // All of the outermost one. What is to end is chained through the items themselves.
    CQItem* m_firstEnding = nullptr;
    CQItem* m_lastEnding = nullptr;
    // Made when needed: the folders that are not cleared, and which of them has which object.
    std::optional<std::unordered_set<const CQFolder*>> m_survivors;
    std::optional<std::unordered_map<const CObject*, CQFolder*>> m_held;
    bool m_searched = false;
};

}  // namespace qfc
