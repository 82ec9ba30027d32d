#include "hosts/qfc/library/TagChanges.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Tree.h"

#include <algorithm>
#include <functional>

namespace qfc::host {
namespace {

constexpr const char* kNotStored = "cannot store the default tags";
constexpr const char* kNoDefaults = "there are no default tags beside the program";

// What a store that could not be filled has read was taken back, so it reads once more.
bool HasDefaults(CLibTagsMgr& store) {
    store.GenerateCategoryTemplate();
    return std::ranges::any_of(store.GetCategoryTemplate(),
                               [](const auto& each) { return !each.second.second.empty(); });
}

bool IsSamePicture(const CLibTag& left, const CLibTag& right) {
    static const std::vector<BYTE> kNone;
    return (left.m_pPicture ? *left.m_pPicture : kNone) == (right.m_pPicture ? *right.m_pPicture : kNone);
}

void ForEachItem(Galleries& galleries, const std::function<void(const FoundItem&)>& visit) {
    for (CQGallery* gallery : galleries.All()) {
        std::set<GUID> seen;
        for (CQFolder* folder : WholeTree(*gallery)) {
            for (CQItem* item : Items(*folder)) {
                if (seen.insert(std::as_const(*item).GetUniqueID()).second) visit({gallery, item, folder});
            }
        }
    }
}

bool CarriesOneOf(const CQItem& item, const std::list<GUID>& tags) {
    return std::ranges::any_of(tags, [&](const GUID& tag) { return item.IsTagExist(tag) != 0; });
}

}  // namespace

bool IsStoredAs(const Tags& tags, const CLibTag& wanted) {
    const auto found = tags.ByGuid(wanted.m_guid);
    if (!found) return false;
    const CLibTag& tag = found->tag;
    return tag.m_strName == wanted.m_strName && tag.m_nType == wanted.m_nType && tag.m_bChecked == wanted.m_bChecked &&
           tag.m_bDeletable == wanted.m_bDeletable && tag.m_guidCategory == wanted.m_guidCategory &&
           IsSamePicture(tag, wanted);
}

bool IsStoredAs(const Tags& tags, const CTagCategory& wanted) {
    const CTagCategory* stored = tags.CategoryByGuid(wanted.m_guid);
    return stored != nullptr && stored->m_strName == wanted.m_strName && stored->m_nGallery == wanted.m_nGallery &&
           stored->m_nType == wanted.m_nType && stored->m_bDeletable == wanted.m_bDeletable;
}

bool IsGone(const Tags& tags, const GUID& tag) { return !tags.ByGuid(tag) && tags.CarriersOf(tag).empty(); }

std::list<GUID> GuidsOf(const std::list<CLibTag>& tags) {
    std::list<GUID> guids;
    for (const CLibTag& tag : tags) guids.push_back(tag.m_guid);
    return guids;
}

TagChanges::TagChanges(Tags& tags, Galleries& galleries) : m_tags(tags), m_galleries(galleries) {
    QFCLibraryManager::fnLoadLibTag();
}

void TagChanges::Look(const std::string& what) {
    if (!m_tags.TryReload()) throw Failure(what + ": the tags that are stored cannot be read");
}

std::set<GUID> TagChanges::Linked(const GUID& tag, const std::string& what) const {
    try {
        return m_tags.CarriersOf(tag);
    } catch (const Failure& failure) {
        throw Failure(what + ": " + failure.what());
    }
}

void TagChanges::StoreTags(int gallery, const std::list<CLibTag>& tags, const std::string& what) {
    QFCLibraryManager::fnUpdateTag(static_cast<DWORD>(gallery), tags);
    Look(what);
    for (const CLibTag& tag : tags) {
        if (!IsStoredAs(m_tags, tag)) throw Failure(what);
    }
}

void TagChanges::StoreCategory(const CTagCategory& category, const std::string& what) {
    QFCLibraryManager::fnUpdateTagCategory(static_cast<DWORD>(category.m_nGallery), {category});
    Look(what);
    const auto isStored = [&](const CLibTag& tag) { return IsStoredAs(m_tags, tag); };
    if (!IsStoredAs(m_tags, category) || !std::ranges::all_of(category.m_tags, isStored)) throw Failure(what);
}

void TagChanges::RequireGone(const std::list<GUID>& guids, const std::string& what) {
    Look(what);
    for (const GUID& guid : guids) {
        if (m_tags.ByGuid(guid) || !Linked(guid, what).empty()) throw Failure(what);
    }
}

void TagChanges::DeleteTags(int gallery, const std::list<CLibTag>& tags, const std::string& what) {
    QFCLibraryManager::fnDeleteTag(static_cast<DWORD>(gallery), tags);
    RequireGone(GuidsOf(tags), what);
}

void TagChanges::DeleteCategory(const CTagCategory& category, const std::string& what) {
    QFCLibraryManager::fnDeleteTagCategory(static_cast<DWORD>(category.m_nGallery), {category});
    Look(what);
    if (m_tags.CategoryByGuid(category.m_guid) != nullptr) throw Failure(what);
}

std::vector<FoundItem> TagChanges::Merge(int gallery, const CLibTag& target, const std::vector<FoundTag>& sources,
                                         const std::string& what) {
    std::list<GUID> guids;
    for (const FoundTag& source : sources) guids.push_back(source.tag.m_guid);
    const std::vector<FoundItem> carriers = Carriers(m_galleries, guids);
    QFCLibraryManager::fnMergeFaceTag(static_cast<DWORD>(gallery), target.m_guid, guids);
    RequireGone(guids, what);
    const std::set<GUID> linked = Linked(target.m_guid, what);
    for (const FoundItem& carrier : carriers) {
        if (!linked.contains(std::as_const(*carrier.item).GetUniqueID())) throw Failure(what);
        if (!carrier.item->IsTagExist(target.m_guid)) carrier.item->AddLibTag(target.m_guid);
    }
    Forget(carriers, guids);
    return carriers;
}

void TagChanges::Link(const std::vector<CQItem*>& items, const std::list<GUID>& tags, const std::string& what) {
    QFCLibraryManager::fnInsertLibTag2Item(items, tags);
    for (const GUID& tag : tags) {
        const std::set<GUID> linked = Linked(tag, what);
        for (const CQItem* item : items) {
            if (!item->IsTagExist(tag) || !linked.contains(item->GetUniqueID())) throw Failure(what);
        }
    }
}

void TagChanges::Unlink(const std::vector<CQItem*>& items, const std::list<GUID>& tags, const std::string& what) {
    QFCLibraryManager::fnDeleteLibTagFromItem(items, tags);
    for (const GUID& tag : tags) {
        const std::set<GUID> linked = Linked(tag, what);
        for (const CQItem* item : items) {
            if (item->IsTagExist(tag) || linked.contains(item->GetUniqueID())) throw Failure(what);
        }
    }
}

void TagChanges::StoreDefaults() {
    CLibTagsMgr& store = *CLibTagsMgr::GetLibTagMgr();
    std::map<DWORD, std::vector<CTagCategory>> none;
    store.SetTagsToDefault(none);
    QFCLibraryManager::fnCreateDefaultTag();
    // Now the store holds the defaults, if there are any and they could be written.
    if (store.IsEmpty()) throw Failure(HasDefaults(store) ? kNotStored : kNoDefaults);
    Look(kNotStored);
    for (const auto& [gallery, names] : store.GetCategoryTemplate()) {
        for (const CTagCategory& category : store.GetTagsData(gallery)) {
            const auto isStored = [&](const CLibTag& tag) { return IsStoredAs(m_tags, tag); };
            if (m_tags.CategoryByGuid(category.m_guid) != nullptr && std::ranges::all_of(category.m_tags, isStored)) {
                continue;
            }
            throw Failure(kNotStored);
        }
    }
    none.clear();
    store.SetTagsToDefault(none);
    QFCLibraryManager::fnLoadLibTag();
}

std::vector<FoundItem> Carriers(Galleries& galleries, const std::list<GUID>& tags) {
    std::vector<FoundItem> carriers;
    ForEachItem(galleries, [&](const FoundItem& found) {
        if (CarriesOneOf(*found.item, tags)) carriers.push_back(found);
    });
    return carriers;
}

// The service tells loaded items nothing of tags that go.
void Forget(const std::vector<FoundItem>& items, const std::list<GUID>& tags) {
    for (const FoundItem& found : items) {
        for (const GUID& tag : tags) found.item->RemoveLibTag(tag);
    }
}

std::map<GUID, std::size_t> CountCarriers(Galleries& galleries) {
    std::map<GUID, std::size_t> counts;
    std::set<GUID> counted;
    ForEachItem(galleries, [&](const FoundItem& found) {
        if (!counted.insert(std::as_const(*found.item).GetUniqueID()).second) return;
        std::list<GUID> tags;
        found.item->CopyTagVec(tags);
        for (const GUID& tag : tags) ++counts[tag];
    });
    return counts;
}

}  // namespace qfc::host
