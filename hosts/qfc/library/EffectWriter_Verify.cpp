#include "api/QFCLib.h"
#include "hosts/qfc/library/EffectWriter.h"
#include "hosts/qfc/library/Placement.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <map>
#include <set>

namespace qfc::host {
namespace {

bool HasBoth(const EffectCatalogue& catalogue, const EffectOutcome& outcome) {
    const KnownFile* file = catalogue.Find(outcome.file);
    return file != nullptr && std::ranges::any_of(file->effects, [&](const KnownEffect& known) {
               return known.guid == outcome.guid && known.isTransition == outcome.isTransition && known.isRecorded &&
                      known.item != nullptr;
           });
}

// What the database has in the folders that effects were added to.
class Placements {
public:
    explicit Placements(Galleries& galleries) : m_galleries(galleries) {}

    bool Have(const EffectOutcome& outcome) {
        if (outcome.folderRow == -1) return true;
        const auto [folder, isNew] = m_folders.try_emplace(outcome.folderRow);
        if (isNew) folder->second = StoredItemSet(*GalleryOf(outcome).GetDBTools(), outcome.folderRow);
        return folder->second.contains(outcome.guid);
    }

    std::vector<std::string> MendOrders(const std::vector<EffectOutcome>& outcomes) {
        std::set<CQFolder*> folders;
        for (const EffectOutcome& outcome : outcomes) {
            if (!outcome.isStored || outcome.isTransition || outcome.folderRow == -1) continue;
            for (CQFolder* folder : FoldersOf(GalleryOf(outcome), outcome.guid)) folders.insert(folder);
        }
        std::vector<std::string> others;
        for (CQFolder* folder : folders) {
            if (!MendItemOrder(*folder)) others.push_back(PathOf(*folder));
        }
        return others;
    }

private:
    CQGallery& GalleryOf(const EffectOutcome& outcome) {
        return m_galleries.Open(outcome.isTransition ? kTransitionsGallery : kFiltersGallery);
    }

    Galleries& m_galleries;
    std::map<int, std::set<GUID>> m_folders;
};

}  // namespace

std::vector<std::string> VerifyEffects(Galleries& galleries, std::vector<EffectOutcome>& outcomes) {
    if (outcomes.empty()) return {};
    const EffectCatalogue catalogue(galleries);
    Placements placements(galleries);
    for (EffectOutcome& outcome : outcomes) {
        outcome.isStored = outcome.isStored && HasBoth(catalogue, outcome) && placements.Have(outcome);
    }
    return placements.MendOrders(outcomes);
}

}  // namespace qfc::host
