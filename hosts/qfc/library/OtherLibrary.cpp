#include "hosts/qfc/library/OtherLibrary.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Text.h"

#include <cstdint>

namespace qfc::host {

OtherLibrary::OtherLibrary(const std::string& file) {
    const std::string copy = (m_folder.Path() / "library.db").string();
    if (!fnSnapshotLibrary(file.c_str(), copy.c_str())) {
        throw Failure("cannot read " + file + ": it is no library, or it needs recovery first");
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

CQGallery* OtherLibrary::Load(int id) {
    CQGallery* gallery = AsGallery(QFCLibraryManager::fnLoadGallery(id, Tools()));
    if (gallery != nullptr) m_galleries.push_back(gallery);
    return gallery;
}

}  // namespace qfc::host
