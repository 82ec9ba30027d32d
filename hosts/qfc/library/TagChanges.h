#pragma once

#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/Tags.h"

#include <list>
#include <string>
#include <vector>

namespace qfc::host {

// Changes of tags. Each goes through the library's service, then looks at what is stored; `tags` shows it afterwards.
// Every function throws Failure with `what` could not be done when it is not there, or cannot be read. Loaded items
// learn of it, too, unless another thing is said.
// Main thread.
class TagChanges {
public:
    // Loads the library's own store, which the service keeps in step; once a process.
    TagChanges(Tags& tags, Galleries& galleries);

    // New tags, or new values of stored ones; all of one gallery.
    void StoreTags(int gallery, const std::list<CLibTag>& tags, const std::string& what);
    // The category with exactly the tags given, which may be new; those that it has had stay stored.
    void StoreCategory(const CTagCategory& category, const std::string& what);
    // With their links. Loaded items carry them until they are told with Forget.
    void DeleteTags(int gallery, const std::list<CLibTag>& tags, const std::string& what);
    // The category alone: its tags go before it.
    void DeleteCategory(const CTagCategory& category, const std::string& what);
    // The items of the sources get the target, the sources go; all of one gallery. Gives the items.
    std::vector<FoundItem> Merge(int gallery, const CLibTag& target, const std::vector<FoundTag>& sources,
                                 const std::string& what);
    void Link(const std::vector<CQItem*>& items, const std::list<GUID>& tags, const std::string& what);
    void Unlink(const std::vector<CQItem*>& items, const std::list<GUID>& tags, const std::string& what);
    // The categories that the data beside the program describe. Throws Failure when there are none.
    void StoreDefaults();

private:
    void Look(const std::string& what);
    std::set<GUID> Linked(const GUID& tag, const std::string& what) const;
    void RequireGone(const std::list<GUID>& guids, const std::string& what);

    Tags& m_tags;
    Galleries& m_galleries;
};

// The tag stands there with exactly these values.
bool IsStoredAs(const Tags& tags, const CLibTag& wanted);
// The same of a category, whatever tags it has.
bool IsStoredAs(const Tags& tags, const CTagCategory& wanted);
// Neither the tag stands there nor a link to it. Throws Failure when that cannot be read.
bool IsGone(const Tags& tags, const GUID& tag);
std::list<GUID> GuidsOf(const std::list<CLibTag>& tags);
// The loaded items of all galleries that carry one of the tags, as they stand in memory.
std::vector<FoundItem> Carriers(Galleries& galleries, const std::list<GUID>& tags);
// The items carry none of the tags any more, in memory.
void Forget(const std::vector<FoundItem>& items, const std::list<GUID>& tags);
// How many living items carry each tag; an item that is in several galleries counts once.
std::map<GUID, std::size_t> CountCarriers(Galleries& galleries);

}  // namespace qfc::host
