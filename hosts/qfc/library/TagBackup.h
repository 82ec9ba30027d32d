#pragma once

#include "hosts/qfc/library/Tags.h"
#include "platform/framework/Guid.h"

#include <list>
#include <set>
#include <string>
#include <vector>

namespace qfc::host {

// Tags as they stood with their links, and categories: what takes several calls of the library is to be done as a
// whole, so when a later one fails, the earlier ones are undone. Main thread.
class TagBackup {
public:
    // Keeps tags of one gallery as they stand. Throws Failure when their links cannot be read.
    void Keep(const Tags& tags, int gallery, const std::list<CLibTag>& kept);
    // The same with the category that holds them.
    void Keep(const Tags& tags, const CTagCategory& category);

    // Looks afresh, and stores them again as they stood where they do not stand so any more; what cannot be read is
    // stored again in any case, and all a second time when anything is missing then. Nothing when they all stand so
    // then, else what to tell: "; changed are A, B". Loaded items learn nothing of it. Does not throw when they cannot
    // be read: a first reason is to be told, too.
    std::string PutBack(Tags& tags) const;

private:
    struct Kept {
        FoundTag tag;
        std::set<GUID> items;
    };
    std::string PutBackOnce(Tags& tags) const;
    std::string Changed(const Tags& tags) const;
    static bool IsAsKept(const Tags& tags, const Kept& kept);
    static void PutBackLinks(const Tags& tags, const Kept& kept);

    std::vector<CTagCategory> m_categories;  // Without their tags.
    std::vector<Kept> m_kept;
};

}  // namespace qfc::host
