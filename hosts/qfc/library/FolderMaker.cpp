#include "hosts/qfc/library/FolderMaker.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Placement.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace qfc::host {
namespace {

constexpr const char* kUnseen = " may be made: the library cannot be looked at";

// The library would take these for an encoded name, or for a key and a name.
bool SaysMoreThanAName(const std::string& name) {
    return name.starts_with("||") || name.find("--") != std::string::npos;
}

// In these galleries every folder of the first level counts as a predefined one, whose names are translated.
bool HoldsPredefined(const CQFolder& parent) { return parent.GetFolderID() == 3 || parent.GetFolderID() == 12; }

// What a new folder will be shown as.
std::string ShownBelow(const CQFolder& parent, const std::string& stored, const FolderMaker::Marks& marks) {
    CQFolder folder(ToCString(stored), marks.trusty, marks.adopt, marks.extra);
    folder.SetFolderID(HoldsPredefined(parent) ? parent.GetFolderID() : marks.id);
    return ShownName(folder);
}

}  // namespace

FolderMaker::FolderMaker(CQGallery& gallery, Names names)
    : m_gallery(gallery), m_names(names), m_galleryName(ShownName(static_cast<CQFolder&>(gallery))) {
    m_paths[&gallery] = {};
    for (CQFolder* folder : WholeTree(gallery)) {
        if (folder != &gallery) Note(*folder, ShownName(*folder));
    }
}

void FolderMaker::Note(CQFolder& folder, const std::string& shown) {
    const CQFolder* parent = folder.GetParent();
    const std::string stored = ToText(folder.GetFolderName());
    const Paths& above = m_paths.at(parent);
    m_paths[&folder] = {Below(above.stored, stored), Below(above.shown, shown)};
    m_stored[{parent, stored}].push_back(&folder);
    m_shown[{parent, shown}].push_back(&folder);
    int& last = m_lastIndex[parent];
    last = std::max(last, folder.GetIndex());
}

CQFolder* FolderMaker::Known(const CQFolder& parent, const std::string& name) const {
    auto found = m_stored.find({&parent, name});
    bool isKnown = found != m_stored.end();
    if (!isKnown && m_names != Names::kStored) {
        found = m_shown.find({&parent, name});
        isKnown = found != m_shown.end();
    }
    if (!isKnown) return nullptr;
    if (found->second.size() > 1 && m_names != Names::kStored) {
        RefuseSeveral(found->second, Below(m_paths.at(&parent).shown, name));
    }
    return found->second.front();
}

const CQFolder* FolderMaker::Taken(const CQFolder& parent, const std::string& shown) const {
    for (const Children* children : {&m_stored, &m_shown}) {
        if (const auto found = children->find({&parent, shown}); found != children->end()) return found->second.front();
    }
    return nullptr;
}

std::string FolderMaker::StoredName(const CQFolder& parent, const std::string& name, const Marks& marks) const {
    if (m_names != Names::kShown) return name;
    if (!SaysMoreThanAName(name) && Taken(parent, ShownBelow(parent, name, marks)) == nullptr) return name;
    const std::string path = Below(m_paths.at(&parent).shown, name);
    return ToText(GenerateFolderNameFromDispalyPath(ToCString(m_galleryName), ToCString(path)));
}

CQFolder* FolderMaker::Create(const CQFolder& parent, const std::string& name, const Marks& marks) {
    const std::string stored = StoredName(parent, name, marks);
    const std::string shown = ShownBelow(parent, stored, marks);
    const CQFolder* taken = Taken(parent, shown);
    if (m_names == Names::kTyped && taken != nullptr) {
        throw Failure("there is a folder " + m_paths.at(taken).shown + " already");
    }
    // One that nobody could look at is not made a second time.
    CQFolder*& unseen = m_unseen[{&parent, stored}];
    CQFolder* folder = std::exchange(unseen, nullptr);
    if (folder == nullptr) {
        folder = QFCLibraryManager::fnCreateFolder(ToHandle(&m_gallery), ToCString(m_paths.at(&parent).stored),
                                                   ToCString(stored), marks.adopt, marks.trusty, marks.extra, marks.id);
    }
    if (folder == nullptr) return nullptr;
    const auto isStored = IsFolderStored(*m_gallery.GetDBTools(), folder->GetDBId());
    if (!isStored) {
        unseen = folder;
        throw Failure("the folder " + Below(m_paths.at(&parent).shown, shown) + kUnseen);
    }
    if (isStored == false) return nullptr;
    PutLast(*folder);
    Note(*folder, shown);
    return folder;
}

// The library counts the siblings, and after removals the last of them may have a higher number.
void FolderMaker::PutLast(CQFolder& folder) {
    const int last = m_lastIndex[folder.GetParent()];
    if (folder.GetIndex() > last) return;
    const bool isRoom = last < std::numeric_limits<int>::max();
    if (isRoom) folder.SetIndex(last + 1);
    if (!isRoom || !StoreFolder(folder)) m_notLast.push_back(PathOf(folder));
}

CQFolder* FolderMaker::Make(const std::vector<std::string>& components, const Marks& marks) {
    RequireLevels(components.size());
    std::string path;
    CQFolder* folder = &m_gallery;
    for (std::size_t i = 0; i < components.size(); ++i) {
        path = Below(path, components[i]);
        CQFolder* next = Known(*folder, components[i]);
        if (next == nullptr) {
            next = Create(*folder, components[i], i + 1 == components.size() ? marks : Marks{});
            if (next == nullptr) return nullptr;
            m_made.push_back(path);
        }
        folder = next;
    }
    return folder;
}

}  // namespace qfc::host
