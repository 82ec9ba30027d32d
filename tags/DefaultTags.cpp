#include "tags/DefaultTags.h"

#include "platform/os/Files.h"
#include "platform/os/GuidSource.h"
#include "platform/os/IniFile.h"
#include "tags/TagFiles.h"

#include <algorithm>
#include <string>

namespace qfc {
namespace {

// The space of names of all default tags; it never changes.
constexpr GUID kDefaultTagSpace{0x5A0E3C71, 0x94B2, 0x4D6F, {0xA8, 0x1D, 0x27, 0xC3, 0x6E, 0x90, 0xF4, 0x0B}};

// NULs part the names, since no name holds one.
std::string CategoryKey(int galleryId, std::string_view category) {
    return std::to_string(galleryId) + '\0' + std::string(category);
}

template <typename Records>
bool Holds(const Records& records, const GUID& guid) {
    return std::any_of(records.begin(), records.end(), [&](const auto& record) { return record.m_guid == guid; });
}

// Whether an earlier key reads the same: of both, the file answers the first one's value.
template <typename Iterator>
bool NamesOneOf(Iterator first, Iterator key) {
    const CString name(key->c_str());
    return std::any_of(first, key, [&](const std::string& other) { return name.CompareNoCase(other.c_str()) == 0; });
}

void AddTag(CTagCategory& category, const std::string& key, const TagSpecifier& specifier) {
    if (specifier.value.IsEmpty()) return;
    CLibTag tag;
    tag.m_guid = DefaultTagGuid(category.m_nGallery, key, specifier.written.View());
    if (Holds(category.m_tags, tag.m_guid)) return;
    tag.m_guidCategory = category.m_guid;
    tag.m_nType = specifier.type;
    tag.m_strName = g_GetTagTranslateName(specifier.value);
    tag.m_bDeletable = specifier.type != tag_type::kStatic;
    category.m_tags.push_back(std::move(tag));
}

CTagCategory MakeCategory(int galleryId, const std::string& section, const std::string& key, const LocalDate& today) {
    CTagCategory category;
    category.m_guid = DefaultCategoryGuid(galleryId, key);
    category.m_nGallery = galleryId;
    category.m_nType = CategoryTypeOfWord(key.c_str());
    category.m_strName = g_GetTagTranslateName(key.c_str());
    category.m_bDeletable = category.m_nType == category_type::kPlain;
    const std::string list = ReadProfileText(section, key, "", DefaultTagFilePath().GetString());
    for (const std::string_view part : SplitAnsi(list, ';')) AddTag(category, key, ReadTagSpecifier(part, today));
    return category;
}

}  // namespace

GUID DefaultCategoryGuid(int galleryId, std::string_view category) {
    return GuidOfName(kDefaultTagSpace, CategoryKey(galleryId, category));
}

GUID DefaultTagGuid(int galleryId, std::string_view category, std::string_view tag) {
    return GuidOfName(kDefaultTagSpace, CategoryKey(galleryId, category) + '\0' + std::string(tag));
}

std::map<DWORD, std::vector<CTagCategory>> BuildDefaultCategories(const CLibTagsMgr::CategoryTemplate& categories,
                                                                  const LocalDate& today) {
    std::map<DWORD, std::vector<CTagCategory>> built;
    if (!PathFileExistsA(DefaultTagFilePath())) return built;
    for (const auto& [dwGallery, content] : categories) {
        const auto& [section, keys] = content;
        std::vector<CTagCategory> made;
        for (auto key = keys.begin(); key != keys.end(); ++key) {
            if (key->empty() || NamesOneOf(keys.begin(), key)) continue;
            made.push_back(MakeCategory(static_cast<int>(dwGallery), section, *key, today));
        }
        if (!made.empty()) built.emplace(dwGallery, std::move(made));
    }
    return built;
}

}  // namespace qfc
