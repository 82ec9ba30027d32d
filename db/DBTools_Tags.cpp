#include "db/DBTools.h"
#include "db/DBToolsGuard.h"
#include "tags/TagRecords.h"

#include <algorithm>
#include <iterator>

// Tags under the guard.

bool DBTools::LoadTags(std::vector<CTagCategory>& categories) {
    std::vector<CTagCategory> found;
    const bool bRead = Guarded([&] {
        if (!DBToolsInternal::ReadTags(found)) return false;
        // So that the append below cannot run out of memory.
        categories.reserve(categories.size() + found.size());
        return true;
    });
    if (bRead) std::move(found.begin(), found.end(), std::back_inserter(categories));
    return bRead;
}

bool DBTools::SaveCategoriesAndTags(const std::list<CTagCategory>& categories) {
    return GuardedEach(categories, [&](const CTagCategory& category) { return WriteCategoryWithTags(category); });
}

bool DBTools::UpdateCategory(const CTagCategory& category) {
    return Guarded([&] { return DBToolsInternal::WriteCategory(category); });
}

bool DBTools::UpdateTag(const CLibTag& tag) {
    return Guarded([&] { return DBToolsInternal::WriteTag(tag); });
}

bool DBTools::DeleteCategory(const GUID& category) {
    return Guarded([&] { return DBToolsInternal::DeleteCategoryRow(category); });
}

bool DBTools::DeleteTag(const GUID& tag) {
    return Guarded([&] { return DBToolsInternal::DeleteTagWithLinks(tag); });
}

bool DBTools::InsertTag2Item(const GUID& item, const GUID& tag) {
    return Guarded([&] { return DBToolsInternal::WriteTagLink(item, tag); });
}

bool DBTools::DeleteTagFromItem(const GUID& item, const GUID& tag) {
    return Guarded([&] { return DBToolsInternal::DeleteTagLink(item, tag); });
}

bool DBTools::MergeTag(const GUID& source, const GUID& target) {
    return Guarded([&] { return DBToolsInternal::MoveTagLinks(source, target); });
}

bool DBTools::QueryTagItems(const GUID& tag, CppSQLite3Query& query) {
    return GuardedRows(query, [&](CppSQLite3Query& rows) { return DBToolsInternal::QueryTagLinks(tag, rows); });
}

bool DBTools::UpdateCategories(std::span<const CTagCategory> categories) {
    return GuardedEach(categories, [&](const CTagCategory& category) { return WriteCategoryWithTags(category); });
}

bool DBTools::UpdateTags(const std::list<CLibTag>& tags) {
    return GuardedEach(tags, [&](const CLibTag& tag) { return WriteTag(tag); });
}

bool DBTools::DeleteCategories(std::span<const GUID> categories) {
    return GuardedEach(categories, [&](const GUID& category) { return DeleteCategoryRow(category); });
}

bool DBTools::DeleteTags(std::span<const GUID> tags) {
    return GuardedEach(tags, [&](const GUID& tag) { return DeleteTagWithLinks(tag); });
}

bool DBTools::InsertTags2Items(std::span<const GUID> items, std::span<const GUID> tags) {
    return GuardedEach(items, [&](const GUID& item) {
        return std::all_of(tags.begin(), tags.end(), [&](const GUID& tag) { return WriteTagLink(item, tag); });
    });
}

bool DBTools::DeleteTagsFromItems(std::span<const GUID> items, std::span<const GUID> tags) {
    return GuardedEach(items, [&](const GUID& item) {
        return std::all_of(tags.begin(), tags.end(), [&](const GUID& tag) { return DeleteTagLink(item, tag); });
    });
}

bool DBTools::MergeTags(std::span<const GUID> sources, const GUID& target) {
    return GuardedEach(sources, [&](const GUID& source) { return MoveTagLinks(source, target); });
}
