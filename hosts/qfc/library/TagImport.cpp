#include "hosts/qfc/library/TagImport.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Text.h"

#include <algorithm>

namespace qfc::host {
namespace {

bool IsNamedAlike(const CString& left, const CString& right) { return IsSameTagName(ToText(left), ToText(right)); }

}  // namespace

TagImport::TagImport(Tags& tags, TagChanges& changes, std::vector<CTagCategory> other)
    : m_tags(tags), m_changes(changes), m_other(std::move(other)) {}

void TagImport::Note(const CQItem& there, CQItem& here, const std::string& name) {
    std::list<GUID> carried;
    there.CopyTagVec(carried);
    if (carried.empty()) return;
    const auto [place, isNew] = m_places.emplace(&here, m_items.size());
    if (isNew) m_items.push_back({&here, name, {}});
    m_items[place->second].tags.insert(carried.begin(), carried.end());
}

void TagImport::Take(const std::function<bool()>& isInterrupted) {
    for (const CTagCategory& there : m_other) {
        if (isInterrupted()) return;
        if (const auto gallery = GalleryFor(there.m_nGallery)) {
            TakeCategory(there, *gallery);
        } else {
            const bool isLeftOut = m_leftOut.contains(there.m_nGallery);
            m_failed.push_back("the tags of " + std::to_string(there.m_nGallery) + ":" + ToText(there.m_strName) +
                               (isLeftOut ? ", whose gallery cannot come" : ", whose gallery is not there"));
        }
    }
    Link(isInterrupted);
}

std::optional<int> TagImport::GalleryFor(int from) const {
    if (PredefinedName(from)) return from;
    const auto found = m_galleries.find(from);
    return found != m_galleries.end() ? std::optional(found->second) : std::nullopt;
}

const CTagCategory* TagImport::CategoryFor(const CTagCategory& there, int gallery) const {
    const CTagCategory* same = m_tags.CategoryByGuid(there.m_guid);
    if (same != nullptr && same->m_nGallery != gallery) same = nullptr;
    if (same != nullptr && IsNamedAlike(same->m_strName, there.m_strName)) return same;
    const CTagCategory* named = m_tags.CategoryNamed(ToText(there.m_strName), gallery);
    return named != nullptr ? named : same;
}

// How many tags of the name the other library would bring into the gallery.
std::size_t TagImport::CountNamed(const std::string& name, int gallery) const {
    std::size_t count = 0;
    for (const CTagCategory& category : m_other) {
        if (GalleryFor(category.m_nGallery) != gallery) continue;
        for (const CLibTag& tag : category.m_tags) count += IsSameTagName(ToText(tag.m_strName), name) ? 1 : 0;
    }
    return count;
}

// Of several tags that could be meant: the same one, the one of the name in the category, the same one under another
// name, and one of the name in another category, unless the other library tells several of that name apart.
std::optional<GUID> TagImport::TagFor(const CLibTag& there, const GUID& category, int gallery) const {
    auto same = m_tags.ByGuid(there.m_guid);
    if (same && same->gallery != gallery) same.reset();
    if (same && IsNamedAlike(same->tag.m_strName, there.m_strName)) return there.m_guid;
    const std::string name = ToText(there.m_strName);
    if (const CTagCategory* here = m_tags.CategoryByGuid(category)) {
        const auto isNamed = [&](const CLibTag& tag) { return IsNamedAlike(tag.m_strName, there.m_strName); };
        const auto named = std::ranges::find_if(here->m_tags, isNamed);
        if (named != here->m_tags.end()) return named->m_guid;
    }
    if (same) return there.m_guid;
    const auto elsewhere = NameClash(m_tags, name, gallery);
    if (elsewhere && CountNamed(name, gallery) == 1) return elsewhere->tag.m_guid;
    return std::nullopt;
}

// What stands here under that GUID stays.
GUID TagImport::FreeGuid(const GUID& wanted) const {
    const bool isTaken = m_tags.ByGuid(wanted) || m_tags.CategoryByGuid(wanted) != nullptr;
    return isTaken ? CQItem().GetUniqueID() : wanted;
}

void TagImport::TakeCategory(const CTagCategory& there, int gallery) {
    const CTagCategory* known = CategoryFor(there, gallery);
    CTagCategory category = known != nullptr ? *known : there;
    if (known == nullptr) {
        category.m_guid = FreeGuid(there.m_guid);
        category.m_nGallery = gallery;
    }
    std::list<CLibTag> missing;
    std::map<GUID, GUID> here;
    for (const CLibTag& tag : there.m_tags) {
        if (const auto counterpart = TagFor(tag, category.m_guid, gallery)) {
            m_here[tag.m_guid] = *counterpart;
            continue;
        }
        missing.push_back(tag);
        missing.back().m_guid = here[tag.m_guid] = FreeGuid(tag.m_guid);
        missing.back().m_guidCategory = category.m_guid;
    }
    if (known != nullptr && missing.empty()) return;
    category.m_tags = missing;
    const std::string name = m_tags.GalleryName(gallery) + ":" + ToText(category.m_strName);
    try {
        if (known != nullptr) {
            m_changes.StoreTags(gallery, missing, name);
        } else {
            m_changes.StoreCategory(category, name);
        }
    } catch (const Failure&) {
        m_failed.push_back("the tags of " + name);
        return;
    }
    m_here.merge(here);
    for (const CLibTag& tag : missing) m_made.push_back(QualifiedName(*m_tags.ByGuid(tag.m_guid)));
}

// What could not be seen the first time may be the second.
bool TagImport::TryLink(const std::vector<CQItem*>& items, const std::vector<GUID>& tags) {
    try {
        m_changes.Link(items, {tags.begin(), tags.end()}, "cannot tag");
        return true;
    } catch (const Failure&) {
        return false;
    }
}

void TagImport::Link(const std::function<bool()>& isInterrupted) {
    std::map<std::vector<GUID>, std::vector<const Item*>> groups;
    for (const Item& item : m_items) {
        std::set<GUID> lacking;
        for (const GUID& tag : item.tags) {
            // Tags that could not be made were told; others are not stored in the other library either.
            const auto here = m_here.find(tag);
            if (here != m_here.end() && !item.here->IsTagExist(here->second)) lacking.insert(here->second);
        }
        if (!lacking.empty()) groups[{lacking.begin(), lacking.end()}].push_back(&item);
    }
    std::set<const Item*> tagged, refused;
    for (const auto& [tags, group] : groups) {
        if (isInterrupted()) break;
        std::vector<CQItem*> items;
        for (const Item* item : group) items.push_back(item->here);
        const bool isDone = TryLink(items, tags) || TryLink(items, tags);
        (isDone ? tagged : refused).insert(group.begin(), group.end());
    }
    for (const Item& item : m_items) {
        if (tagged.contains(&item)) m_tagged.push_back(item.name);
        if (refused.contains(&item)) m_failed.push_back("the tags of " + item.name);
    }
}

}  // namespace qfc::host
