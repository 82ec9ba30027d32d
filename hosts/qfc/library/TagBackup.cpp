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

std::string TagBackup::PutBack(Tags& tags) const {
    try {
        return PutBackAll(tags);
    } catch (const Failure& failure) {
        return std::string("; the tags may be changed: ") + failure.what();
    }
}

std::string TagBackup::PutBackAll(Tags& tags) const {
    for (const Kept& kept : m_kept) {
        if (!IsStoredAs(tags, kept.tag.tag)) {
            QFCLibraryManager::fnUpdateTag(static_cast<DWORD>(kept.tag.gallery), {kept.tag.tag});
        }
        PutBackLinks(tags, kept);
    }
    tags.Reload();
    std::string changed;
    for (const Kept& kept : m_kept) {
        if (!IsAsKept(tags, kept)) changed += (changed.empty() ? "; changed are " : ", ") + QualifiedName(kept.tag);
    }
    return changed;
}

bool TagBackup::IsAsKept(const Tags& tags, const Kept& kept) {
    return IsStoredAs(tags, kept.tag.tag) && tags.CarriersOf(kept.tag.tag.m_guid) == kept.items;
}

void TagBackup::PutBackLinks(const Tags& tags, const Kept& kept) {
    const GUID& tag = kept.tag.tag.m_guid;
    const std::set<GUID> now = tags.CarriersOf(tag);
    std::vector<GUID> missing, added;
    std::set_difference(kept.items.begin(), kept.items.end(), now.begin(), now.end(), std::back_inserter(missing));
    std::set_difference(now.begin(), now.end(), kept.items.begin(), kept.items.end(), std::back_inserter(added));
    if (!missing.empty()) LinkStored(missing, {tag});
    if (!added.empty()) UnlinkStored(added, {tag});
}

}  // namespace qfc::host
