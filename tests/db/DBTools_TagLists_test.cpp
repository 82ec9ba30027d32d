// Many categories and tags in one call, and their deletion.
#include "tests/db/TagLibrary.h"
#include "tests/support/SqlTrace.h"

namespace {

using namespace qfc::test;

using DBToolsTagLists = DBToolsTags;

// --- Writing many ---

TEST_F(DBToolsTagLists, FailureInTheMiddleOfManyRollsAllBack) {
    Exec(
        "CREATE TRIGGER refuse BEFORE INSERT ON LIB_TAG_TABLE WHEN NEW.TAG_NAME = 'bad'"
        " BEGIN SELECT RAISE(FAIL, 'no'); END");
    CTagCategory bad = MakeCategory(MakeGuid(120), "Bad");
    bad.m_tags = {MakeTag(MakeGuid(121), "good", bad.m_guid), MakeTag(MakeGuid(122), "bad", bad.m_guid)};
    const std::vector<CTagCategory> categories{MakePlaces(), bad};
    const std::string before = DumpOf(m_path);
    EXPECT_FALSE(m_tools->SaveCategoriesAndTags({categories.begin(), categories.end()}));
    EXPECT_FALSE(m_tools->UpdateCategories(categories));
    EXPECT_FALSE(m_tools->UpdateTags(bad.m_tags));
    EXPECT_EQ(DumpOf(m_path), before);
}

TEST_F(DBToolsTagLists, SavingStopsAtTheFirstFailure) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    Exec("DROP TABLE LIB_TAG_CATEGORY_TABLE");
    trace.Clear();
    EXPECT_FALSE(m_tools->SaveCategoriesAndTags({MakePlaces(), MakePlaces()}));
    EXPECT_EQ(trace.CountStartingWith("REPLACE"), 1);
    EXPECT_EQ(trace.CountStartingWith("ROLLBACK"), 1);
}

TEST_F(DBToolsTagLists, NothingToDoIsTrue) {
    EXPECT_TRUE(m_tools->SaveCategoriesAndTags({}));
    EXPECT_TRUE(m_tools->UpdateCategories({}));
    EXPECT_TRUE(m_tools->UpdateTags({}));
    EXPECT_TRUE(m_tools->DeleteCategories({}));
    EXPECT_TRUE(m_tools->DeleteTags({}));
    EXPECT_TRUE(m_tools->InsertTags2Items({}, {&kBeach, 1}));
    EXPECT_TRUE(m_tools->InsertTags2Items({&kItem, 1}, {}));
    EXPECT_TRUE(m_tools->DeleteTagsFromItems({}, {&kBeach, 1}));
    EXPECT_TRUE(m_tools->MergeTags({}, kBeach));
    EXPECT_TRUE(Links().empty());
}

TEST_F(DBToolsTagLists, WithoutADatabaseEverythingIsFalse) {
    bool ok = true;
    DBTools closed(CString((m_folder / "no/such/folder.db").c_str()), ok);
    ASSERT_FALSE(ok);
    std::vector<CTagCategory> categories;
    CppSQLite3Query query;
    EXPECT_FALSE(closed.LoadTags(categories));
    EXPECT_FALSE(closed.SaveCategoriesAndTags({}));
    EXPECT_FALSE(closed.UpdateCategory(MakePlaces()));
    EXPECT_FALSE(closed.UpdateTag(MakeTag(kBeach, "b")));
    EXPECT_FALSE(closed.DeleteCategory(kCategory));
    EXPECT_FALSE(closed.DeleteTag(kBeach));
    EXPECT_FALSE(closed.InsertTag2Item(kItem, kBeach));
    EXPECT_FALSE(closed.DeleteTagFromItem(kItem, kBeach));
    EXPECT_FALSE(closed.MergeTag(kBeach, kSunset));
    EXPECT_FALSE(closed.MergeTag(kBeach, kBeach));
    EXPECT_FALSE(closed.QueryTagItems(kBeach, query));
    EXPECT_FALSE(closed.UpdateCategories({}));
    EXPECT_FALSE(closed.UpdateTags({}));
    EXPECT_FALSE(closed.DeleteCategories({}));
    EXPECT_FALSE(closed.DeleteTags({}));
    EXPECT_FALSE(closed.InsertTags2Items({}, {}));
    EXPECT_FALSE(closed.DeleteTagsFromItems({}, {}));
    EXPECT_FALSE(closed.MergeTags({}, kBeach));
}

// --- Deleting ---

TEST_F(DBToolsTagLists, DeletedCategoryLeavesItsTagsAndTheirLinks) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    Link(kItem, kBeach);
    ASSERT_TRUE(m_tools->DeleteCategory(kCategory));
    EXPECT_EQ(Count("LIB_TAG_CATEGORY_TABLE"), "0");
    EXPECT_EQ(Count("LIB_TAG_TABLE"), "2");
    EXPECT_EQ(Links().size(), 1U);
}

TEST_F(DBToolsTagLists, DeletedTagTakesItsLinksAlone) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    Link(kItem, kBeach);
    Link(kOther, kBeach);
    Link(kItem, kSunset);
    ASSERT_TRUE(m_tools->DeleteTag(kBeach));
    EXPECT_EQ(RawDb(m_path).Rows("select TAG_GUID from LIB_TAG_TABLE"), (Rows{{Literal(kSunset)}}));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kSunset)}}));
}

TEST_F(DBToolsTagLists, ManyAreDeletedTogether) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces(), MakeCategory(MakeGuid(110), "More")}));
    Link(kItem, kBeach);
    const GUID tags[] = {kBeach, kSunset, MakeGuid(999)};
    EXPECT_TRUE(m_tools->DeleteTags(tags));
    const GUID categories[] = {kCategory, MakeGuid(110)};
    EXPECT_TRUE(m_tools->DeleteCategories(categories));
    EXPECT_EQ(Count("LIB_TAG_TABLE"), "0");
    EXPECT_EQ(Count("LIB_TAG_CATEGORY_TABLE"), "0");
    EXPECT_TRUE(Links().empty());
}

TEST_F(DBToolsTagLists, DeletingWhatIsNotThereIsTrue) {
    EXPECT_TRUE(m_tools->DeleteCategory(kCategory));
    EXPECT_TRUE(m_tools->DeleteTag(kBeach));
    EXPECT_TRUE(m_tools->DeleteTagFromItem(kItem, kBeach));
}

}  // namespace
