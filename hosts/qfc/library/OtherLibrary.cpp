#include "hosts/qfc/library/OtherLibrary.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Verify.h"
#include "items/CQGallery.h"

#include <filesystem>

namespace qfc::host {

namespace {

// A journal that a program left behind when it ended early belongs to the file.
std::string ReasonOf(const std::string& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file + "-journal", error);
    if (error || size == 0) return "it is no library, or it is in use";
    return "it needs recovery; open it once with its own program, then try again";
}

}  // namespace

OtherLibrary::OtherLibrary(const std::string& file) {
    const std::string copy = (m_folder.Path() / "library.db").string();
    if (!fnSnapshotLibrary(file.c_str(), copy.c_str())) {
        throw Failure("cannot read " + file + ": " + ReasonOf(file));
    }
    m_reader.emplace(copy);
    if (!m_reader->IsOpen()) throw Failure("cannot read " + file + ": it is no library");
}

OtherLibrary::~OtherLibrary() {
    for (const CQGallery* gallery : m_galleries) QFCLibraryManager::fnCloseSessionGallery(ToHandle(gallery));
}

std::vector<GalleryName> OtherLibrary::Stored() const { return Galleries::Stored(&m_reader->Tools()); }

std::vector<CTagCategory> OtherLibrary::Categories() const {
    std::vector<CTagCategory> categories;
    if (!m_reader->Tools().LoadTags(categories)) throw Failure("cannot read the tags of the other library");
    return categories;
}

CQGallery* OtherLibrary::Load(int id) {
    CQGallery* gallery = AsGallery(QFCLibraryManager::fnLoadGallery(id, &m_reader->Tools()));
    if (gallery != nullptr) m_galleries.push_back(gallery);
    return gallery;
}

std::vector<UnseenFolders> OtherLibrary::Unseen(const std::vector<CQFolder*>& loaded) const {
    std::set<int> known;
    for (const CQFolder* folder : loaded) known.insert(folder->GetDBId());
    std::vector<UnseenFolders> unseen;
    for (CQFolder* folder : loaded) {
        if (folder->GetDBId() == -1) continue;  // The number above every gallery.
        UnseenFolders below{.above = folder};
        CountBelow(folder->GetDBId(), known, below);
        if (below.folders > 0 || !below.isReadable) unseen.push_back(below);
    }
    return unseen;
}

// Every row counts once, however the file ties them together.
void OtherLibrary::CountBelow(int row, std::set<int>& known, UnseenFolders& unseen) const {
    std::vector<int> waiting{row};
    while (!waiting.empty()) {
        const auto children = StoredSubFolders(m_reader->Tools(), waiting.back());
        waiting.pop_back();
        if (!children) {
            unseen.isReadable = false;
            continue;
        }
        for (const int child : *children) {
            if (!known.insert(child).second) continue;
            waiting.push_back(child);
            ++unseen.folders;
            const auto items = StoredItems(m_reader->Tools(), child);
            unseen.items += items ? items->size() : 0;
            unseen.isReadable = unseen.isReadable && items.has_value();
        }
    }
}

}  // namespace qfc::host
