#include "hosts/qfc/library/FolderMaker.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

namespace qfc::host {
namespace {

std::string Below(const std::string& path, const std::string& name) { return path + (path.empty() ? "" : "\\") + name; }

// The library would take these for an encoded name, or for a key and a name.
bool SaysMoreThanAName(const std::string& name) {
    return name.starts_with("||") || name.find("--") != std::string::npos;
}

}  // namespace

FolderMaker::FolderMaker(CQGallery& gallery, Names names)
    : m_gallery(gallery), m_names(names), m_galleryName(ShownName(static_cast<CQFolder&>(gallery))) {
    const std::vector<CQFolder*> tree = WholeTree(gallery);
    m_paths[&gallery] = {};
    // Of siblings with one name the first is the one that a path reaches, as in the library; stored names come before
    // shown ones.
    for (CQFolder* folder : tree) {
        if (folder == &gallery) continue;
        m_paths[folder] = {StoredPathOf(*folder), PathOf(*folder)};
        m_children.emplace(std::pair(folder->GetParent(), ToText(folder->GetFolderName())), folder);
    }
    if (m_names == Names::kStored) return;
    for (CQFolder* folder : tree) {
        if (folder != &gallery) m_children.emplace(std::pair(folder->GetParent(), ShownName(*folder)), folder);
    }
}

std::string FolderMaker::StoredName(const CQFolder& parent, const std::string& name) const {
    if (m_names == Names::kStored || !SaysMoreThanAName(name)) return name;
    const std::string path = Below(m_paths.at(&parent).shown, name);
    return ToText(GenerateFolderNameFromDispalyPath(ToCString(m_galleryName), ToCString(path)));
}

CQFolder* FolderMaker::Create(const CQFolder& parent, const std::string& name, const Marks& marks) {
    const std::string stored = StoredName(parent, name);
    const Paths& above = m_paths.at(&parent);
    CQFolder* folder =
        QFCLibraryManager::fnCreateFolder(ToHandle(&m_gallery), ToCString(above.stored), ToCString(stored), marks.adopt,
                                          marks.trusty, marks.extra, marks.id);
    if (folder == nullptr || !LoadStoredFolder(*m_gallery.GetDBTools(), folder->GetDBId())) return nullptr;
    m_paths[folder] = {Below(above.stored, stored), Below(above.shown, name)};
    return folder;
}

CQFolder* FolderMaker::Make(const std::vector<std::string>& components, const Marks& marks) {
    std::string path;
    CQFolder* folder = &m_gallery;
    for (std::size_t i = 0; i < components.size(); ++i) {
        path = Below(path, components[i]);
        CQFolder*& known = m_children[{folder, components[i]}];
        if (known == nullptr) {
            known = Create(*folder, components[i], i + 1 == components.size() ? marks : Marks{});
            if (known == nullptr) return nullptr;
            m_made.push_back(path);
        }
        folder = known;
    }
    return folder;
}

}  // namespace qfc::host
