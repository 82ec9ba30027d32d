#pragma once

#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/LibraryFile.h"
#include "hosts/qfc/library/ReadSession.h"
#include "tags/TagRecords.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

class CQFolder;
class CQGallery;

namespace qfc::host {

// Folders that a library stores below a loaded one without loading them: they lie too deep.
struct UnseenFolders {
    CQFolder* above = nullptr;  // The loaded one.
    std::size_t folders = 0;
    std::size_t items = 0;   // Placements in them.
    bool isReadable = true;  // False: the database could not be read to the end, there may be more.
};

// Another library, opened to read from it. What is opened is a copy made in a temporary folder, since opening a library
// may change it. The destructor closes its galleries, ends the session and removes the copy. Main thread, while a
// Session runs.
class OtherLibrary {
public:
    // Throws Failure when the file is no library, or needs recovery first.
    explicit OtherLibrary(const std::string& file);
    ~OtherLibrary();
    OtherLibrary(const OtherLibrary&) = delete;
    OtherLibrary& operator=(const OtherLibrary&) = delete;

    DBTools& Tools() const { return m_reader->Tools(); }
    std::vector<GalleryName> Stored() const;
    // With their tags. Throws Failure when they cannot be read.
    std::vector<CTagCategory> Categories() const;
    // Null when it cannot be read. Lives as long as this object.
    CQGallery* Load(int id);
    // What is stored below these loaded folders, a whole gallery, and is not among them.
    std::vector<UnseenFolders> Unseen(const std::vector<CQFolder*>& loaded) const;

private:
    void CountBelow(int row, std::set<int>& known, UnseenFolders& unseen) const;

    TemporaryFolder m_folder;
    std::optional<ReadSession> m_reader;
    std::vector<CQGallery*> m_galleries;
};

}  // namespace qfc::host
