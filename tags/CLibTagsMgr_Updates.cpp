#include "tags/CLibTagsMgr.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

// The updates of the store.

namespace {

static_assert(std::is_nothrow_move_constructible_v<CTagCategory>);

// Overwrites every record of the same GUID; whether there was one.
template <typename Records, typename Record>
bool Replace(Records& records, const Record& record) {
    bool bFound = false;
    for (Record& each : records) {
        if (!(each.m_guid == record.m_guid)) continue;
        each = record;
        bFound = true;
    }
    return bFound;
}

}  // namespace

void CLibTagsMgr::AddTag(const std::vector<CTagCategory>& categories) {
    const std::lock_guard lock(m_mutex);
    Galleries added;
    for (const CTagCategory& category : categories) {
        added[static_cast<DWORD>(category.m_nGallery)].push_back(category);
    }
    for (const auto& [dwGallery, appended] : added) {
        const auto gallery = m_galleries.find(dwGallery);
        if (gallery != m_galleries.end()) gallery->second.reserve(gallery->second.size() + appended.size());
    }
    // From here on nothing needs memory.
    m_galleries.merge(added);
    for (auto& [dwGallery, appended] : added) std::ranges::move(appended, std::back_inserter(m_galleries[dwGallery]));
}

int CLibTagsMgr::UpdateCategory(DWORD dwGallery, const std::vector<CTagCategory>& categories) {
    const std::lock_guard lock(m_mutex);
    if (categories.empty()) return 1;
    auto& stored = m_galleries[dwGallery];
    for (const CTagCategory& category : categories) {
        if (!Replace(stored, category)) stored.push_back(category);
    }
    return 1;
}

void CLibTagsMgr::UpdateTag(DWORD dwGallery, const std::list<CLibTag>& tags) {
    const std::lock_guard lock(m_mutex);
    const auto gallery = m_galleries.find(dwGallery);
    if (gallery == m_galleries.end()) return;
    for (const CLibTag& tag : tags) {
        for (CTagCategory& category : gallery->second) {
            if (category.m_guid == tag.m_guidCategory && !Replace(category.m_tags, tag)) category.m_tags.push_back(tag);
        }
    }
}

int CLibTagsMgr::DeleteCategory(const DWORD& dwGallery, const std::vector<GUID>& categories) {
    const std::lock_guard lock(m_mutex);
    const auto gallery = m_galleries.find(dwGallery);
    if (gallery == m_galleries.end()) return 1;
    for (const GUID& guid : categories) {
        std::erase_if(gallery->second, [&](const CTagCategory& category) { return category.m_guid == guid; });
    }
    return 1;
}

int CLibTagsMgr::DeleteTag(const DWORD& dwGallery, const std::vector<GUID>& tags) {
    const std::lock_guard lock(m_mutex);
    const auto gallery = m_galleries.find(dwGallery);
    if (gallery == m_galleries.end()) return 1;
    for (const GUID& guid : tags) {
        for (CTagCategory& category : gallery->second) {
            category.m_tags.remove_if([&](const CLibTag& tag) { return tag.m_guid == guid; });
        }
    }
    return 1;
}

void CLibTagsMgr::SetTagsToDefault(std::map<DWORD, std::vector<CTagCategory>>& data) {
    m_galleries.clear();
    m_galleries.swap(data);
}
