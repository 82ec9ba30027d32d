#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/EffectWriter.h"
#include "hosts/qfc/library/Placement.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <map>
#include <optional>
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

// Nothing when a look fails.
std::optional<bool> Both(std::optional<bool> one, std::optional<bool> other) {
    if (one == false || other == false) return false;
    return one && other ? std::optional<bool>(true) : std::nullopt;
}

// What the database has of the effects, and of the folders that they were added to.
class Looking {
public:
    explicit Looking(Galleries& galleries) : m_galleries(galleries) {
        try {
            m_catalogue.emplace(galleries);
        } catch (const Failure&) {  // Nobody knows.
        }
    }

    std::optional<bool> IsStored(const EffectOutcome& outcome) {
        CQGallery* gallery = GalleryOf(outcome);
        if (outcome.isStored == false || gallery == nullptr) return Both(outcome.isStored, std::nullopt);
        DBTools& tools = *gallery->GetDBTools();
        const auto isStored = outcome.isStored ? outcome.isStored : IsItemStored(tools, outcome.guid);
        const auto hasBoth = m_catalogue ? std::optional<bool>(HasBoth(*m_catalogue, outcome)) : std::nullopt;
        return Both(Both(isStored, hasBoth), IsPlacedThere(tools, outcome));
    }

    // What is left of one that is not stored.
    void LookForRest(EffectOutcome& outcome) {
        CQGallery* gallery = GalleryOf(outcome);
        if (gallery == nullptr || outcome.folderRow == -1) return;
        DBTools& tools = *gallery->GetDBTools();
        outcome.isItemLeft =
            IsItemStored(tools, outcome.guid) == true && IsPlaced(tools, outcome.folderRow, outcome.guid) == true;
        if (!outcome.isFolderNew || IsFolderStored(tools, outcome.folderRow) != true) return;
        const auto items = StoredItems(tools, outcome.folderRow);
        const auto folders = StoredSubFolders(tools, outcome.folderRow);
        outcome.isFolderLeft = items && items->empty() && folders && folders->empty();
    }

    std::vector<std::string> MendOrders(const std::vector<EffectOutcome>& outcomes) {
        std::set<CQFolder*> folders;
        for (const EffectOutcome& outcome : outcomes) {
            if (outcome.isStored == false || outcome.isTransition || outcome.folderRow == -1) continue;
            CQGallery* gallery = GalleryOf(outcome);
            if (gallery == nullptr) continue;
            for (CQFolder* folder : FoldersOf(*gallery, outcome.guid)) folders.insert(folder);
        }
        std::vector<std::string> others;
        for (CQFolder* folder : folders) {
            if (!MendItemOrder(*folder)) others.push_back(PathOf(*folder));
        }
        return others;
    }

private:
    std::optional<bool> IsPlacedThere(DBTools& tools, const EffectOutcome& outcome) {
        if (outcome.folderRow == -1) return true;
        const auto [folder, isNew] = m_folders.try_emplace(outcome.folderRow);
        if (isNew) {
            if (const auto items = StoredItems(tools, outcome.folderRow))
                folder->second.emplace(items->begin(), items->end());
        }
        return folder->second ? std::optional<bool>(folder->second->contains(outcome.guid)) : std::nullopt;
    }

    // Null when it cannot be reached.
    CQGallery* GalleryOf(const EffectOutcome& outcome) {
        CQGallery*& gallery = m_opened[outcome.isTransition];
        try {
            if (gallery == nullptr)
                gallery = &m_galleries.Open(outcome.isTransition ? kTransitionsGallery : kFiltersGallery);
        } catch (const Failure&) {  // Nobody knows.
        }
        return gallery;
    }

    Galleries& m_galleries;
    std::optional<EffectCatalogue> m_catalogue;
    std::map<bool, CQGallery*> m_opened;
    std::map<int, std::optional<std::set<GUID>>> m_folders;  // Nothing for one that could not be read.
};

}  // namespace

std::vector<std::string> VerifyEffects(Galleries& galleries, std::vector<EffectOutcome>& outcomes) {
    if (outcomes.empty()) return {};
    Looking looking(galleries);
    for (EffectOutcome& outcome : outcomes) {
        outcome.isStored = looking.IsStored(outcome);
        if (outcome.isStored == false) looking.LookForRest(outcome);
    }
    return looking.MendOrders(outcomes);
}

}  // namespace qfc::host
