#pragma once

#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Galleries.h"

#include <string>
#include <variant>
#include <vector>

class CQFolder;
class CQItem;

namespace qfc::host {

// What the texts of a command line stand for. Every function throws Failure with the reason when the text names
// nothing, or more than one thing (for items, Ambiguous); on the way of a path, too. `gallery` is the text of
// --gallery, empty for none. Main thread.

class Ambiguous : public Failure {
public:
    using Failure::Failure;
};

struct FoundItem {
    CQGallery* gallery = nullptr;
    CQItem* item = nullptr;
    CQFolder* folder = nullptr;  // The placement that a path named; null for a GUID.
};

struct FoundFolder {
    CQGallery* gallery = nullptr;
    CQFolder* folder = nullptr;
};

// A GUID is looked for in all galleries, the named one first; a path below the named one. A name that fits several
// items of its folder is refused with their GUIDs.
FoundItem FindItem(Galleries& galleries, const std::string& gallery, const std::string& text);

// "#row" is looked for in all galleries, a path below the named one. The gallery itself ("\") is not a folder here.
FoundFolder FindFolder(Galleries& galleries, const std::string& gallery, const std::string& text);

// The same, but "\" or "/" is the gallery.
FoundFolder FindFolderOrRoot(Galleries& galleries, const std::string& gallery, const std::string& text);

// A path that names both an item and a folder is refused.
std::variant<FoundItem, FoundFolder> FindEither(Galleries& galleries, const std::string& gallery,
                                                const std::string& text);

}  // namespace qfc::host
