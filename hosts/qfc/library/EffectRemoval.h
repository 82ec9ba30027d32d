#pragma once

#include "hosts/qfc/library/EffectCatalogue.h"

#include <string>
#include <vector>

namespace qfc::host {

// What a removal of effects came to: paths as shown, of the places that items had and of the folders that went because
// nothing was in them any more; and what is still stored.
struct EffectRemoval {
    std::vector<std::string> effects;
    std::vector<std::string> folders;
    std::vector<std::string> kept;
    bool areRecordsKept = false;  // The store has some of them still, and the items with these.
};

// Removes the rows that the store has of the files, all of them, and the items of the effects given with them; folders
// without items, of both galleries if both are touched, go as well. Objects of removed items and folders are gone
// afterwards. Then looks. Main thread, no adds under way.
EffectRemoval RemoveEffects(Galleries& galleries, const std::vector<KnownFile>& files);

}  // namespace qfc::host
