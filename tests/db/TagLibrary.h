#pragma once

#include "tags/TagRecords.h"
#include "tests/db/DbTestSupport.h"

#include <memory>
#include <utility>
#include <vector>

// Categories, tags and links for the tests of their tables.
namespace qfc::test {

using Rows = std::vector<RawDb::Row>;

inline const GUID kCategory = MakeGuid(100);
inline const GUID kBeach = MakeGuid(101);
inline const GUID kSunset = MakeGuid(102);
inline const GUID kItem = MakeGuid(1);
inline const GUID kOther = MakeGuid(2);

inline CLibTag MakeTag(const GUID& guid, const char* name, const GUID& category = kCategory) {
    CLibTag tag;
    tag.m_guid = guid;
    tag.m_guidCategory = category;
    tag.m_strName = name;
    return tag;
}

inline CTagCategory MakeCategory(const GUID& guid, const char* name, int gallery = 1) {
    CTagCategory category;
    category.m_guid = guid;
    category.m_strName = name;
    category.m_nGallery = gallery;
    return category;
}

inline CTagCategory MakePlaces() {
    CTagCategory category = MakeCategory(kCategory, "Places");
    category.m_tags = {MakeTag(kBeach, "beach"), MakeTag(kSunset, "sunset")};
    return category;
}

inline std::shared_ptr<const std::vector<BYTE>> MakePicture(std::size_t size) {
    auto picture = std::make_shared<std::vector<BYTE>>(size);
    for (std::size_t i = 0; i < size; ++i) (*picture)[i] = static_cast<BYTE>(i + 1);
    return picture;
}

// A library whose tag tables are empty.
class DBToolsTags : public LibraryTest {
protected:
    std::vector<CTagCategory> Load() {
        std::vector<CTagCategory> categories;
        EXPECT_TRUE(m_tools->LoadTags(categories));
        return categories;
    }
    Rows Links() const { return RawDb(m_path).Rows("select * from TAG_ITEM_RELATION_TABLE order by 1, 2"); }
    void Link(const GUID& item, const GUID& tag) { ASSERT_TRUE(m_tools->InsertTag2Item(item, tag)); }
    CLibTag LoadedTag() {
        const auto categories = Load();
        return categories.size() == 1 && categories[0].m_tags.size() == 1 ? categories[0].m_tags.front() : CLibTag();
    }
    bool SaveWithPicture(int size, std::shared_ptr<const std::vector<BYTE>> picture) {
        CTagCategory category = MakeCategory(kCategory, "Faces");
        category.m_tags = {MakeTag(kBeach, "Anna")};
        category.m_tags.front().m_nPictureSize = size;
        category.m_tags.front().m_pPicture = std::move(picture);
        return m_tools->SaveCategoriesAndTags({category});
    }
};

}  // namespace qfc::test
