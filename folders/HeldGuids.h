#pragma once

#include "folders/CQFolder.h"
#include "platform/framework/GuidHash.h"

#include <cstdint>
#include <unordered_set>
#include <vector>

namespace qfc {

// Which GUIDs the items of one folder have, so that adding to a full folder need not compare with every item. The
// answer is always that of comparing with each: the set holds only what cannot change unnoticed, and is given up when
// the array or a GUID in it changes; items whose GUID somebody may write at any time are still compared one by one. A
// set is made once comparing has cost more than making it. Belongs to the thread of the folder.
class HeldGuids {
public:
    // Changes nothing, so that several threads may look at a tree that nobody changes.
    static bool Has(CQFolder& folder, const GUID& guid);
    // The same for one who adds to the folder: takes stock when that pays.
    static bool HasBeforeAdd(CQFolder& folder, const GUID& guid);
    // Called when an item was appended to the array.
    static void NoteAppended(CQFolder& folder, const CQFolder::ItemArray& items, CQItem& item) noexcept;
    // Called when the array, which had that modification count before, was put into another order and holds the same.
    static void NoteReordered(CQFolder& folder, const CQFolder::ItemArray& items, unsigned long long nBefore) noexcept;
    // Called when the GUID of a watched item changes or is handed out for writing. Any thread.
    static void NoteGuidChanged();

    // How many items were looked at so far, process-wide: what the tests measure.
    static std::uint64_t VisitsSoFar();

private:
    static bool MayKnow(const CQFolder::ItemArray& items);
    static bool CompareEach(const CQFolder::ItemArray& items, const GUID& guid);
    bool IsCurrent(const CQFolder::ItemArray& items) const;
    void TakeStockIfItPays(const CQFolder::ItemArray& items);
    void Take(CQItem& item);
    bool Knows(const GUID& guid) const;

    std::unordered_set<GUID, GuidHash> m_guids;
    std::vector<const CQItem*> m_handedOut;
    const CObArray* m_items = nullptr;  // Null: nothing is known.
    unsigned long long m_itemsModification = 0;
    std::uint64_t m_guidChanges = 0;
    std::uint64_t m_compared = 0;  // Since there was a set.
};

}  // namespace qfc
