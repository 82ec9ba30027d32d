#pragma once

#include "hosts/qfc/library/TagChanges.h"
#include "hosts/qfc/library/Tags.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

class CQItem;

namespace qfc::host {

// Brings the categories and tags of another library into this one, and gives them to the items that carry them there.
// Both galleries of a pair are told first, then the items, then everything is taken at once. A category or tag that the
// gallery here has, by name or by GUID, stands for the other library's and stays as it is. Main thread.
class TagImport {
public:
    // `other` are the categories of the other library, with their tags.
    TagImport(Tags& tags, TagChanges& changes, std::vector<CTagCategory> other);

    // The gallery with the id `from` there is `to` here. Predefined ones need not be told.
    void Pair(int from, int to) { m_galleries[from] = to; }
    // The gallery with that id there has none here.
    void LeaveOut(int from) { m_leftOut.insert(from); }
    // `there` is `here`, which has to live until everything is taken. `name` is what to call it.
    void Note(const CQItem& there, CQItem& here, const std::string& name);
    // Makes what is missing, and looks. Once. Where `isInterrupted` is true nothing new is begun.
    void Take(const std::function<bool()>& isInterrupted);

    const std::vector<std::string>& Made() const { return m_made; }      // Tags, qualified.
    const std::vector<std::string>& Tagged() const { return m_tagged; }  // Names of items that have new tags now.
    const std::vector<std::string>& Failed() const { return m_failed; }

private:
    struct Item {
        CQItem* here;
        std::string name;
        std::set<GUID> tags;  // As the other library names them.
    };

    void TakeCategory(const CTagCategory& there, int gallery);
    const CTagCategory* CategoryFor(const CTagCategory& there, int gallery) const;
    std::optional<GUID> TagFor(const CLibTag& there, const GUID& category, int gallery) const;
    std::size_t CountNamed(const std::string& name, int gallery) const;
    GUID FreeGuid(const GUID& wanted) const;
    std::optional<int> GalleryFor(int from) const;
    void Link(const std::function<bool()>& isInterrupted);
    bool TryLink(const std::vector<CQItem*>& items, const std::vector<GUID>& tags);

    Tags& m_tags;
    TagChanges& m_changes;
    std::vector<CTagCategory> m_other;
    std::map<int, int> m_galleries;
    std::set<int> m_leftOut;
    std::vector<Item> m_items;
    std::map<const CQItem*, std::size_t> m_places;  // In m_items.
    std::map<GUID, GUID> m_here;                    // What each tag of the other library is here.
    std::vector<std::string> m_made, m_tagged, m_failed;
};

}  // namespace qfc::host
