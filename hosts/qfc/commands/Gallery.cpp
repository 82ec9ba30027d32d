#include "api/QFCLib.h"
#include "hosts/qfc/Progress.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/Removal.h"
#include "hosts/qfc/library/TagChanges.h"
#include "hosts/qfc/library/TagWholeChange.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>

namespace qfc::host {
namespace {

// What of a gallery went, is still there, or may be either.
struct Parts {
    std::vector<std::string> folders;
    std::vector<std::string> tags;  // Categories of an own gallery, with their tags.

    bool IsEmpty() const { return folders.empty() && tags.empty(); }
    std::string Text() const {
        std::string text;
        for (const std::string& folder : folders) text += (text.empty() ? "" : ", ") + ("the folder " + folder);
        for (const std::string& category : tags) text += (text.empty() ? "" : ", ") + ("the tags of " + category);
        return text;
    }
    Json AsJson() const { return {{"folders", folders}, {"tags", tags}}; }
};

// Throws Failure when the galleries cannot be read.
bool HasRow(const Galleries& galleries, int id) {
    const std::vector<GalleryName> stored = galleries.Stored();
    return std::ranges::find(stored, id, &GalleryName::id) != stored.end();
}

// Removes one gallery, and knows how far it came.
class GalleryRemoval {
public:
    GalleryRemoval(const Session& session, Galleries& galleries, CQGallery& gallery)
        : m_galleries(galleries),
          m_gallery(gallery),
          m_tools(*gallery.GetDBTools()),
          m_name(Galleries::NameOf(gallery)),
          m_tags(session) {
        for (CQFolder* folder : SubFolders(gallery)) m_folders.emplace_back(folder->GetDBId(), ShownName(*folder));
        for (CQFolder* folder : WholeTree(gallery)) {
            for (const CQItem* item : Items(*folder)) m_items.insert(item->GetUniqueID());
        }
        // Another gallery may get the id of this one, and would have its tags.
        if (!IsOwnGallery(m_name.id)) return;
        const auto isOwn = [&](const CTagCategory& category) { return category.m_nGallery == m_name.id; };
        std::ranges::copy_if(m_tags.Categories(), std::back_inserter(m_categories), isOwn);
    }

    // Throws Failure with what it came to a halt at.
    void Go(const Console& console) {
        RefuseUnseenFolders(m_gallery);
        const Interrupt interrupt;
        DeleteFolders(interrupt, console);
        if (!m_categories.empty()) DeleteTags();
        const bool deleted = QFCLibraryManager::fnDeleteGallery({m_name.id}) != 0;
        m_galleries.Close(m_gallery);
        m_mayBeGone = deleted;
        if (!deleted || HasRow(m_galleries, m_name.id)) {
            m_mayBeGone = false;
            throw Failure("its row stays");
        }
    }

    const GalleryName& Name() const { return m_name; }
    // Those that other galleries hold stay.
    std::size_t ItemsGone() const {
        return static_cast<std::size_t>(
            std::ranges::count_if(m_items, [&](const GUID& item) { return IsItemGone(m_tools, item); }));
    }
    std::size_t TagsGone() const { return m_tagsGone; }
    // What is to be said of links to the items of folders that went; empty when there are none.
    std::vector<std::string> LinkLines() const {
        std::vector<std::string> lines;
        const std::string items = "links of tags to items of the gallery " + m_name.name;
        if (!m_links.stored.empty()) lines.push_back(items + " are left; check lists them");
        if (!m_links.unseen.empty()) lines.push_back("cannot tell whether " + items + " are left");
        return lines;
    }
    // It was deleted, and nobody could look.
    bool MayBeGone() const { return m_mayBeGone; }

    Parts Gone() const { return PartsWhere(false); }
    Parts Kept() const { return PartsWhere(true); }
    // What cannot be looked at.
    Parts Unseen() const { return {FoldersWhere(std::nullopt), {}}; }

private:
    // Deleting a gallery alone would leave its items and payloads behind: the folders go first.
    void DeleteFolders(const Interrupt& interrupt, const Console& console) {
        Progress progress(stdout, WholeTree(m_gallery).size() - 1, console.IsJson() || console.IsQuiet());
        const RemovalStep step = [&](const std::string& next) { progress.Step(next); };
        for (CQFolder* folder : SubFolders(m_gallery)) {
            if (interrupt.IsRaised()) throw Failure("interrupted");
            const std::string name = ShownName(*folder);
            const FolderRemoval done = RemoveFolder(m_galleries, *folder, step, interrupt.Flag());
            if (!done.isBegun && done.isStored == true) throw Failure("the folder " + name + " stays");
            if (!done.isWhole) throw Failure(done.Text());
            m_links.Add(done.links);
        }
    }

    void DeleteTags() {
        TagChanges changes(m_tags, m_galleries);
        for (const CTagCategory& category : m_categories) {
            const std::string why = "the tags of " + ToText(category.m_strName) + " stay";
            DeleteWithTags(m_tags, changes, m_galleries, category, why, why);
            m_tagsGone += category.m_tags.size();
        }
    }

    Parts PartsWhere(bool isStored) const {
        Parts parts{FoldersWhere(isStored), {}};
        for (const CTagCategory& category : m_categories) {
            if ((m_tags.CategoryByGuid(category.m_guid) != nullptr) != isStored) continue;
            parts.tags.push_back(ToText(category.m_strName));
        }
        return parts;
    }
    std::vector<std::string> FoldersWhere(std::optional<bool> isStored) const {
        std::vector<std::string> names;
        for (const auto& [row, name] : m_folders) {
            if (IsFolderStored(m_tools, row) == isStored) names.push_back(name);
        }
        return names;
    }

    Galleries& m_galleries;
    CQGallery& m_gallery;
    DBTools& m_tools;
    const GalleryName m_name;
    Tags m_tags;
    std::vector<std::pair<int, std::string>> m_folders;  // Rows and names, as they were.
    std::vector<CTagCategory> m_categories;              // Those that are to go.
    std::set<GUID> m_items;                              // Before anything went.
    std::size_t m_tagsGone = 0;
    Remains m_links;
    bool m_mayBeGone = false;
};

// Why it came to a halt, what went before and what is still there.
int ReportHalf(const GalleryRemoval& removal, const std::string& reason, const Console& console) {
    const GalleryName& name = removal.Name();
    const std::string text = "cannot remove the gallery " + name.name + ": " + reason;
    const Parts gone = removal.Gone();
    if (gone.IsEmpty() && !removal.MayBeGone()) throw Failure(text);
    const Parts kept = removal.Kept();
    const Parts unseen = removal.Unseen();
    for (const std::string& line : removal.LinkLines()) console.Complain(line);
    console.Complain(text + (gone.IsEmpty() ? "" : "; removed: " + gone.Text()) +
                     "; still there: " + (removal.MayBeGone() ? "maybe the gallery" : "the gallery") +
                     (kept.IsEmpty() ? "" : ", " + kept.Text()) + (unseen.IsEmpty() ? "" : ", maybe " + unseen.Text()));
    console.ShowJson({{"error", text},
                      {"gallery", {{"id", name.id}, {"name", name.name}}},
                      {"removed", gone.AsJson()},
                      {"kept", kept.AsJson()},
                      {"unseen", unseen.AsJson()}});
    return kFailed;
}

// Of a gallery that has nothing else, and so cannot be loaded.
int RemoveRow(const Galleries& galleries, const GalleryName& gallery, const Console& console) {
    const std::string name = "the gallery " + std::to_string(gallery.id);
    QFCLibraryManager::fnDeleteGallery({gallery.id});
    bool isStored = true;
    try {
        isStored = HasRow(galleries, gallery.id);
    } catch (const Failure& failure) {
        throw Failure(name + " may be removed: " + failure.what());
    }
    if (isStored) throw Failure("cannot remove " + name);
    console.Say("removed " + name + ", which had no folder; if it has tags, they stay");
    console.ShowJson({{"removed", {{"id", gallery.id}, {"name", gallery.name}, {"items", 0}, {"tags", 0}}}});
    return kDone;
}

}  // namespace

int Run(const GalleryCreateOptions& options, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    const GalleryName made = Galleries::NameOf(galleries.Create(options.name));
    console.Say("made the gallery " + made.name + " with the id " + std::to_string(made.id));
    console.ShowJson({{"id", made.id}, {"name", made.name}});
    return kDone;
}

int Run(const GalleryListOptions&, const Console& console) {
    const Session session;
    const Galleries galleries(session);
    Json json = Json::array();
    for (const GalleryName& gallery : galleries.Stored()) {
        json.push_back({{"id", gallery.id}, {"name", gallery.name}});
        console.Show(std::to_string(gallery.id) + "  " + gallery.name);
    }
    console.ShowJson(json);
    if (json.empty()) throw Failure("no galleries yet");
    return kDone;
}

int Run(const GalleryRemoveOptions& options, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    const GalleryName wanted = galleries.Resolve(options.gallery);
    // All of them would go, but the folders of the first alone.
    if (const std::size_t rows = galleries.CountRows(wanted.id); rows > 1) {
        throw Failure("the id " + std::to_string(wanted.id) + " is stored " + std::to_string(rows) +
                      " times; check lists it");
    }
    if (galleries.IsWithoutFolder(wanted.id)) return RemoveRow(galleries, wanted, console);
    CQGallery* gallery = galleries.Find(options.gallery);
    if (gallery == nullptr) throw Failure("the gallery " + options.gallery + " is not stored");
    GalleryRemoval removal(session, galleries, *gallery);
    try {
        removal.Go(console);
    } catch (const Failure& failure) {
        return ReportHalf(removal, failure.what(), console);
    }
    const GalleryName& name = removal.Name();
    const std::size_t items = removal.ItemsGone();
    const std::size_t tags = removal.TagsGone();
    console.Say("removed the gallery " + name.name + " with " + Counted(items, "item") +
                (tags > 0 ? " and " + Counted(tags, "tag") : ""));
    const std::vector<std::string> links = removal.LinkLines();
    for (const std::string& line : links) console.Complain(line);
    console.ShowJson({{"removed", {{"id", name.id}, {"name", name.name}, {"items", items}, {"tags", tags}}}});
    return links.empty() ? kDone : kFailed;
}

}  // namespace qfc::host
