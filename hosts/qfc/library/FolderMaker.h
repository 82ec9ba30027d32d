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
    // What the names are that folders are made of, and which folders that are there go by them.
    enum class Names {
        kTyped,   // Stored as they are. A folder goes by its stored name, then by what it is shown as.
        kShown,   // As kTyped, but encoded where the library would show something else that is taken, or read more
                  // into a name than a name.
        kStored,  // Stored as they are. A folder goes by its stored name alone, the first that has it.
    };

    FolderMaker(CQGallery& gallery, Names names);

    // Masks and id of a new folder; all 0 for a folder that holds whatever comes.
    struct Marks {
        unsigned adopt = 0, trusty = 0, extra = 0, id = 0;
    };

    // The folder at the path, made when missing, behind its siblings; the marks are those of the last one. Null when
    // one cannot be made or is not in the database afterwards. Throws Failure when a name fits several folders, when
    // the folder would lie deeper than is loaded again, for kTyped when it would be shown as another is called, and
    // when nobody can tell whether it was made.
    CQFolder* Make(const std::vector<std::string>& components, const Marks& marks);
    CQFolder* Make(const std::vector<std::string>& components) { return Make(components, Marks{}); }

    // Of the gallery or a folder that was there before or that was made here.
    const std::string& StoredPath(const CQFolder& folder) const { return m_paths.at(&folder).stored; }
    const std::string& ShownPath(const CQFolder& folder) const { return m_paths.at(&folder).shown; }
    // Paths of the folders made so far, of the names that were given.
    const std::vector<std::string>& Made() const { return m_made; }
    // Those of them whose stored place is not behind their siblings, as they are shown.
    const std::vector<std::string>& NotLast() const { return m_notLast; }

private:
    struct Paths {
        std::string stored;
        std::string shown;
    };
    using Children = std::map<std::pair<const CQFolder*, std::string>, std::vector<CQFolder*>>;  // By parent and name.

    void Note(CQFolder& folder, const std::string& shown);
    CQFolder* Known(const CQFolder& parent, const std::string& name) const;
    const CQFolder* Taken(const CQFolder& parent, const std::string& shown) const;
    CQFolder* Create(const CQFolder& parent, const std::string& name, const Marks& marks);
    void PutLast(CQFolder& folder);
    std::string StoredName(const CQFolder& parent, const std::string& name, const Marks& marks) const;

    CQGallery& m_gallery;
    const Names m_names;
    std::string m_galleryName;  // As it is shown.
    std::map<const CQFolder*, Paths> m_paths;
    Children m_stored;
    Children m_shown;
    std::map<std::pair<const CQFolder*, std::string>, CQFolder*> m_unseen;  // Made, but nobody could look.
    std::map<const CQFolder*, int> m_lastIndex;                             // By parent.
    std::vector<std::string> m_made;
    std::vector<std::string> m_notLast;
};

}  // namespace qfc::host
