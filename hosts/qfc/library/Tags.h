#pragma once

#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/ReadSession.h"
#include "platform/framework/Guid.h"
#include "tags/TagRecords.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

class CQItem;

namespace qfc::host {

// A tag with where it is filed.
struct FoundTag {
    int gallery = 0;
    std::string galleryName;
    std::string category;
    CLibTag tag;
};

// Every stored tag and category of the running library, and what the texts of a command line stand for among them.
// Read through a connection of its own, so that it tells what is stored, whatever the store in memory holds. Throws
// Failure when it cannot be read. Main thread, while a Session runs.
class Tags {
public:
    explicit Tags(const Session&);
    Tags(const Tags&) = delete;
    Tags& operator=(const Tags&) = delete;

    // Reads everything again; what was handed out before is a copy and stays. On Failure it shows what it showed.
    void Reload();
    // The same, and once more when it fails: after a change, what is stored has to be known. False when it cannot be
    // read.
    bool TryReload();
    // By gallery, then as stored.
    const std::vector<CTagCategory>& Categories() const { return m_categories; }
    std::string GalleryName(int gallery) const;
    // Which items the database links to the tag, living or not.
    std::set<GUID> CarriersOf(const GUID& tag) const;
    // Whether the database links anything to the tag, be it a GUID or not.
    bool HasLinks(const GUID& tag) const;
    // Which tags the database links to the item, both living or not.
    std::set<GUID> LinksOf(const GUID& item) const;

    std::optional<FoundTag> ByGuid(const GUID& guid) const;
    const CTagCategory* CategoryByGuid(const GUID& guid) const;
    // All that a text names: a name in either case, "Category/Tag", "GALLERY:Category/Tag" or a GUID; those that bear
    // the name itself before the others. Of one gallery, or of all. Empty for none.
    std::vector<FoundTag> Named(const std::string& text, std::optional<int> gallery) const;
    // The one tag that a text names. Throws Failure for none, and for several with what tells them apart.
    FoundTag Find(const std::string& text, std::optional<int> gallery) const;
    // The same for an item of the gallery: there first, then in all.
    FoundTag FindFor(const std::string& text, int gallery) const;
    // The same for categories: a name, "GALLERY:Category" or a GUID.
    std::vector<CTagCategory> CategoriesCalled(const std::string& text, std::optional<int> gallery) const;
    CTagCategory FindCategory(const std::string& text, std::optional<int> gallery) const;
    // The gallery that a text names in front of a colon, as "GALLERY:Category" does, in either case.
    std::optional<std::string> GalleryInLabel(const std::string& text) const;
    // The first category of the gallery with the name, in either case.
    const CTagCategory* CategoryNamed(const std::string& name, int gallery) const;

    // The item's tags by name: stored items have theirs in the order of GUIDs, which means nothing to people. A link to
    // a tag that is not stored gives one without name and gallery.
    std::vector<FoundTag> Of(const CQItem& item) const;

private:
    FoundTag Entry(const CTagCategory& category, const CLibTag& tag) const;

    ReadSession m_reader;
    std::map<int, std::string> m_galleryNames;
    std::vector<CTagCategory> m_categories;
    std::map<GUID, FoundTag> m_byGuid;
};

// "GALLERY:Category".
std::string CategoryLabel(const Tags& tags, const CTagCategory& category);
// "GALLERY:Category/Tag".
std::string QualifiedName(const FoundTag& tag);
// "Beach, Sunset"; tags without a name are left out.
std::string TagNames(const std::vector<FoundTag>& tags);
// In either case, as the library compares names of tags.
bool IsSameTagName(const std::string& left, const std::string& right);
// As the names of one gallery's tags have to be.
std::optional<FoundTag> NameClash(const Tags& tags, const std::string& name, int gallery);

}  // namespace qfc::host
