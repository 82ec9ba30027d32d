#include "hosts/qfc/library/EffectRemoval.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/LinkRelease.h"
#include "hosts/qfc/library/Removal.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

namespace qfc::host {
namespace {

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
        if (!Delete()) {
            const bool areRecordsKept = HasRecords();
            // Nothing else that it does can fail as a whole.
            removal.kept.emplace_back(areRecordsKept ? "the records" : "a folder that is empty now");
            removal.areRecordsKept = removal.areRecordsKept || areRecordsKept;
        }
        for (const GUID& guid : ReleaseLinks(m_tools, m_guids)) {
            removal.kept.push_back("the links of tags to " + GuidToText(guid));
        }
        Look(removal);
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
        m_guids.push_back(effect.guid);
        if (effect.item == nullptr) return;
        for (CQFolder* folder : FoldersOf(m_gallery, effect.guid)) {
            m_places.push_back({effect.guid, folder->GetDBId(), PathOf(*folder, *effect.item)});
        }
    }

    bool Delete() {
        const ULONGLONG handle = ToHandle(&m_gallery);
        return m_isTransition ? QFCLibraryManager::fnDeleteTransition(m_transitions, handle) != 0
                              : QFCLibraryManager::fnDeleteFilter(m_filters, handle) != 0;
    }

    // Also when they cannot be read.
    bool HasRecords() const {
        return m_isTransition ? HasAnyOf(m_transitions, GetTransitionRecord) : HasAnyOf(m_filters, GetFilterRecord);
    }
    template <class Record>
    static bool HasAnyOf(const std::vector<Record>& records, bool (*read)(std::vector<Record>&)) {
        std::vector<Record> stored;
        if (!read(stored)) return true;
        std::set<std::string> names;
        for (const Record& record : stored) names.insert(ToText(record.strFileName));
        return std::ranges::any_of(records,
                                   [&](const Record& record) { return names.contains(ToText(record.strFileName)); });
    }

    void Look(EffectRemoval& removal) {
        std::set<int> left;
        for (const CQFolder* folder : WholeTree(m_gallery)) left.insert(folder->GetDBId());
        for (const auto& [row, path] : m_folders) {
            if (left.contains(row)) continue;
            (IsFolderGone(m_tools, row) ? removal.folders : removal.kept).push_back(path);
        }
        for (const Place& place : m_places) {
            const bool isGone =
                FoldersOf(m_gallery, place.guid).empty() && IsPlaced(m_tools, place.row, place.guid) == false;
            (isGone ? removal.effects : removal.kept).push_back(place.path);
        }
        for (const GUID& guid : m_guids) {
            if (IsLeftBehind(m_galleries, m_tools, guid) != false)
                removal.kept.push_back("the item " + GuidToText(guid));
        }
    }

    struct Place {
        GUID guid;
        int row;
        std::string path;
    };

    Galleries& m_galleries;
    const bool m_isTransition;
    CQGallery& m_gallery;
    DBTools& m_tools;
    std::vector<DS_Filter_File_Record> m_filters;
    std::vector<DS_Transition_Record> m_transitions;
    std::vector<GUID> m_guids;
    std::vector<Place> m_places;
    std::map<int, std::string> m_folders;  // Paths by row, as they were.
};

bool Touches(const KnownFile& file, bool isTransition) {
    if (!isTransition && file.filterCount) return true;
    return std::ranges::any_of(file.effects,
                               [&](const KnownEffect& effect) { return effect.isTransition == isTransition; });
}

}  // namespace

EffectRemoval RemoveEffects(Galleries& galleries, const std::vector<KnownFile>& files) {
    EffectRemoval removal;
    for (const bool isTransition : {false, true}) {
        std::vector<KnownFile> touched;
        std::ranges::copy_if(files, std::back_inserter(touched),
                             [&](const KnownFile& file) { return Touches(file, isTransition); });
        if (!touched.empty()) Removing(galleries, isTransition, touched).Go(removal);
    }
    return removal;
}

}  // namespace qfc::host
