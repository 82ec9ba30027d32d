#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/Removal.h"
#include "hosts/qfc/library/TagChanges.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

// Deleting a gallery alone would leave its items and payloads behind: the folders go first.
void DeleteFolders(Galleries& galleries, CQGallery& gallery, const std::string& what) {
    for (CQFolder* folder : SubFolders(gallery)) {
        const std::string name = ShownName(*folder);
        if (!RemoveFolder(galleries, *folder)) throw Failure(what + ": the folder " + name + " stays");
    }
}

// Another gallery may get the id of this one, and would have its tags.
std::size_t DeleteTags(const Session& session, Galleries& galleries, const GalleryName& name, const std::string& what) {
    if (PredefinedName(name.id)) return 0;
    Tags tags(session);
    std::vector<CTagCategory> own;
    const auto isOwn = [&](const CTagCategory& category) { return category.m_nGallery == name.id; };
    std::ranges::copy_if(tags.Categories(), std::back_inserter(own), isOwn);
    if (own.empty()) return 0;
    TagChanges changes(tags, galleries);
    std::size_t count = 0;
    for (const CTagCategory& category : own) {
        const std::string why = what + ": the tags of " + ToText(category.m_strName) + " stay";
        if (!category.m_tags.empty()) changes.DeleteTags(name.id, category.m_tags, why);
        changes.DeleteCategory(category, why);
        count += category.m_tags.size();
    }
    return count;
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
    CQGallery* gallery = galleries.Find(options.gallery);
    if (gallery == nullptr) throw Failure("the gallery " + options.gallery + " is not stored");
    const GalleryName name = Galleries::NameOf(*gallery);
    const std::string what = "cannot remove the gallery " + name.name;
    DeleteFolders(galleries, *gallery, what);
    const std::size_t tags = DeleteTags(session, galleries, name, what);
    const bool deleted = QFCLibraryManager::fnDeleteGallery({name.id}) != 0;
    galleries.Close(*gallery);
    const std::vector<GalleryName> stored = galleries.Stored();
    if (!deleted || std::ranges::find(stored, name.id, &GalleryName::id) != stored.end()) {
        throw Failure(what);
    }
    console.Say("removed the gallery " + name.name + (tags > 0 ? " with " + Counted(tags, "tag") : ""));
    console.ShowJson({{"removed", {{"id", name.id}, {"name", name.name}, {"tags", tags}}}});
    return kDone;
}

}  // namespace qfc::host
