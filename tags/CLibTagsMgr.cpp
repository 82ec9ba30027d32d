#include "tags/CLibTagsMgr.h"

#include <algorithm>

// The store and its queries.

CLibTagsMgr::CLibTagsMgr() = default;

CLibTagsMgr::~CLibTagsMgr() = default;

CLibTagsMgr* CLibTagsMgr::GetLibTagMgr() {
    static CLibTagsMgr store;
    return &store;
}

const std::vector<CTagCategory>& CLibTagsMgr::CategoriesOf(DWORD dwGallery) const {
    static const std::vector<CTagCategory> kNone;
    const auto found = m_galleries.find(dwGallery);
    return found != m_galleries.end() ? found->second : kNone;
}

// The first tag of the gallery that matches, null if there is none.
template <typename Matches>
const CLibTag* CLibTagsMgr::FindTag(DWORD dwGallery, Matches&& matches) const {
    for (const CTagCategory& category : CategoriesOf(dwGallery)) {
        const auto found = std::find_if(category.m_tags.begin(), category.m_tags.end(), matches);
        if (found != category.m_tags.end()) return &*found;
    }
    return nullptr;
}

std::vector<CTagCategory> CLibTagsMgr::GetTagsData(const DWORD& dwGallery) { return m_galleries[dwGallery]; }

bool CLibTagsMgr::IsEmpty() const { return m_galleries.empty(); }

int CLibTagsMgr::GetAllTagList(std::list<CLibTag>& tags) const {
    int nCount = 0;
    for (const auto& [dwGallery, categories] : m_galleries) nCount += GetCurGalleryAllTag(dwGallery, tags);
    return nCount;
}

int CLibTagsMgr::GetCurGalleryAllTag(const DWORD& dwGallery, std::list<CLibTag>& tags) const {
    int nCount = 0;
    for (const CTagCategory& category : CategoriesOf(dwGallery)) {
        tags.insert(tags.end(), category.m_tags.begin(), category.m_tags.end());
        nCount += static_cast<int>(category.m_tags.size());
    }
    return nCount;
}

bool CLibTagsMgr::GetCurGalleryDateTag(const DWORD& dwGallery, CLibTag& tag) const {
    const CLibTag* pFound =
        FindTag(dwGallery, [](const CLibTag& each) { return each.m_bChecked && each.m_nType == qfc::tag_type::kDate; });
    if (pFound == nullptr) return false;
    tag = *pFound;
    return true;
}

int CLibTagsMgr::GetCurGallerySelectedTag(const DWORD& dwGallery, std::vector<CTagCategory>& categories) const {
    int nCount = 0;
    for (const CTagCategory& category : CategoriesOf(dwGallery)) {
        CTagCategory selected = category;
        selected.m_tags.remove_if(
            [](const CLibTag& tag) { return !tag.m_bChecked || tag.m_nType == qfc::tag_type::kDate; });
        if (selected.m_tags.empty()) continue;
        nCount += static_cast<int>(selected.m_tags.size());
        categories.push_back(std::move(selected));
    }
    return nCount;
}

int CLibTagsMgr::GetCurrentGalFaceCategory(const DWORD& dwGallery, CTagCategory& category) const {
    const auto& categories = CategoriesOf(dwGallery);
    const auto found = std::find_if(categories.begin(), categories.end(),
                                    [](const CTagCategory& each) { return each.m_nType == qfc::category_type::kFace; });
    if (found == categories.end()) return 0;
    category = *found;
    return 1;
}

int CLibTagsMgr::GetTagByGuid(const GUID& guid, CLibTag& tag) const {
    for (const auto& [dwGallery, categories] : m_galleries) {
        const CLibTag* pFound = FindTag(dwGallery, [&](const CLibTag& each) { return each.m_guid == guid; });
        if (pFound == nullptr) continue;
        tag = *pFound;
        return 1;
    }
    return 0;
}

int CLibTagsMgr::GetTagByName(DWORD dwGallery, const CString& strName, CLibTag& tag) const {
    const CLibTag* pFound =
        FindTag(dwGallery, [&](const CLibTag& each) { return each.m_strName.CompareNoCase(strName) == 0; });
    if (pFound == nullptr) return 0;
    tag = *pFound;
    return 1;
}

bool CLibTagsMgr::IsTagCategoryExisted(const DWORD& dwGallery, const GUID& category) const {
    const auto& categories = CategoriesOf(dwGallery);
    return std::any_of(categories.begin(), categories.end(),
                       [&](const CTagCategory& each) { return each.m_guid == category; });
}

bool CLibTagsMgr::IsTagExisted(const DWORD& dwGallery, const GUID& tag) const {
    std::list<CLibTag> tags;
    GetCurGalleryAllTag(dwGallery, tags);
    return std::any_of(tags.begin(), tags.end(), [&](const CLibTag& each) { return each.m_guid == tag; });
}
