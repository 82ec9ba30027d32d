#include "api/QFCLib.h"
#include "hosts/qfc/Progress.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/FolderMaker.h"
#include "hosts/qfc/library/ItemPayloads.h"
#include "hosts/qfc/library/OtherLibrary.h"
#include "hosts/qfc/library/Placement.h"
#include "hosts/qfc/library/TagImport.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"
#include "hosts/qfc/media/FileWalk.h"

#include <algorithm>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>

namespace qfc::host {
namespace {

// Brings another library into this one and keeps what came of it.
class LibraryImport {
public:
    LibraryImport(Galleries& galleries, OtherLibrary& other, TagImport& tags, const Interrupt& interrupt,
                  const Console& console)
        : m_galleries(galleries), m_other(other), m_tags(tags), m_interrupt(interrupt), m_console(console) {}

    // What fails on the way is noted; what came before is told all the same.
    void Go() {
        try {
            for (const GalleryName& name : m_other.Stored()) {
                if (!m_interrupt.IsRaised()) TakeGalleryOf(name);
            }
            TakeFromElsewhere();
            LookForPayloads();
            TakeTags();
        } catch (const Failure& failure) {
            NoteFailed("the rest", failure.what());
        }
    }

    int Report() const {
        m_console.ShowJson({{"foldersMade", m_foldersMade},
                            {"added", m_added},
                            {"already", m_already},
                            {"elsewhere", m_elsewhere},
                            {"tagsMade", m_tags.Made()},
                            {"tagged", m_tags.Tagged()},
                            {"failed", m_failed},
                            {"unseen", m_unseen},
                            {"interrupted", m_interrupt.IsRaised()}});
        const std::string summary =
            Counted(m_added.size(), "item") + " added, " + std::to_string(m_already.size()) + " there already, " +
            (m_elsewhere.empty() ? "" : std::to_string(m_elsewhere.size()) + " elsewhere, ") +
            Counted(m_foldersMade.size(), "folder") + " made, " + Counted(m_tags.Made().size(), "tag") + " made, " +
            Counted(m_tags.Tagged().size(), "item") + " tagged" +
            (m_unseen.empty() ? "" : ", " + std::to_string(m_unseen.size()) + " not seen");
        if (m_interrupt.IsRaised()) {
            m_console.Complain("interrupted: " + summary);
        } else {
            m_console.Say(summary);
        }
        const bool useful = !m_added.empty() || !m_already.empty() || !m_foldersMade.empty() || !m_tags.Made().empty();
        const bool isWhole = m_failed.empty() && m_unseen.empty() && m_elsewhere.empty() && !m_interrupt.IsRaised();
        if (!useful && isWhole) m_console.Complain("nothing to import");
        return useful && isWhole ? kDone : kFailed;
    }

private:
    // Of the other library, and stored in this one, but not there.
    struct Waiting {
        std::string name;
        CQItem* item;
        CQFolder* target;
    };

    struct Taken {
        std::string name;
        GUID guid;
        CQItem* from;
        CQItem* item;
        bool isNew;  // To this library; else one that it has got another place.
    };

    struct New {
        std::string name;
        CQItem* from;
        GUID guid;
        DBTools* tools;
    };

    void TakeGalleryOf(const GalleryName& name) {
        CQGallery* gallery = m_other.Load(name.id);
        if (m_interrupt.IsRaised()) return;  // A large gallery takes its time.
        CQGallery* counterpart = gallery != nullptr ? CounterpartOf(name) : nullptr;
        if (gallery == nullptr) NoteFailed("the gallery " + name.name);
        if (counterpart == nullptr) {
            m_tags.LeaveOut(name.id);
            return;
        }
        m_tags.Pair(name.id, Galleries::NameOf(*counterpart).id);
        TakeGallery(*gallery, *counterpart);
    }

    // Null when there is none; the other galleries come all the same.
    CQGallery* CounterpartOf(const GalleryName& name) {
        try {
            return &m_galleries.Counterpart(name);
        } catch (const Failure& failure) {
            NoteFailed("the gallery " + name.name, failure.what());
            return nullptr;
        }
    }

    void TakeGallery(CQGallery& from, CQGallery& to) {
        const std::vector<CQFolder*> folders = WholeTree(from);
        NoteTooDeep(folders, to);
        std::map<const CQFolder*, std::vector<std::string>> paths;
        std::set<const CQFolder*> leftOut;  // One that is made for those below it alone would not be what it is there.
        FolderMaker maker(to, FolderMaker::Names::kStored);
        Progress progress(stdout, folders.size() - 1, m_console.IsJson() || m_console.IsQuiet());
        for (CQFolder* folder : folders) {
            if (folder == &from || m_interrupt.IsRaised()) continue;
            std::vector<std::string> path = paths[folder->GetParent()];
            path.push_back(ComponentOf(*folder));
            paths[folder] = path;
            progress.Step(path.back());
            std::string why = "the folder above it did not come";
            const bool hasParent = !leftOut.contains(folder->GetParent());
            CQFolder* target = hasParent ? MakeFolder(maker, path, *folder, why) : nullptr;
            progress.Clear();
            if (target == nullptr) {
                leftOut.insert(folder);
                NoteFailed(NameIn(to, PathOf(*folder)), why);
            }
            TakeItems(*folder, target, to);
        }
        for (const std::string& path : maker.Made()) m_foldersMade.push_back(NameIn(to, path));
        for (const std::string& path : maker.NotLast()) {
            m_failed.push_back(NameIn(to, path));
            m_console.Complain("cannot put the folder " + m_failed.back() + " last");
        }
    }

    // Null when it cannot be made; the other folders come all the same.
    static CQFolder* MakeFolder(FolderMaker& maker, const std::vector<std::string>& path, CQFolder& from,
                                std::string& why) {
        why.clear();
        try {
            if (!RestoreTrusty(from)) throw Failure("it cannot be read there");
            return maker.Make(path, {from.GetAdopt(), from.GetTrusty(), from.GetExtra(), from.GetFolderID()});
        } catch (const Failure& failure) {
            why = failure.what();
            return nullptr;
        }
    }

    void NoteTooDeep(const std::vector<CQFolder*>& folders, const CQGallery& to) {
        for (const UnseenFolders& unseen : m_other.Unseen(folders)) {
            const std::string what = Counted(unseen.folders, "folder") + " with " + Counted(unseen.items, "item") +
                                     " below #" + std::to_string(unseen.above->GetDBId()) + " there";
            NoteFailed(NameIn(to, what),
                       unseen.isReadable ? "they lie too deep; move them up there first" : "they cannot all be read");
        }
    }

    // A name that a path can give back.
    static std::string ComponentOf(const CQFolder& folder) { return FolderComponent(ToText(folder.GetFolderName())); }
    static std::string NameIn(const CQGallery& gallery, const std::string& path) {
        return Galleries::NameOf(gallery).name + ": " + path;
    }

    void TakeItems(CQFolder& from, CQFolder* target, CQGallery& gallery) {
        for (CQItem* item : Items(from)) {
            if (m_interrupt.IsRaised()) break;
            if (target == nullptr) {
                NoteFailed(NameIn(gallery, PathOf(from, *item)));
            } else {
                TakeItem(*item, *target, gallery);
            }
        }
        if (target != nullptr) CountTaken(*target, gallery);
    }

    void TakeItem(CQItem& item, CQFolder& target, CQGallery& gallery) {
        const std::string name = NameIn(gallery, PathOf(target, item));
        if (CQItem* there = nullptr; IsThere(item, target, there)) {
            m_already.push_back(name);
            m_console.Say("there already: " + name);
            m_inPlace.insert(there->GetUniqueID());
            m_tags.Note(item, *there, name);
            return;
        }
        CQItem* known = nullptr;
        const bool isNew = gallery.IsItemInFolder(&gallery, &item, known, 1) == 0;
        if (const auto isElsewhere = isNew ? IsStoredHere(item, gallery) : false; isElsewhere != false) {
            if (isElsewhere) m_waiting.push_back({name, &item, &target});
            if (!isElsewhere) NoteFailed(name, "nobody can tell whether the item is there already");
            return;
        }
        target.AddItemFromImportLib(&item);
        CQItem* taken = nullptr;
        const bool found = target.IsItemInFolder(&target, &item, taken, 0) != 0 && taken != nullptr;
        const auto isHeld = found ? HoldsItem(target, taken->GetUniqueID()) : false;
        if (isHeld == false) NoteFailed(name);
        if (isHeld != false) m_taken.push_back({name, taken->GetUniqueID(), &item, taken, isNew});
        // Both copies would otherwise stay in memory until the end.
        if (found) ReleasePayloads(*taken);
        ReleasePayloads(item);
    }

    // The database has to place them in the folder as well, which one look tells of all of them.
    void CountTaken(CQFolder& target, const CQGallery& gallery) {
        if (m_taken.empty()) return;
        const auto stored = StoredItemSet(*target.GetDBTools(), target.GetDBId());
        for (const Taken& taken : m_taken) {
            const bool isPlaced = stored && stored->contains(taken.guid);
            const auto isStored = isPlaced ? IsItemStored(*target.GetDBTools(), taken.guid) : std::nullopt;
            if (isStored == true) {
                m_tags.Note(*taken.from, *taken.item, taken.name);
                NoteAdded(taken.name, taken.guid);
                if (taken.isNew) m_new.push_back({taken.name, taken.from, taken.guid, target.GetDBTools()});
            } else if (isStored == false || (stored && !isPlaced)) {
                NoteFailed(taken.name);
            } else {
                NoteUnseen(taken.name);
            }
        }
        m_taken.clear();
        if (MendItemOrder(target)) return;
        m_failed.push_back(NameIn(gallery, PathOf(target)));
        m_console.Complain("cannot put what was added last in " + m_failed.back());
    }

    // The library brings an item without a payload that it cannot read there.
    void LookForPayloads() {
        if (m_new.empty()) return;
        for (const auto& [kind, name] : kPayloadNames) {
            const auto there = ItemsWithPayload(m_other.Tools(), kind);
            const auto mayCome = [&](const New& item) { return !there || there->contains(item.from->GetUniqueID()); };
            if (std::ranges::none_of(m_new, mayCome)) continue;
            const auto here = ItemsWithPayload(*m_new.front().tools, kind);
            if (!there || !here) {
                NoteUnseen("every " + std::string(name));
                continue;
            }
            for (const New& item : m_new) {
                if (mayCome(item) && !here->contains(item.guid)) NoteLacking(item, kind, name);
            }
        }
    }

    void NoteLacking(const New& item, int kind, const std::string& payload) {
        const auto hadBytes = HasStoredPayload(m_other.Tools(), *item.from, kind);
        const std::string what = "the " + payload + " of " + item.name;
        if (hadBytes == true) NoteFailed(what);
        if (!hadBytes) NoteUnseen(what);
    }

    // In the folder already, by its file or by its GUID.
    static bool IsThere(CQItem& item, CQFolder& target, CQItem*& there) {
        if (target.IsItemInFolder(&target, &item, there, 0)) return true;
        if (target.HasItem(item.GetUniqueID(), 0) == 0) return false;
        const std::vector<CQItem*> items = Items(target);
        const auto found = std::ranges::find_if(items, [&](CQItem* other) { return other->IsSameItem(&item) != 0; });
        if (found != items.end()) there = *found;
        return found != items.end();
    }

    // Its row would be overwritten by the other library's, unless the gallery places its own object in another folder
    // as well. Nothing when nobody can tell.
    static std::optional<bool> IsStoredHere(const CQItem& item, const CQGallery& gallery) {
        return IsItemStored(*gallery.GetDBTools(), item.GetUniqueID());
    }

    // Behind all galleries: what the other library has in several places, and this one in one of them, gets the others.
    // What it has only somewhere else was put there by somebody, and stays there alone.
    void TakeFromElsewhere() {
        for (const Waiting& waiting : m_waiting) {
            if (m_interrupt.IsRaised()) return;
            if (m_inPlace.contains(waiting.item->GetUniqueID())) {
                Place(waiting);
            } else {
                NoteElsewhere(waiting);
            }
        }
    }

    // The stored placement alone: two galleries share no object, and a second one would write the item anew.
    void Place(const Waiting& waiting) {
        DBTools& tools = *waiting.target->GetDBTools();
        const int row = waiting.target->GetDBId();
        const GUID guid = waiting.item->GetUniqueID();
        const auto placements = StoredPlacements(tools, row);
        const int last = placements && !placements->empty() ? placements->back().number : -1;
        if (placements && last < std::numeric_limits<int>::max()) tools.ReOrderItemsDb(guid, row, last + 1);
        const auto isPlaced = IsPlaced(tools, row, guid);
        if (isPlaced == true) {
            NoteAdded(waiting.name, guid);
        } else if (isPlaced == false) {
            NoteFailed(waiting.name);
        } else {
            NoteUnseen(waiting.name);
        }
    }

    void NoteElsewhere(const Waiting& waiting) {
        std::vector<std::string> places;
        try {
            places = PlacesOf(waiting);
        } catch (const Failure&) {  // Nobody knows which.
        }
        std::string where;
        for (const std::string& place : places) where += (where.empty() ? "" : ", ") + place;
        if (where.empty()) where = "another place that cannot be told";
        m_console.Complain("there already, in " + where + ": the place " + waiting.name + " is not made");
        m_elsewhere.push_back({{"wanted", waiting.name}, {"there", places}});
    }

    // In this library. The item gets its tags there.
    std::vector<std::string> PlacesOf(const Waiting& waiting) {
        std::vector<std::string> places;
        for (CQGallery* gallery : m_galleries.All()) {
            CQItem* here = nullptr;
            if (!gallery->IsItemHasParentByGuid(waiting.item->GetUniqueID(), here)) continue;
            for (const std::string& path : PathsOf(*gallery, *here)) places.push_back(NameIn(*gallery, path));
            if (!places.empty()) m_tags.Note(*waiting.item, *here, places.front());
        }
        return places;
    }

    void NoteAdded(const std::string& name, const GUID& guid) {
        m_inPlace.insert(guid);
        m_added.push_back(name);
        m_console.Say("added " + name);
    }

    // Last, since an item may carry tags of any gallery.
    void TakeTags() {
        m_tags.Take([&] { return m_interrupt.IsRaised(); });
        for (const std::string& name : m_tags.Made()) m_console.Say("made the tag " + name);
        for (const std::string& name : m_tags.Tagged()) m_console.Say("tagged " + name);
        for (const std::string& name : m_tags.Failed()) NoteFailed(name);
    }

    void NoteFailed(const std::string& name, const std::string& why = {}) {
        m_failed.push_back(name);
        m_console.Complain("cannot bring in " + name + (why.empty() ? "" : ": " + why));
    }

    void NoteUnseen(const std::string& name) {
        m_unseen.push_back(name);
        m_console.Complain("cannot tell whether " + name + " came: the library cannot be looked at");
    }

    Galleries& m_galleries;
    OtherLibrary& m_other;
    TagImport& m_tags;
    const Interrupt& m_interrupt;
    const Console& m_console;
    std::vector<Taken> m_taken;  // Of the folder being filled.
    std::vector<Waiting> m_waiting;
    std::vector<New> m_new;
    std::set<GUID> m_inPlace;  // Items that stand here in a place that the other library has them in.
    std::vector<Json> m_elsewhere;
    std::vector<std::string> m_foldersMade, m_added, m_already, m_failed;
    std::vector<std::string> m_unseen;  // Nobody knows whether they came.
};

}  // namespace

int Run(const ImportLibraryOptions& options, const Console& console) {
    if (IsOwnLibrary(options.file)) throw Failure(options.file + " is the library itself");
    std::error_code error;
    if (!std::filesystem::is_regular_file(options.file, error)) throw Failure("there is no library " + options.file);
    const Interrupt interrupt;
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    OtherLibrary other(options.file);
    Tags tags(session);
    TagChanges changes(tags, galleries);
    TagImport tagImport(tags, changes, other.Categories());
    LibraryImport import(galleries, other, tagImport, interrupt, console);
    import.Go();
    return import.Report();
}

}  // namespace qfc::host
