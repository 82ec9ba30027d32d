#include "db/Cells.h"
#include "db/Columns.h"
#include "db/DBToolsInternal.h"
#include "db/Sql.h"
#include "db/Statements.h"
#include "platform/text/CodePages.h"
#include "tags/TagRecords.h"

#include <algorithm>
#include <map>
#include <optional>

// Tag categories, tags and their links to items.

namespace sql = qfc::sql;
namespace column = qfc::column;

namespace {

// A column that is missing is an error here, not a default.
std::optional<GUID> ReadGuid(const CppSQLite3Query& query, const char* column) {
    return qfc::cell::Guid(query, query.fieldIndex(column));
}

CString ReadName(const CppSQLite3Query& query, const char* column) {
    return qfc::cell::NameText(query, query.fieldIndex(column), "");
}

// The stored size of the picture is never believed: the bytes that are there tell it.
void ReadPicture(const CppSQLite3Query& query, CLibTag& tag) {
    int length = 0;
    const unsigned char* bytes = query.getBlobField(column::kTagPictureData, length);
    if (bytes == nullptr || length <= 0) return;
    tag.m_pPicture = std::make_shared<const std::vector<BYTE>>(bytes, bytes + length);
    tag.m_nPictureSize = length;
}

// The bytes of the picture that are stored: no more than there are, whatever the size says.
std::span<const std::byte> PictureBytes(const CLibTag& tag) {
    if (tag.m_pPicture == nullptr || tag.m_nPictureSize <= 0) return {};
    const auto bytes = std::as_bytes(std::span(*tag.m_pPicture));
    return bytes.first(std::min(bytes.size(), static_cast<std::size_t>(tag.m_nPictureSize)));
}

std::list<CLibTag> ReadTagRows(CppSQLite3Query query) {
    std::list<CLibTag> tags;
    for (; !query.eof(); query.nextRow()) {
        const auto guid = ReadGuid(query, column::kTagGuid);
        const auto category = ReadGuid(query, column::kCategoryGuid);
        if (!guid || !category) continue;
        CLibTag& tag = tags.emplace_back();
        tag.m_guid = *guid;
        tag.m_guidCategory = *category;
        ReadPicture(query, tag);
        tag.m_strName = ReadName(query, column::kTagName);
        tag.m_nType = query.getIntField(column::kTagType);
        tag.m_bDeletable = query.getIntField(column::kTagDeletable) != 0;
        tag.m_bChecked = query.getIntField(column::kTagChecked) != 0;
    }
    return tags;
}

std::vector<CTagCategory> ReadCategoryRows(CppSQLite3Query query) {
    // Kept: a type that is missing reads as 1, unlike everything else.
    constexpr int kTypeOfNull = 1;
    std::vector<CTagCategory> categories;
    for (; !query.eof(); query.nextRow()) {
        const auto guid = ReadGuid(query, column::kCategoryGuid);
        if (!guid) continue;
        CTagCategory& category = categories.emplace_back();
        category.m_guid = *guid;
        category.m_strName = ReadName(query, column::kCategoryName);
        category.m_nGallery = query.getIntField(column::kCategoryGallery);
        category.m_bDeletable = query.getIntField(column::kCategoryDeletable) != 0;
        category.m_nType = query.getIntField(column::kCategoryType, kTypeOfNull);
    }
    return categories;
}

void Attach(std::list<CLibTag>& tags, std::vector<CTagCategory>& categories) {
    std::map<GUID, CTagCategory*> byGuid;
    for (CTagCategory& category : categories) byGuid.try_emplace(category.m_guid, &category);
    while (!tags.empty()) {
        const auto found = byGuid.find(tags.front().m_guidCategory);
        if (found == byGuid.end()) {
            tags.pop_front();
        } else {
            auto& target = found->second->m_tags;
            target.splice(target.end(), tags, tags.begin());
        }
    }
}

}  // namespace

bool DBToolsInternal::ReadTags(std::vector<CTagCategory>& categories) {
    return Attempt([&] {
        std::list<CLibTag> tags = ReadTagRows(Connection().execQuery(sql::kAllTags));
        std::vector<CTagCategory> found = ReadCategoryRows(Connection().execQuery(sql::kAllCategories));
        Attach(tags, found);
        categories = std::move(found);
    });
}

bool DBToolsInternal::WriteCategory(const CTagCategory& category) {
    return Run(sql::kWriteCategory, CDBStringHelper::ASCII2UTF_8(category.m_strName), category.m_nGallery,
               category.m_bDeletable ? 1 : 0, category.m_nType, category.m_guid);
}

bool DBToolsInternal::WriteCategoryWithTags(const CTagCategory& category) {
    return WriteCategory(category) && std::all_of(category.m_tags.begin(), category.m_tags.end(),
                                                  [&](const CLibTag& tag) { return WriteTag(tag); });
}

bool DBToolsInternal::WriteTag(const CLibTag& tag) {
    return Run(sql::kWriteTag, CDBStringHelper::ASCII2UTF_8(tag.m_strName), tag.m_guidCategory, tag.m_nType,
               tag.m_bChecked ? 1 : 0, tag.m_bDeletable ? 1 : 0, tag.m_nPictureSize, PictureBytes(tag), tag.m_guid);
}

bool DBToolsInternal::DeleteCategoryRow(const GUID& category) { return Run(sql::kDeleteCategory, category); }

bool DBToolsInternal::DeleteTagWithLinks(const GUID& tag) {
    return Run(sql::kDeleteTag, tag) && Run(sql::kDeleteTagLinks, tag);
}

bool DBToolsInternal::WriteTagLink(const GUID& item, const GUID& tag) { return Run(sql::kWriteTagLink, item, tag); }

bool DBToolsInternal::DeleteTagLink(const GUID& item, const GUID& tag) { return Run(sql::kDeleteTagLink, item, tag); }

bool DBToolsInternal::QueryTagLinks(const GUID& tag, CppSQLite3Query& query) {
    return Select(sql::kQueryTagItems, query, tag);
}

bool DBToolsInternal::MoveTagLinks(const GUID& source, const GUID& target) {
    if (!HasConnection()) return false;
    if (source == target) return true;
    if (!TakeTurn(sql::kTakeTurnAtTagLinks)) return false;
    std::vector<GUID> items;
    const bool bRead = Attempt([&] {
        items.clear();
        CppSQLite3Query query = qfc::statement::Compile(Connection(), sql::kQueryTagItems, source).execQuery();
        for (; !query.eof(); query.nextRow()) {
            if (const auto item = ReadGuid(query, column::kItemGuid)) items.push_back(*item);
        }
    });
    if (!bRead || !Run(sql::kDeleteTagLinks, source)) return false;
    for (const GUID& item : items) {
        if (!WriteTagLink(item, target)) return false;
    }
    return Run(sql::kDeleteTag, source);
}
