#pragma once

#include "hosts/qfc/library/EffectCatalogue.h"
#include "hosts/qfc/library/EffectItem.h"
#include "hosts/qfc/library/FolderMaker.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

class CQFolder;
class CQGallery;
class CQItem;

namespace qfc::host {

// What has become of one effect that was to be stored.
struct EffectOutcome {
    std::optional<bool> isStored = false;  // Nothing when the library does not tell.
    bool isTransition = false;
    GUID guid{};
    std::string file;
    std::string name;
    std::string folder;  // Path, as shown.
    int folderRow = -1;  // -1 when it stayed where it was.
    bool isFolderNew = false;
    // Of one that is not stored:
    bool isItemLeft = false;    // Its item stands in the folder, without the record.
    bool isFolderLeft = false;  // The new folder stands, and nothing is in it.
};

// Puts effects into the library: filters into the Filters gallery, transitions into the Transitions gallery, each item
// together with its record. Adds run on the library's worker, some at a time; while one is under way nobody else may
// look at the two galleries. An add that fails raises no callback, so they are waited for behind all of them, and then
// looked for. Main thread.
class EffectWriter {
public:
    explicit EffectWriter(Galleries& galleries);
    // Waits for what is under way.
    ~EffectWriter();
    EffectWriter(const EffectWriter&) = delete;
    EffectWriter& operator=(const EffectWriter&) = delete;

    // The folder is made when missing. A name that a neighbour has gets a number behind it.
    void Add(const EffectSource& source, const std::vector<std::string>& folder);
    // Gives the item and the record of a known effect what the source has. The item keeps its folders, its annotation
    // and a name that the user gave it.
    void Update(const KnownEffect& known, const EffectSource& source);
    // Waits until everything has had its turn: the galleries may be looked at then, until the next add.
    void Settle();
    // Folders were removed: what is known of them is forgotten.
    void ForgetFolders();

    // Of all adds and updates, in their order, as far as they are settled: whether the loaded galleries hold the items,
    // and the database, but neither the placements nor the records.
    std::vector<EffectOutcome>& Outcomes() { return m_outcomes; }

private:
    // A gallery and what is known of its folders, as soon as one is needed.
    struct Shelf {
        CQGallery* gallery = nullptr;
        std::optional<FolderMaker> folders;
        std::map<const CQFolder*, std::multiset<std::string>> names;  // Of their items, as stored and as shown.
    };
    struct Pending {
        std::unique_ptr<CQItem> item;  // Ours until the folder holds it.
        CQFolder* folder = nullptr;
        EffectOutcome outcome;
    };

    Shelf& ShelfOf(bool isTransition);
    // An item's name, as stored and as shown.
    struct Names {
        std::string stored;
        std::string shown;
    };

    static void NameApart(Shelf& shelf, const CQFolder& folder, CQItem& item);
    static void NoteRenamed(Shelf& shelf, const std::vector<CQFolder*>& folders, const Names& from, const Names& to);
    static void KeepName(CQGallery& gallery, const KnownEffect& known, const EffectSource& source, CQItem& item);
    void Conclude(Pending& pending);

    Galleries& m_galleries;
    Shelf m_filters;
    Shelf m_transitions;
    std::vector<Pending> m_pending;
    std::vector<EffectOutcome> m_outcomes;
};

// Looks for what was stored: for the records, which no callback tells of, and for the placements, which are read once
// for each folder. What is not there is no longer stored, with what is left of it noted, and of what a look fails
// nobody knows. Gives new filters their numbers behind the others of their folder; transitions have no stored order. No
// adds under way. Gives the paths of folders whose stored order is another one afterwards. Throws nothing.
std::vector<std::string> VerifyEffects(Galleries& galleries, std::vector<EffectOutcome>& outcomes);

}  // namespace qfc::host
