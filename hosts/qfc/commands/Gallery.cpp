#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/Removal.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

// Deleting a gallery alone would leave its items and payloads behind: the folders go first.
void DeleteFolders(Galleries& galleries, CQGallery& gallery) {
    for (CQFolder* folder : SubFolders(gallery)) {
        const std::string name = ToText(folder->GetFolderName());
        if (!RemoveFolder(galleries, *folder)) throw Failure("cannot remove the folder " + name);
    }
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
    DeleteFolders(galleries, *gallery);
    const bool deleted = QFCLibraryManager::fnDeleteGallery({name.id}) != 0;
    galleries.Close(*gallery);
    const std::vector<GalleryName> stored = galleries.Stored();
    if (!deleted || std::ranges::find(stored, name.id, &GalleryName::id) != stored.end()) {
        throw Failure("cannot remove the gallery " + name.name);
    }
    console.Say("removed the gallery " + name.name);
    console.ShowJson({{"removed", {{"id", name.id}, {"name", name.name}}}});
    return kDone;
}

}  // namespace qfc::host
