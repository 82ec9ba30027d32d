#include "hosts/qfc/library/EffectRemoval.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/LinkRelease.h"
#include "hosts/qfc/library/Removal.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace qfc::host {
namespace {

void Add(std::vector<std::string>& to, const std::vector<std::string>& from) {
    to.insert(to.end(), from.begin(), from.end());
}

// One gallery and what is to go from it.
class Removing {
public:
    Removing(Galleries& galleries, bool isTransition, const std::vector<KnownFile>& files)
        : m_galleries(galleries),
          m_isTransition(isTransition),
          m_gallery(galleries.Open(isTransition ? kTransitionsGallery : kFiltersGallery)),
          m_tools(*m_gallery.GetDBTools()) {
        for (const KnownFile& file : files) Note(file);
        for (const CQFolder* folder : WholeTree(m_gallery)) m_folders[folder->GetDBId()] = PathOf(*folder);
    }

    void Go(EffectRemoval& removal) {
        const bool isDone = Delete();
        if (!isDone) LookAtRecords(removal);
        removal.remains.Add(ReleaseLinks(m_tools, Guids()));
        LookAtFolders(isDone, removal);
        for (const Leaving& leaving : m_leaving) LookAtItem(leaving, removal);
    }

private:
    void Note(const KnownFile& file) {
        DS_Filter_File_Record filters;
        filters.strFileName = ToCString(file.path);
        for (const KnownEffect& effect : file.effects) {
            if (effect.isTransition != m_isTransition) continue;
            filters.filters.push_back({{}, {}, effect.guid});
            m_transitions.push_back({ToCString(file.path), {}, effect.guid});
            NotePlaces(effect);
        }
        if (file.filterCount || !filters.filters.empty()) m_filters.push_back(std::move(filters));
    }

    void NotePlaces(const KnownEffect& effect) {
        Leaving leaving{effect.guid, GuidToText(effect.guid), {}};
        if (effect.item != nullptr) {
            for (CQFolder* folder : FoldersOf(m_gallery, effect.guid)) {
                leaving.places.push_back({folder->GetDBId(), PathOf(*folder, *effect.item)});
            }
        }
        if (!leaving.places.empty()) leaving.name = leaving.places.front().path + " " + leaving.name;
        m_leaving.push_back(std::move(leaving));
    }

    std::vector<GUID> Guids() const {
        std::vector<GUID> guids;
        for (const Leaving& leaving : m_leaving) guids.push_back(leaving.guid);
        return guids;
    }

    bool Delete() {
        const ULONGLONG handle = ToHandle(&m_gallery);
        return m_isTransition ? QFCLibraryManager::fnDeleteTransition(m_transitions, handle) != 0
                              : QFCLibraryManager::fnDeleteFilter(m_filters, handle) != 0;
    }

    void LookAtRecords(EffectRemoval& removal) const {
        const auto hasRecords = m_isTransition ? HasAnyOf(m_transitions, GetTransitionRecord)  //
                                               : HasAnyOf(m_filters, GetFilterRecord);
        removal.areRecordsKept = removal.areRecordsKept || hasRecords != false;
        if (hasRecords) {
            // Nothing else that it does can fail as a whole.
            removal.remains.stored.emplace_back(*hasRecords ? "the records" : "a folder that is empty now");
        } else {
            removal.remains.unseen.emplace_back("every record");
        }
    }
    // Nothing when they cannot be read.
    template <class Record>
    static std::optional<bool> HasAnyOf(const std::vector<Record>& records, bool (*read)(std::vector<Record>&)) {
        std::vector<Record> stored;
        if (!read(stored)) return std::nullopt;
        std::set<std::string> names;
        for (const Record& record : stored) names.insert(ToText(record.strFileName));
        return std::ranges::any_of(records,
                                   [&](const Record& record) { return names.contains(ToText(record.strFileName)); });
    }

    // One that is loaded still may be gone when the deletion ended half-way.
    void LookAtFolders(bool isDone, EffectRemoval& removal) const {
        std::set<int> loaded;
        for (const CQFolder* folder : WholeTree(m_gallery)) loaded.insert(folder->GetDBId());
        for (const auto& [row, path] : m_folders) {
            const bool isLoaded = loaded.contains(row);
            if (isLoaded && isDone) continue;
            const auto isStored = IsFolderStored(m_tools, row);
            if (isStored == false) removal.folders.push_back(path);
            if (!isLoaded) removal.remains.Note(path, isStored);
        }
    }

    struct Place {
        int row;
        std::string path;
    };
    // An effect that is to go.
    struct Leaving {
        GUID guid;
        std::string name;
        std::vector<Place> places;
    };

    void LookAtItem(const Leaving& leaving, EffectRemoval& removal) const {
        Remains places;
        std::vector<std::string> gone, nowhere;
        for (const Place& place : leaving.places) {
            const auto isPlaced = IsStillPlaced(leaving.guid, place.row);
            if (isPlaced == false) {
                gone.push_back(place.path);
            } else if (isPlaced == true && IsFolderGone(m_tools, place.row)) {
                nowhere.push_back(place.path);
            } else {
                places.Note(place.path, isPlaced);
            }
        }
        // In a place that is stored it is not left behind.
        const auto isLeft =
            places.IsEmpty() ? IsLeftBehind(m_galleries, m_tools, leaving.guid) : std::optional<bool>(false);
        if (isLeft == true) removal.itemsLeft.push_back(leaving.name);
        if (!isLeft && places.unseen.empty()) places.unseen.push_back("the item " + leaving.name);
        if (isLeft == false) Add(places.stored, nowhere);
        if (isLeft != false || !places.IsEmpty()) removal.notGone.insert(leaving.guid);
        Add(removal.effects, gone);
        Add(removal.remains.stored, places.stored);
        Add(removal.remains.unseen, places.unseen);
    }

    std::optional<bool> IsStillPlaced(const GUID& guid, int row) const {
        const std::vector<CQFolder*> folders = FoldersOf(m_gallery, guid);
        if (std::ranges::any_of(folders, [&](const CQFolder* folder) { return folder->GetDBId() == row; })) return true;
        return IsPlaced(m_tools, row, guid);
    }

    Galleries& m_galleries;
    const bool m_isTransition;
    CQGallery& m_gallery;
    DBTools& m_tools;
    std::vector<DS_Filter_File_Record> m_filters;
    std::vector<DS_Transition_Record> m_transitions;
    std::vector<Leaving> m_leaving;
    std::map<int, std::string> m_folders;  // Paths by row, as they were.
};

bool Touches(const KnownFile& file, bool isTransition) {
    if (!isTransition && file.filterCount) return true;
    return std::ranges::any_of(file.effects,
                               [&](const KnownEffect& effect) { return effect.isTransition == isTransition; });
}

}  // namespace

std::vector<std::string> EffectRemoval::Lines() const {
    std::vector<std::string> lines = remains.Lines();
    for (const std::string& item : itemsLeft) {
        lines.push_back("the item " + item + " is left without a folder; check lists it");
    }
    return lines;
}

void EffectRemoval::Append(const EffectRemoval& other) {
    Add(effects, other.effects);
    Add(folders, other.folders);
    Add(remains.stored, other.remains.stored);
    Add(remains.unseen, other.remains.unseen);
    Add(itemsLeft, other.itemsLeft);
    notGone.insert(other.notGone.begin(), other.notGone.end());
    areRecordsKept = areRecordsKept || other.areRecordsKept;
}

EffectRemoval RemoveEffects(Galleries& galleries, const std::vector<KnownFile>& files) {
    // Both galleries are opened before anything goes: afterwards nothing may be in the way of what is told.
    std::list<Removing> removings;
    for (const bool isTransition : {false, true}) {
        std::vector<KnownFile> touched;
        std::ranges::copy_if(files, std::back_inserter(touched),
                             [&](const KnownFile& file) { return Touches(file, isTransition); });
        if (!touched.empty()) removings.emplace_back(galleries, isTransition, touched);
    }
    EffectRemoval removal;
    for (Removing& removing : removings) removing.Go(removal);
    return removal;
}

}  // namespace qfc::host
