#include "db/DBTools.h"
#include "tests/support/RawDb.h"
#include "tests/tags/TagTestSupport.h"

namespace {

using namespace qfc::test;

class DBToolsTagStore : public testing::Test {
protected:
    void SetUp() override {
        bool ok = false;
        m_pTools = std::make_unique<DBTools>(CString(m_path.c_str()), ok);
        ASSERT_TRUE(ok);
    }

    TempFolder m_folder;
    std::string m_path = m_folder / "library.db";
    std::unique_ptr<DBTools> m_pTools;
    std::shared_ptr<CLibTagsMgr> m_pStore = qfc::TagStorePeer::NewStore();
};

TEST_F(DBToolsTagStore, WhatIsStoredComesIntoItsGalleries) {
    ASSERT_TRUE(m_pTools->SaveCategoriesAndTags({MakeCategory(100, 1, "Places", {MakeTag(1, 100, "beach")}),
                                                 MakeCategory(200, 2, "Moods", {MakeTag(2, 200, "calm")})}));
    ASSERT_TRUE(m_pTools->LoadTags(*m_pStore));
    EXPECT_EQ(NamesOf(m_pStore->GetTagsData(1)), "Places");
    EXPECT_EQ(NamesOf(m_pStore->GetTagsData(2)[0].m_tags), "calm");
}

TEST_F(DBToolsTagStore, LoadingTwiceHoldsItTwice) {
    ASSERT_TRUE(m_pTools->SaveCategoriesAndTags({MakeCategory(100, 1, "Places")}));
    ASSERT_TRUE(m_pTools->LoadTags(*m_pStore));
    ASSERT_TRUE(m_pTools->LoadTags(*m_pStore));
    EXPECT_EQ(NamesOf(m_pStore->GetTagsData(1)), "Places, Places");
}

TEST_F(DBToolsTagStore, EmptyLibraryLeavesTheStoreEmpty) {
    EXPECT_TRUE(m_pTools->LoadTags(*m_pStore));
    EXPECT_TRUE(m_pStore->IsEmpty());
}

TEST_F(DBToolsTagStore, FailedLoadingLeavesTheStoreAsItWas) {
    ASSERT_TRUE(m_pTools->SaveCategoriesAndTags({MakeCategory(100, 1, "Places")}));
    RawDb(m_path).Exec("DROP TABLE LIB_TAG_TABLE");
    EXPECT_FALSE(m_pTools->LoadTags(*m_pStore));
    EXPECT_TRUE(m_pStore->IsEmpty());
}

}  // namespace
