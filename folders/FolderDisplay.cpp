#include "folders/FolderDisplay.h"

#include "api/names/FolderNames.h"
#include "api/names/PathRules.h"
#include "api/names/StringTables.h"
#include "folders/CQFolder.h"
#include "folders/FolderPath.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/GalleryDocument.h"
#include "platform/text/AnsiText.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
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

// A folder that the first `parts` parts of a display path lead to.
struct Reached {
    CQFolder* folder;
    std::size_t parts;
};

std::vector<Reached> OpenGalleriesShownAs(const CString& name) {
    std::vector<Reached> galleries;
    const CQGalleryDoc* document = ExistingGalleryDocument();
    if (document == nullptr) return galleries;
    for (CQGallery* gallery : document->GetGalleryList()) {
        if (gallery != nullptr && FolderDisplayName(gallery, nullptr) == name) galleries.push_back({gallery, 0});
    }
    return galleries;
}

void AddSubFoldersShownAs(const CString& name, const Reached& parent, std::vector<Reached>& found) {
    const CQFolder::FolderList* list = parent.folder->GetFolderList();
    if (list == nullptr) return;
    for (CQFolder* folder : *list) {
        if (folder != nullptr && FolderDisplayName(folder, nullptr) == name)
            found.push_back({folder, parent.parts + 1});
    }
}

// The first of the folders that most parts lead to: several galleries and folders may be shown alike, and one that
// leads nowhere does not hide the next. No folder when there are no galleries.
Reached FollowParts(std::vector<Reached> waiting, const std::vector<CString>& parts) {
    Reached farthest{nullptr, 0};
    std::reverse(waiting.begin(), waiting.end());
    while (!waiting.empty()) {
        const Reached reached = waiting.back();
        waiting.pop_back();
        if (farthest.folder == nullptr || reached.parts > farthest.parts) farthest = reached;
        if (reached.parts == parts.size()) break;
        const std::size_t before = waiting.size();
        AddSubFoldersShownAs(parts[reached.parts], reached, waiting);
        std::reverse(waiting.begin() + static_cast<std::ptrdiff_t>(before), waiting.end());
    }
    return farthest;
}

// With the empty parts, which folders without a display name have.
std::vector<CString> AllParts(const CString& displayPath) {
    std::vector<CString> parts;
    std::string_view rest = displayPath.View();
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = FindInAnsi(rest, {&kPathSeparator, 1});
        parts.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end != std::string_view::npos ? end + 1 : rest.size());
    }
    return parts;
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
    const std::vector<Reached> galleries = OpenGalleriesShownAs(galleryName);
    std::vector<CString> names = SplitFolderPath(displayPath);
    const std::vector<CString> allParts = AllParts(displayPath);
    if (!names.empty() && allParts.size() != names.size()) {
        const Reached exact = FollowParts(galleries, allParts);
        if (exact.parts == allParts.size()) return FolderPathText(exact.folder);
    }
    const Reached reached = FollowParts(galleries, names);
    names.insert(names.begin(), galleryName);
    return FolderPathText(reached.folder) + PathOfEncodedTexts(names, reached.parts + 1);
}

}  // namespace qfc
