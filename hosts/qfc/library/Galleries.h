#pragma once

#include "hosts/qfc/library/Session.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

class CQGallery;
class DBTools;

namespace qfc::host {

struct GalleryName {
    int id = 0;
    std::string name;
};

// The gallery that has the id by nature; its name, or nothing.
std::optional<std::string> PredefinedName(int id);
// The names of all that are there by nature.
std::vector<std::string> PredefinedNames();
// Not there by nature, whatever its id: when such a gallery goes, its tags go along, since the next one may get its id.
bool IsOwnGallery(int id);

// The galleries of a running session, by id or name, each loaded at most once: loading a gallery a second time would
// make a second tree beside the first. The session owns what is loaded here. Main thread.
class Galleries {
public:
    explicit Galleries(const Session& session) : m_session(session) {}

    // The stored galleries, by id.
    std::vector<GalleryName> Stored() const { return Stored(nullptr); }
    // Those of another library, or of this one for null.
    static std::vector<GalleryName> Stored(DBTools* other);

    // The id and name that a text stands for: an id, a name, or an empty text for Media. Throws Failure for an unknown
    // gallery; a predefined one is always known, stored or not.
    GalleryName Resolve(const std::string& idOrName) const;
    // The gallery of such a text. A predefined one that is not stored yet is made.
    CQGallery& Open(const std::string& idOrName);
    // The same, but makes nothing: null for a predefined gallery that is not stored.
    CQGallery* Find(const std::string& idOrName);
    // Every stored gallery, loaded, but not those without a folder, which hold nothing. Throws Failure when one cannot
    // be loaded: nobody would know what it holds.
    std::vector<CQGallery*> All();
    // How many rows the library has of the id; of several the first alone is reached.
    std::size_t CountRows(int id) const;
    // The gallery's row names no folder, or one that the database does not have, with nothing below or in it; and there
    // is no filled one that could be its own since no gallery names it. Such a gallery cannot be loaded.
    bool IsWithoutFolder(int id) const;

    // The gallery of this library that answers to one of another: the same predefined one, else the one of that name.
    // Made when missing.
    CQGallery& Counterpart(const GalleryName& other);

    // A new gallery: with its own id for a predefined name, else with the next one from 100 that neither a gallery nor
    // a category of tags has. Throws Failure when the name is taken.
    CQGallery& Create(const std::string& name);
    // Closes it; it is not loaded any more.
    void Close(CQGallery& gallery);

    static GalleryName NameOf(const CQGallery& gallery);

private:
    CQGallery* Load(int id);
    CQGallery& Make(const GalleryName& gallery);
    bool IsStored(int id) const;
    bool IsSeen(const GalleryName& made) const;
    int FreeId(const std::vector<GalleryName>& stored) const;

    const Session& m_session;
    std::map<int, CQGallery*> m_loaded;  // Borrowed from the gallery document.
};

}  // namespace qfc::host
