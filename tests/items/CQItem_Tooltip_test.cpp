#include "items/CQItem.h"
#include "tags/CLibTagsMgr.h"

#include <gtest/gtest.h>
#include <map>
#include <vector>

namespace {

class CQItem_Tooltip : public testing::Test {
protected:
    void SetUp() override { Empty(); }
    void TearDown() override { Empty(); }

    static void Empty() {
        std::map<DWORD, std::vector<CTagCategory>> nothing;
        CLibTagsMgr::GetLibTagMgr()->SetTagsToDefault(nothing);
    }
    // Stores a tag in a category of its own and answers its GUID.
    static GUID Store(unsigned nNumber, int nGallery, const char* pszName) {
        CTagCategory category;
        category.m_guid = GUID{nNumber, 1, 0, {}};
        category.m_nGallery = nGallery;
        CLibTag& tag = category.m_tags.emplace_back();
        tag.m_guid = GUID{nNumber, 2, 0, {}};
        tag.m_guidCategory = category.m_guid;
        tag.m_strName = pszName;
        CLibTagsMgr::GetLibTagMgr()->AddTag({category});
        return tag.m_guid;
    }

    CQItem m_item;
};

TEST_F(CQItem_Tooltip, NamesTheTagsInTheOrderOfTheItem) {
    const GUID beach = Store(1, 1, "Beach");
    const GUID sunset = Store(2, 1, "Sunset");
    const GUID rain = Store(3, 2, "Rain");
    for (const GUID& tag : {sunset, rain, beach}) m_item.AddLibTag(tag);
    EXPECT_EQ(m_item.GetTagTooltip(), "Sunset, Rain, Beach");
}

TEST_F(CQItem_Tooltip, OfOneTag_IsItsName) {
    m_item.AddLibTag(Store(1, 1, "Beach"));
    EXPECT_EQ(m_item.GetTagTooltip(), "Beach");
}

TEST_F(CQItem_Tooltip, LeavesOutTagsThatNobodyKnowsOrNamed) {
    m_item.AddLibTag(GUID{9, 9, 9, {}});
    m_item.AddLibTag(Store(1, 1, ""));
    m_item.AddLibTag(Store(2, 1, "Beach"));
    m_item.AddLibTag(GUID{8, 8, 8, {}});
    m_item.AddLibTag(Store(3, 1, "Rain"));
    EXPECT_EQ(m_item.GetTagTooltip(), "Beach, Rain");
}

TEST_F(CQItem_Tooltip, WithoutTags_IsEmpty) {
    EXPECT_EQ(m_item.GetTagTooltip(), "");
    m_item.AddLibTag(GUID{9, 9, 9, {}});
    EXPECT_EQ(m_item.GetTagTooltip(), "");
}

TEST_F(CQItem_Tooltip, FollowsTheStore) {
    const GUID beach = Store(1, 1, "Beach");
    m_item.AddLibTag(beach);
    CLibTag renamed;
    renamed.m_guid = beach;
    renamed.m_guidCategory = GUID{1, 1, 0, {}};
    renamed.m_strName = "Shore";
    CLibTagsMgr::GetLibTagMgr()->UpdateTag(1, {renamed});
    EXPECT_EQ(m_item.GetTagTooltip(), "Shore");
    m_item.RemoveLibTag(beach);
    EXPECT_EQ(m_item.GetTagTooltip(), "");
}

}  // namespace
