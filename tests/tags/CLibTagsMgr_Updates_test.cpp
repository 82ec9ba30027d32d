#include "tests/support/MemoryFaults.h"
#include "tests/tags/TagTestSupport.h"

#include <atomic>
#include <functional>
#include <new>
#include <thread>

namespace {

using namespace qfc::test;

constexpr DWORD kMedia = 1;

class TagStoreUpdates : public testing::Test {
protected:
    void SetUp() override { SetUpStore(); }
    void SetUpStore() {
        m_pStore = qfc::TagStorePeer::NewStore();
        m_pStore->AddTag({MakeCategory(100, kMedia, "Places", {MakeTag(11, 100, "beach"), MakeTag(12, 100, "lake")}),
                          MakeCategory(101, kMedia, "Moods", {MakeTag(13, 101, "calm")})});
    }
    std::string Categories(DWORD dwGallery = kMedia) { return NamesOf(m_pStore->GetTagsData(dwGallery)); }
    std::string Tags(DWORD dwGallery = kMedia) {
        std::list<CLibTag> tags;
        m_pStore->GetCurGalleryAllTag(dwGallery, tags);
        return NamesOf(tags);
    }

    std::shared_ptr<CLibTagsMgr> m_pStore;
};

TEST_F(TagStoreUpdates, AddedCategoriesGoToTheirOwnGalleries) {
    m_pStore->AddTag({MakeCategory(200, 2, "Genres"), MakeCategory(102, kMedia, "More")});
    EXPECT_EQ(Categories(2), "Genres");
    EXPECT_EQ(Categories(), "Places, Moods, More");
}

TEST_F(TagStoreUpdates, AddingTwiceHoldsItTwice) {
    m_pStore->AddTag({MakeCategory(100, kMedia, "Places")});
    EXPECT_EQ(Categories(), "Places, Moods, Places");
}

TEST_F(TagStoreUpdates, AddingNothingEntersNothing) {
    const auto store = qfc::TagStorePeer::NewStore();
    store->AddTag({});
    EXPECT_TRUE(store->IsEmpty());
}

TEST_F(TagStoreUpdates, AddingWithoutMemoryIsAllOrNothing) {
    const std::vector<CTagCategory> added{
        MakeCategory(200, 2, "Genres", {MakeTag(21, 200, "a name beyond the string")}),
        MakeCategory(102, kMedia, "More", {MakeTag(14, 102, "river")}), MakeCategory(103, kMedia, "Most"),
        MakeCategory(300, 3, "Styles")};
    for (int n = 1, failed = 1; failed != 0; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        SetUpStore();
        bool bThrown = false;
        {
            const MemoryFaults faults(n);
            try {
                m_pStore->AddTag(added);
            } catch (const std::bad_alloc&) {
                bThrown = true;
            }
            failed = faults.HasFailed() ? 1 : 0;
        }
        std::list<CLibTag> tags;
        ASSERT_EQ(m_pStore->GetAllTagList(tags), bThrown ? 3 : 5);
        ASSERT_EQ(Categories(), bThrown ? "Places, Moods" : "Places, Moods, More, Most");
        ASSERT_EQ(Categories(2), bThrown ? "" : "Genres");
        ASSERT_TRUE(failed != 0 || n > 8) << "hardly any allocation was seen";
    }
}

TEST_F(TagStoreUpdates, AddingWithoutMemoryEntersNoGallery) {
    const std::vector<CTagCategory> added{MakeCategory(200, 2, "Genres"), MakeCategory(300, 3, "Styles")};
    for (int n = 1, failed = 1; failed != 0; ++n) {
        const auto store = qfc::TagStorePeer::NewStore();
        const MemoryFaults faults(n);
        try {
            store->AddTag(added);
        } catch (const std::bad_alloc&) {
            ASSERT_TRUE(store->IsEmpty()) << "allocation " << n;
        }
        failed = faults.HasFailed() ? 1 : 0;
    }
}

TEST_F(TagStoreUpdates, UpdatedCategoryIsReplacedWhole) {
    CTagCategory category = MakeCategory(100, 9, "Countries", {MakeTag(19, 100, "France")}, qfc::category_type::kFace);
    category.m_bDeletable = false;
    EXPECT_EQ(m_pStore->UpdateCategory(kMedia, {category}), 1);
    EXPECT_EQ(Categories(), "Countries, Moods");
    EXPECT_EQ(Tags(), "France, calm");
    const CTagCategory stored = m_pStore->GetTagsData(kMedia)[0];
    EXPECT_EQ(stored.m_nGallery, 9);
    EXPECT_EQ(stored.m_nType, qfc::category_type::kFace);
    EXPECT_FALSE(stored.m_bDeletable);
}

TEST_F(TagStoreUpdates, EveryCategoryOfTheGuidIsReplaced) {
    m_pStore->AddTag({MakeCategory(100, kMedia, "Places again")});
    EXPECT_EQ(m_pStore->UpdateCategory(kMedia, {MakeCategory(100, kMedia, "Countries")}), 1);
    EXPECT_EQ(Categories(), "Countries, Moods, Countries");
}

TEST_F(TagStoreUpdates, NewCategoryIsAppended) {
    EXPECT_EQ(m_pStore->UpdateCategory(kMedia, {MakeCategory(102, kMedia, "More"), MakeCategory(103, kMedia, "Most")}),
              1);
    EXPECT_EQ(Categories(), "Places, Moods, More, Most");
}

TEST_F(TagStoreUpdates, NewCategoryEntersAnUnknownGallery) {
    EXPECT_EQ(m_pStore->UpdateCategory(5, {MakeCategory(102, kMedia, "More")}), 1);
    EXPECT_EQ(Categories(5), "More");
}

TEST_F(TagStoreUpdates, CategoryOfAnotherGalleryIsNotTouched) {
    EXPECT_EQ(m_pStore->UpdateCategory(5, {MakeCategory(100, 5, "Elsewhere")}), 1);
    EXPECT_EQ(Categories(), "Places, Moods");
    EXPECT_EQ(Categories(5), "Elsewhere");
}

TEST_F(TagStoreUpdates, UpdatedTagIsOverwrittenWhole) {
    CLibTag tag = MakeTag(11, 100, "coast", qfc::tag_type::kStatic, true);
    tag.m_bDeletable = false;
    tag.m_nPictureSize = 2;
    tag.m_pPicture = std::make_shared<const std::vector<BYTE>>(2, BYTE{5});
    tag.m_values = {1, -2, INT64_MAX};
    m_pStore->UpdateTag(kMedia, {tag});
    EXPECT_EQ(Tags(), "coast, lake, calm");
    CLibTag stored;
    ASSERT_EQ(m_pStore->GetTagByName(kMedia, "coast", stored), 1);
    EXPECT_EQ(stored.m_nType, qfc::tag_type::kStatic);
    EXPECT_TRUE(stored.m_bChecked);
    EXPECT_FALSE(stored.m_bDeletable);
    EXPECT_EQ(stored.m_nPictureSize, 2);
    EXPECT_EQ(stored.m_pPicture, tag.m_pPicture);
    EXPECT_EQ(stored.m_values, tag.m_values);
}

TEST_F(TagStoreUpdates, EveryTagOfTheGuidIsOverwritten) {
    m_pStore->AddTag({MakeCategory(102, kMedia, "Twice",
                                   {MakeTag(14, 102, "river"), MakeTag(15, 102, "sea"), MakeTag(14, 102, "river")})});
    m_pStore->UpdateTag(kMedia, {MakeTag(14, 102, "stream")});
    EXPECT_EQ(Tags(), "beach, lake, calm, stream, sea, stream");
}

TEST_F(TagStoreUpdates, TagIsOverwrittenOrAppendedInEveryCategoryOfItsGuid) {
    m_pStore->AddTag({MakeCategory(100, kMedia, "Places again", {MakeTag(11, 100, "beach")})});
    m_pStore->UpdateTag(kMedia, {MakeTag(11, 100, "coast"), MakeTag(12, 100, "pond"), MakeTag(19, 100, "forest")});
    EXPECT_EQ(Tags(), "coast, pond, forest, calm, coast, pond, forest");
}

TEST_F(TagStoreUpdates, NewTagIsAppendedToItsCategory) {
    m_pStore->UpdateTag(kMedia, {MakeTag(19, 100, "forest")});
    EXPECT_EQ(Tags(), "beach, lake, forest, calm");
}

TEST_F(TagStoreUpdates, TagOfAnUnknownCategoryIsDropped) {
    m_pStore->UpdateTag(kMedia, {MakeTag(19, 999, "nowhere"), MakeTag(11, 999, "nowhere either")});
    m_pStore->UpdateTag(7, {MakeTag(11, 100, "in no gallery")});
    EXPECT_EQ(Tags(), "beach, lake, calm");
}

// Its GUID is looked for in the category that it names; where it stood before it stays.
TEST_F(TagStoreUpdates, TagThatNamesAnotherCategoryStandsInBoth) {
    m_pStore->UpdateTag(kMedia, {MakeTag(11, 101, "moved")});
    EXPECT_EQ(Tags(), "beach, lake, calm, moved");
}

TEST_F(TagStoreUpdates, DeletedCategoriesLeaveTheOrderOfTheRest) {
    m_pStore->AddTag({MakeCategory(102, kMedia, "More"), MakeCategory(100, kMedia, "Places again")});
    EXPECT_EQ(m_pStore->DeleteCategory(kMedia, {MakeGuid(100), MakeGuid(999)}), 1);
    EXPECT_EQ(Categories(), "Moods, More");
    EXPECT_EQ(m_pStore->DeleteCategory(2, {MakeGuid(101)}), 1);
    EXPECT_EQ(Categories(), "Moods, More");
}

TEST_F(TagStoreUpdates, DeletedTagLeavesEveryCategory) {
    m_pStore->AddTag({MakeCategory(102, kMedia, "More", {MakeTag(11, 102, "beach"), MakeTag(14, 102, "river")})});
    EXPECT_EQ(m_pStore->DeleteTag(kMedia, {MakeGuid(11), MakeGuid(999)}), 1);
    EXPECT_EQ(Tags(), "lake, calm, river");
    EXPECT_EQ(m_pStore->DeleteTag(2, {MakeGuid(12)}), 1);
    EXPECT_EQ(Tags(), "lake, calm, river");
}

TEST_F(TagStoreUpdates, DefaultsAreTakenOverByExchange) {
    std::map<DWORD, std::vector<CTagCategory>> data;
    data[3] = {MakeCategory(300, 3, "Default")};
    m_pStore->SetTagsToDefault(data);
    EXPECT_TRUE(data.empty());
    EXPECT_EQ(Categories(3), "Default");
    EXPECT_EQ(Categories(), "");
    m_pStore->SetTagsToDefault(data);
    EXPECT_TRUE(m_pStore->IsEmpty());
}

// Kept: it takes no lock, so it goes on under one.
TEST_F(TagStoreUpdates, DefaultsAreSetWithoutTheMutex) {
    const auto lock = qfc::TagStorePeer::Lock(*m_pStore);
    std::map<DWORD, std::vector<CTagCategory>> data;
    m_pStore->SetTagsToDefault(data);
    EXPECT_TRUE(m_pStore->IsEmpty());
}

TEST_F(TagStoreUpdates, EveryUpdateWaitsForTheMutex) {
    const std::vector<std::function<void()>> updates{
        [&] { m_pStore->AddTag({}); },
        [&] { m_pStore->UpdateCategory(kMedia, {}); },
        [&] { m_pStore->UpdateTag(kMedia, {}); },
        [&] { m_pStore->DeleteCategory(kMedia, {}); },
        [&] { m_pStore->DeleteTag(kMedia, {}); },
    };
    for (const auto& update : updates) {
        auto lock = qfc::TagStorePeer::Lock(*m_pStore);
        std::atomic<bool> isDone = false;
        std::thread other([&] {
            update();
            isDone = true;
        });
        for (int i = 0; i < 1000; ++i) std::this_thread::yield();
        EXPECT_FALSE(isDone);
        lock.unlock();
        other.join();
        EXPECT_TRUE(isDone);
        EXPECT_TRUE(qfc::TagStorePeer::TryLock(*m_pStore).owns_lock()) << "the mutex is still held";
    }
}

TEST_F(TagStoreUpdates, UpdatesOfManyThreadsAllArrive) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([this, number] {
            for (int i = 0; i < 200; ++i) {
                const int id = 1000 + number * 1000 + i;
                m_pStore->UpdateTag(kMedia, {MakeTag(id, 100, "t")});
                m_pStore->UpdateCategory(kMedia, {MakeCategory(id + 10000, kMedia, "c")});
                if (i % 2 == 0) m_pStore->DeleteTag(kMedia, {MakeGuid(id)});
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::list<CLibTag> tags;
    EXPECT_EQ(m_pStore->GetCurGalleryAllTag(kMedia, tags), 3 + 4 * 100);
    EXPECT_EQ(m_pStore->GetTagsData(kMedia).size(), 2U + 4 * 200);
}

}  // namespace
