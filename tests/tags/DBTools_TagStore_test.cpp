#include "db/DBTools.h"
#include "tests/support/MemoryFaults.h"
#include "tests/support/RawDb.h"
#include "tests/support/SqlTrace.h"
#include "tests/tags/TagTestSupport.h"

#include <thread>

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

TEST_F(DBToolsTagStore, LoadingWithoutMemoryIsAllOrNothing) {
    ASSERT_TRUE(m_pTools->SaveCategoriesAndTags({MakeCategory(100, 1, "Places", {MakeTag(1, 100, "beach")}),
                                                 MakeCategory(101, 1, "Faces", {MakeTag(2, 101, "Anna")}),
                                                 MakeCategory(200, 2, "Moods", {MakeTag(3, 200, "calm")})}));
    for (const bool sticky : {false, true}) {
        for (int n = 1, failed = 1; failed != 0; ++n) {
            const auto store = qfc::TagStorePeer::NewStore();
            bool bLoaded = false;
            {
                const MemoryFaults faults(n, sticky);
                ASSERT_NO_THROW(bLoaded = m_pTools->LoadTags(*store)) << "allocation " << n;
                failed = faults.HasFailed() ? 1 : 0;
            }
            std::list<CLibTag> tags;
            ASSERT_EQ(store->GetAllTagList(tags), bLoaded ? 3 : 0) << "allocation " << n;
            ASSERT_EQ(store->IsEmpty(), !bLoaded) << "allocation " << n;
            ASSERT_TRUE(failed != 0 || (bLoaded && n > 20)) << "hardly any allocation was seen";
        }
    }
}

// Whoever holds the store may use the database: the two are never held together.
TEST_F(DBToolsTagStore, StoreIsEnteredBehindTheTransaction) {
    ASSERT_TRUE(m_pTools->SaveCategoriesAndTags({MakeCategory(100, 1, "Places")}));
    m_pTools.reset();
    const SqlTrace trace;
    SetUp();
    auto lock = qfc::TagStorePeer::Lock(*m_pStore);
    const int before = trace.CountStartingWith("END");
    bool isLoaded = false;
    std::thread other([&] { isLoaded = m_pTools->LoadTags(*m_pStore); });
    while (trace.CountStartingWith("END") == before) std::this_thread::yield();
    EXPECT_TRUE(m_pTools->UpdateCategory(MakeCategory(101, 1, "Moods")));
    lock.unlock();
    other.join();
    EXPECT_TRUE(isLoaded);
    EXPECT_EQ(NamesOf(m_pStore->GetTagsData(1)), "Places");
}

}  // namespace
