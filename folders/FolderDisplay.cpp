#include "folders/FolderDisplay.h"

#include "api/names/FolderNames.h"
#include "api/names/PathRules.h"
#include "api/names/StringTables.h"
#include "folders/CQFolder.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/GalleryDocument.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace qfc {
namespace {

// From the topmost folder down to `folder`.
std::vector<CString> DisplayNamesDownTo(CQFolder* folder, HINSTANCE module) {
    std::vector<CString> names;
    for (; folder != nullptr; folder = folder->GetParent()) names.push_back(FolderDisplayName(folder, module));
    std::reverse(names.begin(), names.end());
    return names;
}

CString JoinBelowGallery(std::vector<CString> names) {
    names.erase(names.begin());
    return JoinDisplayPath(names);
}

CQFolder* OpenGalleryShownAs(const CString& name) {
    const CQGalleryDoc* document = ExistingGalleryDocument();
    if (document == nullptr) return nullptr;
    for (CQGallery* gallery : document->GetGalleryList()) {
        if (gallery != nullptr && FolderDisplayName(gallery, nullptr) == name) return gallery;
    }
    return nullptr;
}

CQFolder* SubFolderShownAs(CQFolder& parent, const CString& name) {
    const CQFolder::FolderList* list = parent.GetFolderList();
    if (list == nullptr) return nullptr;
    for (CQFolder* folder : *list) {
        if (folder != nullptr && FolderDisplayName(folder, nullptr) == name) return folder;
    }
    return nullptr;
}

}  // namespace

CString FolderDisplayName(CQFolder* folder, HINSTANCE module) {
    if (folder == nullptr) return {};
    if (module != nullptr && folder->GetFolderID() != 0) {
        const CString text = ModuleText(module, folder->GetFolderID());
        if (!text.IsEmpty()) return text;
    }
    const CString& translated = folder->GetTranslateFolderName();
    return DisplayNameOf(translated.IsEmpty() ? folder->GetFolderName() : translated);
}

CString FolderDisplayPath(CQFolder* folder, HINSTANCE module) {
    return folder != nullptr ? JoinBelowGallery(DisplayNamesDownTo(folder, module)) : CString();
}

CString DisplayPathBelow(CQFolder* parent, const CString& name, HINSTANCE module) {
    if (parent == nullptr) return {};
    std::vector<CString> names = DisplayNamesDownTo(parent, module);
    names.push_back(name);
    return JoinBelowGallery(std::move(names));
}

CString EncodedNameBelow(CQFolder* parent, const CString& name) {
    if (parent == nullptr) return {};
    std::vector<CString> names = DisplayNamesDownTo(parent, nullptr);
    names.push_back(name);
    return EncodeFolderName(names);
}

CString StoredPathOf(const CString& galleryName, const CString& displayPath) {
    CQFolder* reached = OpenGalleryShownAs(galleryName);
    std::vector<CString> names{galleryName};
    CString path;
    for (const CString& part : SplitFolderPath(displayPath)) {
        names.push_back(part);
        if (reached != nullptr) reached = SubFolderShownAs(*reached, part);
        path += kPathSeparator;
        path += reached != nullptr ? reached->GetFolderName() : EncodeFolderName(names);
    }
    return path;
}

}  // namespace qfc
