#pragma once

#include "hosts/qfc/library/EffectCatalogue.h"
#include "hosts/qfc/library/Remains.h"
#include "platform/framework/Guid.h"

#include <set>
#include <string>
#include <vector>

namespace qfc::host {

// What a removal of effects came to, as far as looks afterwards tell. Paths are as shown.
struct EffectRemoval {
    std::vector<std::string> effects;    // Gone: the places that items had.
    std::vector<std::string> folders;    // Gone since nothing was in them any more.
    Remains remains;                     // Places, folders, records, links of tags.
    std::vector<std::string> itemsLeft;  // Stored, although no folder holds them any more.
    std::set<GUID> notGone;              // Effects whose items are still stored, or nobody knows.
    bool areRecordsKept = false;         // The store may have some of them still, and the items with these.

    bool IsWhole() const { return remains.IsEmpty() && itemsLeft.empty(); }
    // What to complain of; empty when all went.
    std::vector<std::string> Lines() const;
    void Append(const EffectRemoval& other);
};

// Removes the rows that the store has of the files, all of them, and the items of the effects given with them; folders
// without items, of both galleries if both are touched, go as well. Objects of removed items and folders are gone
// afterwards. Then looks. Throws Failure, having removed nothing, when a gallery cannot be opened; a look that fails
// afterwards throws nothing. Main thread, no adds under way.
EffectRemoval RemoveEffects(Galleries& galleries, const std::vector<KnownFile>& files);

}  // namespace qfc::host
