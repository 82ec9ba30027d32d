#pragma once

#include "hosts/qfc/library/Tags.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace qfc::host {

// Which items have the tags that were named on the command line. A name stands for the tag of that name in the item's
// own gallery, and where there is none, for every tag of that name. Without names every item fits. Main thread.
class TagFilter {
public:
    // Throws Failure for a name that no tag bears.
    TagFilter(const Session& session, std::vector<std::string> names, bool any);

    // Throws Failure when the gallery has several tags of one of the names.
    bool Fits(const CQItem& item, int gallery) const;

private:
    using Choice = std::set<GUID>;

    const std::vector<Choice>& ChoicesIn(int gallery) const;

    std::vector<std::string> m_names;
    bool m_any;
    Tags m_tags;
    mutable std::map<int, std::vector<Choice>> m_choices;  // By gallery, one for each name.
};

}  // namespace qfc::host
