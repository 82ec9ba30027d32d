#include "hosts/qfc/library/OtherLibrary.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Text.h"

#include <cstdint>
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
    m_session = QFCLibraryManager::StartDbSession4ImportLib(ToCString(copy));
    if (m_session == 0) throw Failure("cannot read " + file + ": it is no library");
}

OtherLibrary::~OtherLibrary() {
    for (const CQGallery* gallery : m_galleries) QFCLibraryManager::fnCloseSessionGallery(ToHandle(gallery));
    QFCLibraryManager::EndDbSession4ImportLib(m_session);
}

DBTools* OtherLibrary::Tools() const { return reinterpret_cast<DBTools*>(static_cast<std::uintptr_t>(m_session)); }

std::vector<GalleryName> OtherLibrary::Stored() const { return Galleries::Stored(Tools()); }

std::vector<CTagCategory> OtherLibrary::Categories() const {
    std::vector<CTagCategory> categories;
    if (!Tools()->LoadTags(categories)) throw Failure("cannot read the tags of the other library");
    return categories;
}

CQGallery* OtherLibrary::Load(int id) {
    CQGallery* gallery = AsGallery(QFCLibraryManager::fnLoadGallery(id, Tools()));
    if (gallery != nullptr) m_galleries.push_back(gallery);
    return gallery;
}

}  // namespace qfc::host
