#include "hosts/qfc/library/TagWholeChange.h"

#include "hosts/qfc/cli/Exit.h"

#include <algorithm>

namespace qfc::host {
namespace {

bool IsDoneNow(Tags& tags, const std::function<bool()>& isDone) {
    try {
        return tags.TryReload() && isDone();
    } catch (const Failure&) {
        return false;  // What cannot be read may be either; as before is safe.
    }
}

}  // namespace

void ChangeOrAsBefore(Tags& tags, const TagBackup& before, const std::function<void()>& change,
                      const std::function<bool()>& isDone) {
    try {
        change();
    } catch (const std::exception& failure) {
        if (!IsDoneNow(tags, isDone)) throw Failure(failure.what() + before.PutBack(tags));
    }
}

std::vector<FoundItem> DeleteWithTags(Tags& tags, TagChanges& changes, Galleries& galleries,
                                      const CTagCategory& category, const std::string& tagsStay,
                                      const std::string& categoryStays) {
    const std::list<GUID> guids = GuidsOf(category.m_tags);
    const std::vector<FoundItem> carriers = Carriers(galleries, guids);
    TagBackup before;
    before.Keep(tags, category);
    const auto change = [&] {
        if (!category.m_tags.empty()) changes.DeleteTags(category.m_nGallery, category.m_tags, tagsStay);
        changes.DeleteCategory(category, categoryStays);
    };
    const auto isDone = [&] {
        return tags.CategoryByGuid(category.m_guid) == nullptr &&
               std::ranges::all_of(guids, [&](const GUID& tag) { return IsGone(tags, tag); });
    };
    ChangeOrAsBefore(tags, before, change, isDone);
    Forget(carriers, guids);
    return carriers;
}

}  // namespace qfc::host
