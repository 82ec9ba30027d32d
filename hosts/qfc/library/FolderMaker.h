#pragma once

#include <map>
#include <string>
#include <vector>

class CQFolder;
class CQGallery;

namespace qfc::host {

// Makes missing folders of one gallery level by level. It notes the tree when it is made and from then on only what it
// makes itself, so it may be used while the worker adds items. Main thread; nobody else makes folders meanwhile.
class FolderMaker {
public:
    explicit FolderMaker(CQGallery& gallery);

    // Masks and id of a new folder; all 0 for a folder that holds whatever comes.
    struct Marks {
        unsigned adopt = 0, trusty = 0, extra = 0, id = 0;
    };

    // The folder at the path, made when missing; the marks are those of the last one. Null when one cannot be made or
    // is not in the database afterwards.
    CQFolder* Make(const std::vector<std::string>& components, const Marks& marks);
    CQFolder* Make(const std::vector<std::string>& components) { return Make(components, Marks{}); }

    // Paths of the folders made so far.
    const std::vector<std::string>& Made() const { return m_made; }

private:
    CQFolder* Create(const std::string& parent, const std::string& name, const Marks& marks);

    CQGallery& m_gallery;
    std::map<std::string, CQFolder*> m_folders;  // By path; the gallery under the empty one.
    std::vector<std::string> m_made;
};

}  // namespace qfc::host
