#include "hosts/qfc/library/FolderMaker.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

namespace qfc::host {

FolderMaker::FolderMaker(CQGallery& gallery) : m_gallery(gallery) {
    // Of siblings with one name the first is the one that a path reaches, as in the library.
    for (CQFolder* folder : WholeTree(gallery)) m_folders.emplace(PathOf(*folder), folder);
}

CQFolder* FolderMaker::Create(const std::string& parent, const std::string& name, const Marks& marks) {
    CQFolder* folder = QFCLibraryManager::fnCreateFolder(ToHandle(&m_gallery), ToCString(parent), ToCString(name),
                                                         marks.adopt, marks.trusty, marks.extra, marks.id);
    const bool seen = folder != nullptr && LoadStoredFolder(*m_gallery.GetDBTools(), folder->GetDBId());
    return seen ? folder : nullptr;
}

CQFolder* FolderMaker::Make(const std::vector<std::string>& components, const Marks& marks) {
    std::string path;
    CQFolder* folder = &m_gallery;
    for (std::size_t i = 0; i < components.size(); ++i) {
        const std::string parent = path;
        path += (path.empty() ? "" : "\\") + components[i];
        CQFolder*& known = m_folders[path];
        if (known == nullptr) {
            known = Create(parent, components[i], i + 1 == components.size() ? marks : Marks{});
            if (known == nullptr) return nullptr;
            m_made.push_back(path);
        }
        folder = known;
    }
    return folder;
}

}  // namespace qfc::host
