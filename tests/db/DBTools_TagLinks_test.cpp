// The tags of items, and merging.
#include "tests/db/TagLibrary.h"
#include "tests/support/SqlTrace.h"

#include <algorithm>
#include <string>

namespace {

using namespace qfc::test;

using DBToolsTagLinks = DBToolsTags;

// --- Links ---

TEST_F(DBToolsTagLinks, LinkingTwiceLeavesOneRow) {
    Link(kItem, kBeach);
    Link(kItem, kBeach);
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kBeach)}}));
}

TEST_F(DBToolsTagLinks, EveryTagIsLinkedToEveryItem) {
    const GUID items[] = {kItem, kOther};
    const GUID tags[] = {kBeach, kSunset};
    ASSERT_TRUE(m_tools->InsertTags2Items(items, tags));
    EXPECT_EQ(Links().size(), 4U);
    const GUID one[] = {kSunset};
    ASSERT_TRUE(m_tools->DeleteTagsFromItems(items, one));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kBeach)}, {Literal(kOther), Literal(kBeach)}}));
}

TEST_F(DBToolsTagLinks, UnlinkingTakesTheOneLink) {
    Link(kItem, kBeach);
    Link(kItem, kSunset);
    Link(kOther, kBeach);
    ASSERT_TRUE(m_tools->DeleteTagFromItem(kItem, kBeach));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kSunset)}, {Literal(kOther), Literal(kBeach)}}));
}

TEST_F(DBToolsTagLinks, LinkThatFailsUndoesThoseBefore) {
    Exec("CREATE TRIGGER refuse BEFORE INSERT ON TAG_ITEM_RELATION_TABLE WHEN NEW.TAGS_GUID = " + Literal(kSunset) +
         " AND NEW.ITEM_GUID = " + Literal(kOther) + " BEGIN SELECT RAISE(FAIL, 'no'); END");
    const GUID items[] = {kItem, kOther};
    const GUID tags[] = {kBeach, kSunset};
    EXPECT_FALSE(m_tools->InsertTags2Items(items, tags));
    EXPECT_TRUE(Links().empty());
}

TEST_F(DBToolsTagLinks, ItemsOfATagComeAsRows) {
    Link(kItem, kBeach);
    Link(kOther, kBeach);
    Link(kOther, kSunset);
    CppSQLite3Query query;
    ASSERT_TRUE(m_tools->QueryTagItems(kBeach, query));
    int count = 0;
    for (; !query.eof(); query.nextRow()) {
        int length = 0;
        query.getBlobField("ITEM_GUID", length);
        EXPECT_EQ(length, 16);
        ++count;
    }
    EXPECT_EQ(count, 2);
    ASSERT_TRUE(m_tools->QueryTagItems(MakeGuid(999), query));
    EXPECT_TRUE(query.eof());
}

// --- Merging ---

TEST_F(DBToolsTagLinks, MergeMovesEveryLinkAndRemovesTheSource) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    Link(kItem, kBeach);
    Link(kOther, kBeach);
    Link(kOther, kSunset);
    ASSERT_TRUE(m_tools->MergeTag(kBeach, kSunset));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kSunset)}, {Literal(kOther), Literal(kSunset)}}));
    EXPECT_EQ(RawDb(m_path).Rows("select TAG_GUID from LIB_TAG_TABLE"), (Rows{{Literal(kSunset)}}));
}

TEST_F(DBToolsTagLinks, MergeOfManyIsOneTransaction) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    const GUID face = MakeGuid(103);
    ASSERT_TRUE(m_tools->UpdateTag(MakeTag(face, "face")));
    Link(kItem, kBeach);
    Link(kOther, face);
    m_tools.reset();
    std::vector<std::string> sent;
    {
        const SqlTrace trace;
        Open();
        const GUID sources[] = {kBeach, face};
        ASSERT_TRUE(m_tools->MergeTags(sources, kSunset));
        sent = trace.Statements();
    }
    EXPECT_EQ(std::count(sent.begin(), sent.end(), "BEGIN TRANSACTION;"), 1);
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kSunset)}, {Literal(kOther), Literal(kSunset)}}));
    EXPECT_EQ(Count("LIB_TAG_TABLE"), "1");
}

TEST_F(DBToolsTagLinks, MergeOfATagWithItselfChangesNothing) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    Link(kItem, kBeach);
    const std::string before = DumpOf(m_path);
    EXPECT_TRUE(m_tools->MergeTag(kBeach, kBeach));
    EXPECT_EQ(DumpOf(m_path), before);
    const GUID sources[] = {kBeach, kSunset};
    EXPECT_TRUE(m_tools->MergeTags(sources, kBeach));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kBeach)}}));
    EXPECT_EQ(RawDb(m_path).Rows("select TAG_GUID from LIB_TAG_TABLE"), (Rows{{Literal(kBeach)}}));
}

TEST_F(DBToolsTagLinks, MergeDropsLinksThatNameNoItem) {
    Link(kItem, kBeach);
    Exec("insert into TAG_ITEM_RELATION_TABLE values(x'01', " + Literal(kBeach) + "), (NULL, " + Literal(kBeach) +
         "), ('odd', " + Literal(kBeach) + ")");
    ASSERT_TRUE(m_tools->MergeTag(kBeach, kSunset));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kSunset)}}));
}

TEST_F(DBToolsTagLinks, TagsOutliveAClear) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    Link(kItem, kBeach);
    ASSERT_TRUE(m_tools->ClearDatabase());
    EXPECT_EQ(Load().size(), 1U);
    EXPECT_EQ(Links().size(), 1U);
}

}  // namespace
