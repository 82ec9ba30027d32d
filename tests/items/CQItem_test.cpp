#include "items/CQItem.h"

#include "tests/items/ItemBuilders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <memory>

namespace {

using qfc::test::GuidOf;
using testing::ElementsAre;

TEST(CQItem, NewItem_HasTheDefaults) {
    const CQItem item;
    EXPECT_EQ(item.GetDBID(), 0);
    EXPECT_EQ(item.GetParentFolder(), nullptr);
    EXPECT_EQ(item.GetAttrib(), 0u);
    EXPECT_EQ(item.fnGetTimeStamp(), 0u);
    EXPECT_EQ(item.GetBlackBoxSize(), 0u);
    EXPECT_EQ(item.GetCache(), nullptr);
    EXPECT_EQ(item.GetCacheSize(), 0u);
    EXPECT_EQ(item.GetFilm(), nullptr);
    EXPECT_EQ(item.GetFilmSize(), 0u);
    EXPECT_EQ(item.GetFrameSize(), 0u);
    EXPECT_EQ(item.fnGetDbTools(), nullptr);
    EXPECT_EQ(item.GetItemType(), 0u);
    EXPECT_TRUE(item.GetItemName().IsEmpty());
    EXPECT_TRUE(item.GetDescription().IsEmpty());
    EXPECT_TRUE(item.GetAnnotation().IsEmpty());
    EXPECT_TRUE(item.GetFileName().IsEmpty());
    EXPECT_TRUE(item.GetTemplatePath().IsEmpty());
    EXPECT_EQ(item.GetNumber(), 0u);
    EXPECT_EQ(item.IsModified(), 0);
    EXPECT_EQ(item.GetIsDeletable(), 0);
    EXPECT_EQ(item.GetCurThumbFrameNum(), 0u);
    EXPECT_EQ(item.GetOrgThumbFrameNum(), 0u);
}

TEST(CQItem, ItemFromAName_HasTheNameAndElseTheDefaults) {
    const CQItem item("Sunset");
    EXPECT_EQ(item.GetItemName(), "Sunset");
    EXPECT_TRUE(item.GetFileName().IsEmpty());
    EXPECT_EQ(item.IsModified(), 0);
}

TEST(CQItem, EveryNewItem_HasAGuidOfItsOwn) {
    const CQItem first;
    const CQItem second("named");
    EXPECT_FALSE(first.GetUniqueID() == GUID_NULL);
    EXPECT_FALSE(first.GetUniqueID() == second.GetUniqueID());
}

TEST(CQItem, MadeWithAGuid_HasIt) {
    const CQItem item(GuidOf(7));
    EXPECT_EQ(item.GetUniqueID(), GuidOf(7));
    EXPECT_EQ(item.IsModified(), CQItem().IsModified());
}

TEST(CQItem, RuntimeClass_MakesItems) {
    EXPECT_STREQ(CQItem::GetThisClass()->m_lpszClassName, "CQItem");
    EXPECT_EQ(CQItem::GetThisClass()->m_wSchema, 1u);
    const std::unique_ptr<CObject> pMade(CQItem::CreateObject());
    EXPECT_NE(DYNAMIC_DOWNCAST(CQItem, pMade.get()), nullptr);
    EXPECT_EQ(pMade->GetRuntimeClass(), CQItem::GetThisClass());
    EXPECT_NE(pMade->IsSerializable(), 0);
    EXPECT_EQ(CRuntimeClass::FromName("CQItem"), CQItem::GetThisClass());
}

TEST(CQItem, WritableReferences_ChangeTheItem) {
    CQItem item;
    item.GetAttrib() = 1;
    item.GetItemType() = 64;
    item.GetUniqueID() = GuidOf(9);
    item.GetCurThumbFrameNum() = 3;
    item.GetOrgThumbFrameNum() = 2;
    item.GetDescription() = "text";
    item.GetAnnotation() = "note";
    const CQItem& seen = item;
    EXPECT_EQ(seen.GetAttrib(), 1u);
    EXPECT_EQ(seen.GetItemType(), 64u);
    EXPECT_TRUE(seen.GetUniqueID() == GuidOf(9));
    EXPECT_EQ(seen.GetCurThumbFrameNum(), 3u);
    EXPECT_EQ(seen.GetOrgThumbFrameNum(), 2u);
    EXPECT_EQ(seen.GetDescription(), "text");
    EXPECT_EQ(seen.GetAnnotation(), "note");
}

TEST(CQItem, ReadOnlyAttribute_AnswersOneAndChangesNothing) {
    CQItem item;
    item.GetAttrib() = 6;
    EXPECT_EQ(item.fn_SetAttrib_ReadOnly(1), 1);
    EXPECT_EQ(item.fn_GetAttrib_ReadOnly(), 1);
    EXPECT_EQ(item.fn_SetAttrib_ReadOnly(0), 1);
    EXPECT_EQ(item.fn_GetAttrib_ReadOnly(), 1);
    EXPECT_EQ(item.GetAttrib(), 6u);
    EXPECT_EQ(item.IsModified(), 0);
}

TEST(CQItem, SetItemName_RefusesTheEmptyText) {
    CQItem item("before");
    EXPECT_EQ(item.SetItemName(""), 0);
    EXPECT_EQ(item.GetItemName(), "before");
}

TEST(CQItem, SetItemName_TakesATextWithoutMarkingModified) {
    CQItem item("before");
    EXPECT_EQ(item.SetItemName("after"), 1);
    EXPECT_EQ(item.GetItemName(), "after");
    EXPECT_EQ(item.IsModified(), 0);
}

TEST(CQItem, SetFileName_RefusesTheEmptyTextAndMarksNothing) {
    CQItem item;
    EXPECT_EQ(item.SetFileName("C:\\a.avi"), 1);
    EXPECT_EQ(item.SetFileName(""), 0);
    EXPECT_EQ(item.GetFileName(), "C:\\a.avi");
    EXPECT_EQ(item.IsModified(), 0);
}

TEST(CQItem, SetDbTools_AnswersOne) {
    CQItem item;
    EXPECT_EQ(item.fnSetDbTools(nullptr), 1);
    EXPECT_EQ(item.fnGetDbTools(), nullptr);
}

TEST(CQItem_OwnTags, TagAddedTwice_StandsOnce) {
    CQItem item;
    item.AddLibTag(GuidOf(1));
    item.AddLibTag(GuidOf(2));
    item.AddLibTag(GuidOf(1));
    std::list<GUID> tags;
    item.CopyTagVec(tags);
    EXPECT_THAT(tags, ElementsAre(GuidOf(1), GuidOf(2)));
}

TEST(CQItem_OwnTags, RemovedTag_LeavesTheOrderOfTheRest) {
    CQItem item;
    for (unsigned n = 1; n <= 4; ++n) item.AddLibTag(GuidOf(n));
    item.RemoveLibTag(GuidOf(2));
    item.RemoveLibTag(GuidOf(99));
    std::list<GUID> tags;
    item.CopyTagVec(tags);
    EXPECT_THAT(tags, ElementsAre(GuidOf(1), GuidOf(3), GuidOf(4)));
    EXPECT_EQ(item.IsTagExist(GuidOf(2)), 0);
    EXPECT_EQ(item.IsTagExist(GuidOf(3)), 1);
}

TEST(CQItem_OwnTags, CopiedTags_FollowWhatTheListHolds) {
    CQItem item;
    item.AddLibTag(GuidOf(5));
    std::list<GUID> tags{GuidOf(1), GuidOf(5)};
    item.CopyTagVec(tags);
    EXPECT_THAT(tags, ElementsAre(GuidOf(1), GuidOf(5), GuidOf(5)));
}

class CQItem_Find : public testing::Test {
protected:
    CQItem_Find() : m_item("Sunset Beach") {
        m_item.GetDescription() = "taken with a drone";
        m_item.GetAnnotation() = "too Dark";
    }
    CQItem m_item;
};

TEST_F(CQItem_Find, Name_IsSearchedWithoutRegardToCase) {
    EXPECT_EQ(m_item.FindSomeThing("sUNSET", 0, 0, 0, 0), 1);
    EXPECT_EQ(m_item.FindSomeThing("t b", 0, 0, 0, 0), 1);
    EXPECT_EQ(m_item.FindSomeThing("moon", 1, 1, 1, 1), 0);
}

TEST_F(CQItem_Find, Annotation_IsSearchedOnlyWhenAsked) {
    EXPECT_EQ(m_item.FindSomeThing("dark", 0, 1, 0, 0), 1);
    EXPECT_EQ(m_item.FindSomeThing("dark", 1, 0, 0, 0), 0);
}

TEST_F(CQItem_Find, Description_IsSearchedOnlyWhenAsked) {
    EXPECT_EQ(m_item.FindSomeThing("DRONE", 1, 0, 0, 0), 1);
    EXPECT_EQ(m_item.FindSomeThing("DRONE", 0, 1, 0, 0), 0);
}

TEST_F(CQItem_Find, TheEmptyText_IsFoundInEveryName) {
    EXPECT_EQ(m_item.FindSomeThing("", 0, 0, 0, 0), 1);
    EXPECT_EQ(CQItem().FindSomeThing("", 0, 0, 0, 0), 1);
}

TEST_F(CQItem_Find, LettersBeyondAscii_MatchWithoutRegardToCase) {
    CQItem item("\xC3\x84pfel und \xC3\xB6l");  // "Aepfel und oel" with umlauts
    EXPECT_EQ(item.FindSomeThing("\xC3\xA4PFEL", 0, 0, 0, 0), 1);
    EXPECT_EQ(item.FindSomeThing("\xC3\x96L", 0, 0, 0, 0), 1);
    EXPECT_EQ(item.FindSomeThing("apfel", 0, 0, 0, 0), 0);
    item.GetAnnotation() = "\xD0\xBC\xD0\xBE\xD1\x80\xD0\xB5";  // Cyrillic
    EXPECT_EQ(item.FindSomeThing("\xD0\x9C\xD0\x9E\xD0\xA0\xD0\x95", 0, 1, 0, 0), 1);
}

TEST_F(CQItem_Find, LastTwoArguments_ChangeNothing) {
    EXPECT_EQ(m_item.FindSomeThing("drone", 0, 0, 1, 1), 0);
    EXPECT_EQ(m_item.FindSomeThing("beach", 0, 0, 1, 1), 1);
}

}  // namespace
