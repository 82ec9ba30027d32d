#include "tests/service/EntriesTagsTest.h"
#include "tests/support/ServicePeer.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace {

using Manager = QFCLibraryManager;
using qfc::test::DumpOf;
using qfc::test::EntriesTags;
using qfc::test::RawDb;

// --- Results -----------------------------------------------------------------------------------------------------

TEST_F(EntriesTags, WhileStopped_EveryFunctionIsZeroAtOnceAndQueuesNothing) {
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    CQItem item;
    m_pFirst = &item;
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nScene=String@Day\n");
    const std::string before = DumpOf(DatabaseFile()) + StoreText();
    for (const auto& [name, call] : EveryFunction()) EXPECT_EQ(call(), 0) << name;
    EXPECT_EQ(qfc::ServicePeer::IsSyncEmpty(), 1);
    ASSERT_EQ(Manager::fnStartService(), 1);
    EXPECT_EQ(Manager::fnUpdateTag(kMedia, {}), 1);  // Behind whatever had been queued.
    EXPECT_EQ(DumpOf(DatabaseFile()) + StoreText(), before);
    EXPECT_EQ(TagsOf(item), "");
}

TEST_F(EntriesTags, AWriteThatTheDatabaseRefuses_IsNotSeenInAnyResultAndChangesNothing) {
    ASSERT_EQ(Manager::fnInsertLibTag2Item({m_pFirst}, {TagGuid(3), TagGuid(4)}), 1);
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nScene=String@Day\n");
    for (const char* table : {"LIB_TAG_CATEGORY_TABLE", "LIB_TAG_TABLE", "TAG_ITEM_RELATION_TABLE"}) {
        for (const char* change : {"insert", "delete"}) {
            const std::string trigger = std::string(change) + table;
            RawDb(DatabaseFile())
                .Exec("create trigger " + trigger + " before " + change + " on " + table +
                      " begin select raise(fail, 'refused'); end");
        }
    }
    for (const auto& [name, call] : EveryFunction()) {
        if (name == std::string("fnLoadLibTag")) continue;  // It writes nothing.
        const std::string before = Everything();
        EXPECT_EQ(call(), 1) << name;
        EXPECT_EQ(Everything(), before) << name;
    }
}

TEST_F(EntriesTags, ALoadThatCannotRead_IsNotSeenInTheResultAndAddsNothing) {
    RawDb(DatabaseFile()).Exec("alter table LIB_TAG_CATEGORY_TABLE rename to ELSEWHERE");
    const std::string before = StoreText();
    EXPECT_EQ(Manager::fnLoadLibTag(), 1);
    EXPECT_EQ(StoreText(), before);
}

TEST_F(EntriesTags, NothingToDo_IsOneAndChangesNothing) {
    const std::string before = Everything();
    EXPECT_EQ(Manager::fnUpdateTagCategory(kMedia, {}), 1);
    EXPECT_EQ(Manager::fnDeleteTagCategory(kMedia, {}), 1);
    EXPECT_EQ(Manager::fnUpdateTag(kMedia, {}), 1);
    EXPECT_EQ(Manager::fnDeleteTag(kMedia, {}), 1);
    EXPECT_EQ(Manager::fnInsertLibTag2Item({}, {TagGuid(1)}), 1);
    EXPECT_EQ(Manager::fnInsertLibTag2Item({m_pFirst}, {}), 1);
    EXPECT_EQ(Manager::fnDeleteLibTagFromItem({}, {TagGuid(1)}), 1);
    EXPECT_EQ(Manager::fnDeleteLibTagFromItem({m_pFirst}, {}), 1);
    EXPECT_EQ(Manager::fnMergeFaceTag(kMedia, TagGuid(1), {}), 1);
    EXPECT_EQ(Everything(), before);
}

TEST_F(EntriesTags, FromInsideACallback_EveryFunctionIsRefused) {
    std::vector<std::pair<std::string, int>> results;
    Listen("refused", [&](QFCLibCallbackParam*) {
        for (const auto& [name, call] : EveryFunction()) results.emplace_back(name, call());
        return 1;
    });
    const std::string before = Everything();
    CQItem item;
    CQGallery nowhere;
    ASSERT_EQ(Manager::fnAddItemAsync(qfc::ToHandle(&nowhere), {"Nowhere"}, &item, 0), 1);
    Settle();
    EXPECT_GE(results.size(), 9u);
    for (const auto& [name, result] : results) EXPECT_EQ(result, 0) << name;
    EXPECT_EQ(Everything(), before);
}

TEST_F(EntriesTags, NoFunctionRaisesCallbacks) {
    int nCalls = 0;
    Listen("count", [&](QFCLibCallbackParam*) { return ++nCalls; });
    for (const auto& [name, call] : EveryFunction()) EXPECT_EQ(call(), 1) << name;
    EXPECT_EQ(nCalls, 0);
}

// --- Items -------------------------------------------------------------------------------------------------------

TEST_F(EntriesTags, InsertTag2Item_LinksEveryTagToEveryItemInTheOrderGiven) {
    EXPECT_EQ(Manager::fnInsertLibTag2Item({m_pSecond, m_pFirst}, {TagGuid(3), TagGuid(1)}), 1);
    EXPECT_EQ(TagsOf(*m_pFirst), "3 1 ");
    EXPECT_EQ(TagsOf(*m_pSecond), "3 1 ");
    for (const CQItem* const pItem : {m_pFirst, m_pSecond}) {
        EXPECT_TRUE(IsLinked(*pItem, 1));
        EXPECT_TRUE(IsLinked(*pItem, 3));
    }
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 4);
}

TEST_F(EntriesTags, InsertTag2Item_TwiceLeavesOneLinkAndOneTag) {
    EXPECT_EQ(Manager::fnInsertLibTag2Item({m_pFirst, m_pFirst}, {TagGuid(1), TagGuid(1)}), 1);
    EXPECT_EQ(Manager::fnInsertLibTag2Item({m_pFirst}, {TagGuid(1)}), 1);
    EXPECT_EQ(TagsOf(*m_pFirst), "1 ");
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 1);
}

TEST_F(EntriesTags, InsertTag2Item_PassesOverNulls) {
    EXPECT_EQ(Manager::fnInsertLibTag2Item({nullptr, m_pFirst, nullptr, m_pSecond}, {TagGuid(1)}), 1);
    EXPECT_EQ(TagsOf(*m_pFirst), "1 ");
    EXPECT_EQ(TagsOf(*m_pSecond), "1 ");
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 2);
}

TEST_F(EntriesTags, InsertTag2Item_OfNullsOnly_AddsNoTag) {
    const std::string before = Everything();
    EXPECT_EQ(Manager::fnInsertLibTag2Item({nullptr, nullptr}, {TagGuid(1)}), 1);
    EXPECT_EQ(Everything(), before);
}

TEST_F(EntriesTags, DeleteTagFromItem_TakesEveryTagFromEveryItem) {
    ASSERT_EQ(Manager::fnInsertLibTag2Item({m_pFirst, m_pSecond}, {TagGuid(1), TagGuid(2), TagGuid(3)}), 1);
    EXPECT_EQ(Manager::fnDeleteLibTagFromItem({nullptr, m_pFirst, m_pSecond}, {TagGuid(3), TagGuid(1)}), 1);
    EXPECT_EQ(TagsOf(*m_pFirst), "2 ");
    EXPECT_EQ(TagsOf(*m_pSecond), "2 ");
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 2);
}

TEST_F(EntriesTags, DeleteTagFromItem_LeavesOtherItemsAlone) {
    ASSERT_EQ(Manager::fnInsertLibTag2Item({m_pFirst, m_pSecond}, {TagGuid(1)}), 1);
    EXPECT_EQ(Manager::fnDeleteLibTagFromItem({m_pFirst}, {TagGuid(1), TagGuid(2)}), 1);
    EXPECT_EQ(TagsOf(*m_pFirst), "");
    EXPECT_EQ(TagsOf(*m_pSecond), "1 ");
    EXPECT_EQ(CountLinks(*m_pFirst), 0);
    EXPECT_TRUE(IsLinked(*m_pSecond, 1));
}

TEST_F(EntriesTags, TagsOfItems_AreThereAfterARestart) {
    ASSERT_EQ(Manager::fnInsertLibTag2Item({m_pFirst}, {TagGuid(1), TagGuid(3)}), 1);
    const GUID guid = m_pFirst->GetUniqueID();
    Restart();
    CQItem* const pItem = m_pClips->GetItemByGUID(guid);
    ASSERT_NE(pItem, nullptr);
    EXPECT_EQ(pItem->IsTagExist(TagGuid(1)), 1);
    EXPECT_EQ(pItem->IsTagExist(TagGuid(3)), 1);
}

// --- Categories --------------------------------------------------------------------------------------------------

TEST_F(EntriesTags, UpdateCategory_ReplacesKnownOnesWholeAndAppendsNewOnes) {
    EXPECT_EQ(Manager::fnUpdateTagCategory(kMedia, {Category(30, "Weather", {{5, "Rain"}}),
                                                    Category(10, "Spots", {{2, "Sunset"}, {6, "Hill"}})}),
              1);
    EXPECT_EQ(StoreText(), "Spots(Sunset Hill) People(Anna Ben) Weather(Rain) ");
    EXPECT_EQ(CountRows("LIB_TAG_CATEGORY_TABLE"), 3);
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), 6);  // Beach stays stored: its category was only replaced in memory.
}

TEST_F(EntriesTags, UpdateCategory_FilesThemUnderTheKey_WhateverGalleryTheyName) {
    EXPECT_EQ(Manager::fnUpdateTagCategory(kSounds, {Category(30, "Weather", {{5, "Rain"}}, kMedia)}), 1);
    EXPECT_EQ(StoreText(kSounds), "Weather(Rain) ");
    EXPECT_EQ(StoreText(), "Places(Beach Sunset) People(Anna Ben) ");
    EXPECT_EQ(CountRows("LIB_TAG_CATEGORY_TABLE where CATEGORY_GALLERY = 1"), 3);
}

TEST_F(EntriesTags, UpdateCategory_TakesTagsThatNameNoCategoryForItsOwn) {
    CTagCategory weather = Category(30, "Weather", {{5, "Rain"}, {6, "Snow"}});
    for (CLibTag& tag : weather.m_tags) tag.m_guidCategory = GUID_NULL;
    EXPECT_EQ(Manager::fnUpdateTagCategory(kMedia, {weather}), 1);
    const std::vector<CTagCategory> stored = Store().GetTagsData(kMedia);
    for (const CLibTag& tag : stored.back().m_tags) EXPECT_EQ(tag.m_guidCategory, TagGuid(30));
    EmptyStore();
    Restart();
    ASSERT_EQ(Manager::fnLoadLibTag(), 1);
    EXPECT_EQ(StoreText(), "Places(Beach Sunset) People(Anna Ben) Weather(Rain Snow) ");
}

// The row goes where the tag says.
TEST_F(EntriesTags, UpdateCategory_LeavesTagsOfAnotherCategoryToIt) {
    CTagCategory places = Category(10, "Places", {{5, "Hill"}});
    places.m_tags.front().m_guidCategory = TagGuid(20);
    EXPECT_EQ(Manager::fnUpdateTagCategory(kMedia, {places}), 1);
    EXPECT_EQ(StoreText(), "Places(Hill) People(Anna Ben) ");
    EXPECT_EQ(CountRows("LIB_TAG_TABLE where TAG_NAME = 'Hill' and CATEGORY_GUID = " + Literal(TagGuid(20))), 1);
}

TEST_F(EntriesTags, DeleteCategory_TakesTheWholeGroupAndLeavesTheirTagsStored) {
    EXPECT_EQ(Manager::fnDeleteTagCategory(kMedia, {Category(20, "any"), Category(10, "name")}), 1);
    EXPECT_EQ(StoreText(), "");
    EXPECT_EQ(CountRows("LIB_TAG_CATEGORY_TABLE"), 0);
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), 4);
}

TEST_F(EntriesTags, DeleteCategory_UnderAnotherKey_LeavesTheStore) {
    EXPECT_EQ(Manager::fnDeleteTagCategory(kSounds, {Category(10, "Places")}), 1);
    EXPECT_EQ(StoreText(), "Places(Beach Sunset) People(Anna Ben) ");
    EXPECT_EQ(CountRows("LIB_TAG_CATEGORY_TABLE"), 1);
}

// --- Tags --------------------------------------------------------------------------------------------------------

TEST_F(EntriesTags, UpdateTag_OverwritesKnownOnesAndAppendsNewOnes) {
    CLibTag beach = Tag(1, "Shore", 10);
    beach.m_bChecked = true;
    EXPECT_EQ(Manager::fnUpdateTag(kMedia, {beach, Tag(5, "Hill", 10)}), 1);
    EXPECT_EQ(StoreText(), "Places(Shore Sunset Hill) People(Anna Ben) ");
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), 5);
    EXPECT_EQ(CountRows("LIB_TAG_TABLE where TAG_NAME = 'Shore' and TAG_CHECKED = 1"), 1);
}

TEST_F(EntriesTags, UpdateTag_OfACategoryThatTheKeyDoesNotHave_IsStoredOnly) {
    EXPECT_EQ(Manager::fnUpdateTag(kSounds, {Tag(5, "Hill", 10)}), 1);
    EXPECT_EQ(StoreText(), "Places(Beach Sunset) People(Anna Ben) ");
    EXPECT_EQ(CountRows("LIB_TAG_TABLE where TAG_NAME = 'Hill'"), 1);
}

TEST_F(EntriesTags, DeleteTag_TakesTheWholeGroupWithItsLinks_AndItemsInMemoryKeepTheirs) {
    ASSERT_EQ(Manager::fnInsertLibTag2Item({m_pFirst}, {TagGuid(1), TagGuid(2), TagGuid(3)}), 1);
    EXPECT_EQ(Manager::fnDeleteTag(kMedia, {Tag(3, "", 20), Tag(1, "", 10)}), 1);
    EXPECT_EQ(StoreText(), "Places(Sunset) People(Ben) ");
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), 2);
    EXPECT_EQ(CountLinks(*m_pFirst), 1);
    EXPECT_TRUE(IsLinked(*m_pFirst, 2));
    EXPECT_EQ(TagsOf(*m_pFirst), "1 2 3 ");
}

TEST_F(EntriesTags, MergeTag_GivesTheTargetToEveryItemAndRemovesTheSources) {
    ASSERT_EQ(Manager::fnInsertLibTag2Item({m_pFirst}, {TagGuid(1), TagGuid(2)}), 1);
    ASSERT_EQ(Manager::fnInsertLibTag2Item({m_pSecond}, {TagGuid(4)}), 1);
    EXPECT_EQ(Manager::fnMergeFaceTag(kMedia, TagGuid(3), {TagGuid(1), TagGuid(4)}), 1);
    EXPECT_EQ(StoreText(), "Places(Sunset) People(Anna) ");
    EXPECT_TRUE(IsLinked(*m_pFirst, 2));
    EXPECT_TRUE(IsLinked(*m_pFirst, 3));
    EXPECT_TRUE(IsLinked(*m_pSecond, 3));
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 3);
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), 2);
    EXPECT_EQ(TagsOf(*m_pFirst), "1 2 ");
}

TEST_F(EntriesTags, MergeTag_OfTwoTagsOfOneItem_LeavesOneLink) {
    ASSERT_EQ(Manager::fnInsertLibTag2Item({m_pFirst}, {TagGuid(1), TagGuid(2), TagGuid(3)}), 1);
    EXPECT_EQ(Manager::fnMergeFaceTag(kMedia, TagGuid(3), {TagGuid(2), TagGuid(1)}), 1);
    EXPECT_EQ(CountLinks(*m_pFirst), 1);
    EXPECT_TRUE(IsLinked(*m_pFirst, 3));
}

TEST_F(EntriesTags, MergeTag_WithTheTargetAmongTheSources_KeepsTheTarget) {
    ASSERT_EQ(Manager::fnInsertLibTag2Item({m_pFirst}, {TagGuid(3), TagGuid(4)}), 1);
    EXPECT_EQ(Manager::fnMergeFaceTag(kMedia, TagGuid(3), {TagGuid(3), TagGuid(4), TagGuid(3)}), 1);
    EXPECT_EQ(StoreText(), "Places(Beach Sunset) People(Anna) ");
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), 3);
    EXPECT_TRUE(IsLinked(*m_pFirst, 3));
    EXPECT_EQ(CountLinks(*m_pFirst), 1);
}

TEST_F(EntriesTags, MergeTag_IntoItselfAlone_ChangesNothing) {
    ASSERT_EQ(Manager::fnInsertLibTag2Item({m_pFirst}, {TagGuid(3)}), 1);
    const std::string before = Everything();
    EXPECT_EQ(Manager::fnMergeFaceTag(kMedia, TagGuid(3), {TagGuid(3)}), 1);
    EXPECT_EQ(Everything(), before);
}

TEST_F(EntriesTags, MergeTag_UnderAnotherKey_LeavesTheStore) {
    EXPECT_EQ(Manager::fnMergeFaceTag(kSounds, TagGuid(3), {TagGuid(4)}), 1);
    EXPECT_EQ(StoreText(), "Places(Beach Sunset) People(Anna Ben) ");
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), 3);
}

// --- The whole store ---------------------------------------------------------------------------------------------

TEST_F(EntriesTags, Load_BringsBackWhatWasStored) {
    EmptyStore();
    Restart();
    EXPECT_EQ(Manager::fnLoadLibTag(), 1);
    EXPECT_EQ(StoreText(), "Places(Beach Sunset) People(Anna Ben) ");
}

TEST_F(EntriesTags, Load_AppendsToWhatTheStoreHolds) {
    EXPECT_EQ(Manager::fnLoadLibTag(), 1);
    EXPECT_EQ(StoreText(), "Places(Beach Sunset) People(Anna Ben) Places(Beach Sunset) People(Anna Ben) ");
}

TEST_F(EntriesTags, Load_OfALibraryWithoutCategories_LeavesAnEmptyStore) {
    RawDb(DatabaseFile()).Exec("delete from LIB_TAG_CATEGORY_TABLE");
    EmptyStore();
    EXPECT_EQ(Manager::fnLoadLibTag(), 1);
    EXPECT_TRUE(Store().IsEmpty());
}

}  // namespace
