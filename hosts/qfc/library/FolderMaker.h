#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

class CQFolder;
class CQGallery;

namespace qfc::host {

// Makes missing folders of one gallery level by level. It notes the tree when it is made and from then on only what it
// makes itself, so it may be used while the worker adds items. Main thread; nobody else makes folders meanwhile.
class FolderMaker {
public:
    // What the names are that folders are made of. A shown name is stored encoded where the library would read more
    // into it than a name; a stored one is stored as it is.
    enum class Names { kShown, kStored };

    FolderMaker(CQGallery& gallery, Names names);

    // Masks and id of a new folder; all 0 for a folder that holds whatever comes.
    struct Marks {
        unsigned adopt = 0, trusty = 0, extra = 0, id = 0;
    };

    // The folder at the path, made when missing; the marks are those of the last one. An existing folder goes by its
    // stored name, and with shown names by what it is shown as, too. Null when one cannot be made or is not in the
    // database afterwards.
    CQFolder* Make(const std::vector<std::string>& components, const Marks& marks);
    CQFolder* Make(const std::vector<std::string>& components) { return Make(components, Marks{}); }

    // Of the gallery or a folder that was there before or that was made here.
    const std::string& StoredPath(const CQFolder& folder) const { return m_paths.at(&folder).stored; }
    // Paths of the folders made so far, of the names that were given.
    const std::vector<std::string>& Made() const { return m_made; }

private:
    struct Paths {
        std::string stored;
        std::string shown;
    };

    CQFolder* Create(const CQFolder& parent, const std::string& name, const Marks& marks);
    std::string StoredName(const CQFolder& parent, const std::string& name) const;

    CQGallery& m_gallery;
    const Names m_names;
    std::string m_galleryName;  // As it is shown.
    std::map<const CQFolder*, Paths> m_paths;
    std::map<std::pair<const CQFolder*, std::string>, CQFolder*> m_children;  // By parent and name.
    std::vector<std::string> m_made;
};

}  // namespace qfc::host
