#include "hosts/qfc/library/TagBackup.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/LinkRelease.h"
#include "hosts/qfc/library/TagChanges.h"

#include <algorithm>
#include <iterator>

namespace qfc::host {

void TagBackup::Keep(const Tags& tags, int gallery, const std::list<CLibTag>& kept) {
    for (const CLibTag& tag : kept) {
        FoundTag found = tags.ByGuid(tag.m_guid).value_or(FoundTag{gallery, {}, {}, tag});
        m_kept.push_back({std::move(found), tags.CarriersOf(tag.m_guid)});
    }
}

void TagBackup::Keep(const Tags& tags, const CTagCategory& category) {
    Keep(tags, category.m_nGallery, category.m_tags);
    m_categories.push_back(category);
    m_categories.back().m_tags.clear();
}

// A fault that passes must not cost what only this knows any more.
std::string TagBackup::PutBack(Tags& tags) const {
    const std::string changed = PutBackOnce(tags);
    return changed.empty() ? changed : PutBackOnce(tags);
}

std::string TagBackup::PutBackOnce(Tags& tags) const {
    // What was read before the change tells nothing of now.
    const bool isRead = tags.TryReload();
    for (const CTagCategory& category : m_categories) {
        if (isRead && IsStoredAs(tags, category)) continue;
        QFCLibraryManager::fnUpdateTagCategory(static_cast<DWORD>(category.m_nGallery), {category});
    }
    for (const Kept& kept : m_kept) {
        if (!isRead || !IsStoredAs(tags, kept.tag.tag)) {
            QFCLibraryManager::fnUpdateTag(static_cast<DWORD>(kept.tag.gallery), {kept.tag.tag});
        }
        PutBackLinks(tags, kept);
    }
    try {
        if (tags.TryReload()) return Changed(tags);
    } catch (const Failure&) {  // Their links cannot be read either.
    }
    return m_kept.empty() && m_categories.empty() ? "" : "; the tags may be changed: they cannot be read";
}

std::string TagBackup::Changed(const Tags& tags) const {
    std::vector<std::string> names;
    for (const CTagCategory& category : m_categories) {
        if (!IsStoredAs(tags, category)) names.push_back(CategoryLabel(tags, category));
    }
    for (const Kept& kept : m_kept) {
        if (!IsAsKept(tags, kept)) names.push_back(QualifiedName(kept.tag));
    }
    std::string changed;
    for (const std::string& name : names) changed += (changed.empty() ? "; changed are " : ", ") + name;
    return changed;
}

bool TagBackup::IsAsKept(const Tags& tags, const Kept& kept) {
    return IsStoredAs(tags, kept.tag.tag) && tags.CarriersOf(kept.tag.tag.m_guid) == kept.items;
}

void TagBackup::PutBackLinks(const Tags& tags, const Kept& kept) {
    const GUID& tag = kept.tag.tag.m_guid;
    std::set<GUID> now;
    try {
        now = tags.CarriersOf(tag);
    } catch (const Failure&) {  // All are written; those that stand stay as they are.
    }
    std::vector<GUID> missing, added;
    std::set_difference(kept.items.begin(), kept.items.end(), now.begin(), now.end(), std::back_inserter(missing));
    std::set_difference(now.begin(), now.end(), kept.items.begin(), kept.items.end(), std::back_inserter(added));
    if (!missing.empty()) LinkStored(missing, {tag});
    if (!added.empty()) UnlinkStored(added, {tag});
}

}  // namespace qfc::host
