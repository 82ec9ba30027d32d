#include "tests/tags/TagTestSupport.h"

namespace {

using namespace qfc::test;

constexpr DWORD kMedia = 1;
constexpr DWORD kSounds = 2;

// Two galleries; numbers below 100 are tags, from 100 on categories.
class TagStore : public testing::Test {
protected:
    void SetUp() override {
        m_pStore->AddTag(
            {MakeCategory(200, kSounds, "Mood", {MakeTag(21, 200, "calm")}),
             MakeCategory(100, kMedia, "Date", {MakeTag(11, 100, "old", qfc::tag_type::kDate)},
                          qfc::category_type::kDate),
             MakeCategory(101, kMedia, "Places",
                          {MakeTag(12, 101, "beach"), MakeTag(13, 101, "forest", qfc::tag_type::kString, true),
                           MakeTag(14, 101, "lake", qfc::tag_type::kStatic, true)}),
             MakeCategory(102, kMedia, "Empty")});
    }
    void Check(const GUID& guid) {
        std::list<CLibTag> tags;
        m_pStore->GetAllTagList(tags);
        for (CLibTag& tag : tags) {
            if (!(tag.m_guid == guid)) continue;
            tag.m_bChecked = true;
            m_pStore->UpdateTag(kMedia, {tag});
        }
    }

    std::shared_ptr<CLibTagsMgr> m_pStore = qfc::TagStorePeer::NewStore();
};

TEST(TagRecords, FieldsStandInTheirOrderWithTheirDefaults) {
    const auto [guid, category, type, name, isChecked, isDeletable, size, picture, values] = CLibTag();
    EXPECT_EQ(guid, GUID_NULL);
    EXPECT_EQ(category, GUID_NULL);
    EXPECT_EQ(type, 0);
    EXPECT_TRUE(name.IsEmpty());
    EXPECT_FALSE(isChecked);
    EXPECT_TRUE(isDeletable);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(picture, nullptr);
    EXPECT_TRUE(values.empty());
    const CTagCategory source = MakeCategory(1, 2, "c", {MakeTag(3, 1, "t")}, 3);
    const auto& [ownGuid, gallery, ownName, tags, canBeDeleted, ownType] = source;
    EXPECT_EQ(ownGuid, MakeGuid(1));
    EXPECT_EQ(gallery, 2);
    EXPECT_EQ(ownName, CString("c"));
    EXPECT_EQ(tags.size(), 1U);
    EXPECT_TRUE(canBeDeleted);
    EXPECT_EQ(ownType, 3);
}

TEST(TagStoreOfTheProcess, IsOneAndTheSame) {
    ASSERT_NE(CLibTagsMgr::GetLibTagMgr(), nullptr);
    EXPECT_EQ(CLibTagsMgr::GetLibTagMgr(), CLibTagsMgr::GetLibTagMgr());
}

TEST(TagStoreOfTheProcess, BeginsEmpty) {
    const auto store = qfc::TagStorePeer::NewStore();
    std::list<CLibTag> tags;
    EXPECT_TRUE(store->IsEmpty());
    EXPECT_EQ(store->GetAllTagList(tags), 0);
    EXPECT_TRUE(store->GetPresetTagData().empty());
    EXPECT_TRUE(store->GetCategoryTemplate().empty());
}

TEST_F(TagStore, CategoriesOfAGalleryComeInTheOrderOfAdding) {
    EXPECT_EQ(NamesOf(m_pStore->GetTagsData(kMedia)), "Date, Places, Empty");
    EXPECT_EQ(NamesOf(m_pStore->GetTagsData(kSounds)), "Mood");
}

TEST_F(TagStore, AskingForAnUnknownGalleryEntersIt) {
    const auto store = qfc::TagStorePeer::NewStore();
    EXPECT_TRUE(store->GetTagsData(7).empty());
    EXPECT_FALSE(store->IsEmpty());
}

TEST_F(TagStore, OtherQuestionsEnterNothing) {
    const auto store = qfc::TagStorePeer::NewStore();
    std::list<CLibTag> tags;
    std::vector<CTagCategory> categories;
    CLibTag tag;
    CTagCategory category;
    EXPECT_EQ(store->GetCurGalleryAllTag(7, tags), 0);
    EXPECT_FALSE(store->GetCurGalleryDateTag(7, tag));
    EXPECT_EQ(store->GetCurGallerySelectedTag(7, categories), 0);
    EXPECT_EQ(store->GetCurrentGalFaceCategory(7, category), 0);
    EXPECT_EQ(store->GetTagByName(7, "x", tag), 0);
    EXPECT_FALSE(store->IsTagCategoryExisted(7, MakeGuid(1)));
    EXPECT_FALSE(store->IsTagExisted(7, MakeGuid(1)));
    store->UpdateTag(7, {MakeTag(1, 100, "x")});
    EXPECT_EQ(store->UpdateCategory(7, {}), 1);
    EXPECT_EQ(store->DeleteTag(7, {MakeGuid(1)}), 1);
    EXPECT_EQ(store->DeleteCategory(7, {MakeGuid(1)}), 1);
    EXPECT_TRUE(store->IsEmpty());
}

TEST_F(TagStore, WhatIsHandedOutIsACopy) {
    auto categories = m_pStore->GetTagsData(kMedia);
    categories[1].m_tags.front().m_strName = "changed";
    categories.clear();
    EXPECT_EQ(NamesOf(m_pStore->GetTagsData(kMedia)), "Date, Places, Empty");
    EXPECT_EQ(NamesOf(m_pStore->GetTagsData(kMedia)[1].m_tags), "beach, forest, lake");
}

TEST_F(TagStore, CopiesShareThePicture) {
    CLibTag face = MakeTag(15, 101, "Anna");
    const auto picture = std::make_shared<const std::vector<BYTE>>(3, BYTE{1});
    face.m_pPicture = picture;
    face.m_nPictureSize = 3;
    m_pStore->UpdateTag(kMedia, {face});
    face = {};
    CLibTag found;
    ASSERT_EQ(m_pStore->GetTagByName(kMedia, "Anna", found), 1);
    EXPECT_EQ(found.m_pPicture, picture);
    EXPECT_EQ(picture.use_count(), 3);  // The store's, this one and the copy's.
    found = {};
    m_pStore->DeleteTag(kMedia, {MakeGuid(15)});
    EXPECT_EQ(picture.use_count(), 1);
}

TEST_F(TagStore, AllTagsComeGalleryByGallery) {
    std::list<CLibTag> tags{MakeTag(99, 0, "before")};
    EXPECT_EQ(m_pStore->GetAllTagList(tags), 5);
    EXPECT_EQ(NamesOf(tags), "before, old, beach, forest, lake, calm");
}

// The id is a number without sign: a negative one sorts last.
TEST_F(TagStore, GalleriesAreVisitedByTheirIds) {
    m_pStore->AddTag({MakeCategory(300, -1, "Last", {MakeTag(31, 300, "last")})});
    m_pStore->AddTag({MakeCategory(301, 0, "First", {MakeTag(32, 301, "first")})});
    std::list<CLibTag> tags;
    EXPECT_EQ(m_pStore->GetAllTagList(tags), 7);
    EXPECT_EQ(NamesOf(tags), "first, old, beach, forest, lake, calm, last");
    EXPECT_EQ(m_pStore->GetTagsData(0xFFFFFFFFU).size(), 1U);
}

TEST_F(TagStore, TagsOfOneGalleryAreAppended) {
    std::list<CLibTag> tags{MakeTag(99, 0, "before")};
    EXPECT_EQ(m_pStore->GetCurGalleryAllTag(kSounds, tags), 1);
    EXPECT_EQ(NamesOf(tags), "before, calm");
}

TEST_F(TagStore, DateTagHasToBeCheckedAndADate) {
    CLibTag tag = MakeTag(99, 0, "untouched");
    EXPECT_FALSE(m_pStore->GetCurGalleryDateTag(kMedia, tag));
    EXPECT_EQ(tag.m_strName, CString("untouched"));
    Check(MakeGuid(11));
    EXPECT_TRUE(m_pStore->GetCurGalleryDateTag(kMedia, tag));
    EXPECT_EQ(tag.m_strName, CString("old"));
}

TEST_F(TagStore, FirstCheckedDateTagCounts) {
    m_pStore->AddTag({MakeCategory(
        103, kMedia, "More dates",
        {MakeTag(16, 103, "unchecked", qfc::tag_type::kDate), MakeTag(17, 103, "one", qfc::tag_type::kDate, true),
         MakeTag(18, 103, "two", qfc::tag_type::kDate, true)})});
    CLibTag tag;
    EXPECT_TRUE(m_pStore->GetCurGalleryDateTag(kMedia, tag));
    EXPECT_EQ(tag.m_strName, CString("one"));
}

TEST_F(TagStore, SelectedAreTheCheckedTagsThatAreNoDates) {
    Check(MakeGuid(11));
    std::vector<CTagCategory> categories;
    EXPECT_EQ(m_pStore->GetCurGallerySelectedTag(kMedia, categories), 2);
    ASSERT_EQ(NamesOf(categories), "Places");
    EXPECT_EQ(categories[0].m_guid, MakeGuid(101));
    EXPECT_EQ(NamesOf(categories[0].m_tags), "forest, lake");
    EXPECT_EQ(m_pStore->GetCurGallerySelectedTag(kMedia, categories), 2);
    EXPECT_EQ(NamesOf(categories), "Places, Places");
    EXPECT_EQ(NamesOf(m_pStore->GetTagsData(kMedia)[1].m_tags), "beach, forest, lake");
}

TEST_F(TagStore, FirstFaceCategoryCounts) {
    CTagCategory category = MakeCategory(1, 1, "untouched");
    EXPECT_EQ(m_pStore->GetCurrentGalFaceCategory(kMedia, category), 0);
    EXPECT_EQ(category.m_strName, CString("untouched"));
    m_pStore->AddTag({MakeCategory(103, kMedia, "Faces", {}, qfc::category_type::kFace),
                      MakeCategory(104, kMedia, "More faces", {}, qfc::category_type::kFace)});
    EXPECT_EQ(m_pStore->GetCurrentGalFaceCategory(kMedia, category), 1);
    EXPECT_EQ(category.m_strName, CString("Faces"));
}

TEST_F(TagStore, NameIsFoundInAnyCase) {
    CLibTag tag;
    EXPECT_EQ(m_pStore->GetTagByName(kMedia, "BEACH", tag), 1);
    EXPECT_EQ(tag.m_guid, MakeGuid(12));
}

TEST_F(TagStore, FirstTagOfTheNameCounts) {
    m_pStore->AddTag({MakeCategory(103, kMedia, "More", {MakeTag(16, 103, "Beach"), MakeTag(17, 103, "beach")})});
    CLibTag tag;
    EXPECT_EQ(m_pStore->GetTagByName(kMedia, "Beach", tag), 1);
    EXPECT_EQ(tag.m_guid, MakeGuid(12));
}

TEST_F(TagStore, NameOfAnotherGalleryIsNotFound) {
    CLibTag tag = MakeTag(99, 0, "untouched");
    EXPECT_EQ(m_pStore->GetTagByName(kMedia, "calm", tag), 0);
    EXPECT_EQ(m_pStore->GetTagByName(kMedia, "beac", tag), 0);
    EXPECT_EQ(tag.m_strName, CString("untouched"));
}

TEST_F(TagStore, GuidIsFoundInAnyGallery) {
    m_pStore->AddTag({MakeCategory(103, kMedia, "Again", {MakeTag(12, 103, "beach again")})});
    CLibTag tag;
    ASSERT_EQ(m_pStore->GetTagByGuid(MakeGuid(12), tag), 1);
    EXPECT_EQ(tag.m_strName, CString("beach"));
    CLibTag calm;
    ASSERT_EQ(m_pStore->GetTagByName(kSounds, "calm", calm), 1);
    ASSERT_EQ(m_pStore->GetTagByGuid(calm.m_guid, tag), 1);
    EXPECT_EQ(tag.m_strName, CString("calm"));
    EXPECT_EQ(m_pStore->GetTagByGuid(MakeGuid(101), tag), 0);  // A category's.
    EXPECT_EQ(m_pStore->GetTagByGuid(GUID_NULL, tag), 0);
    EXPECT_EQ(tag.m_strName, CString("calm"));
}

TEST_F(TagStore, ExistenceIsAMatterOfTheGallery) {
    EXPECT_TRUE(m_pStore->IsTagCategoryExisted(kMedia, MakeGuid(102)));
    EXPECT_FALSE(m_pStore->IsTagCategoryExisted(kSounds, MakeGuid(102)));
    EXPECT_FALSE(m_pStore->IsTagCategoryExisted(kMedia, MakeGuid(12)));
    EXPECT_TRUE(m_pStore->IsTagExisted(kMedia, MakeGuid(14)));
    EXPECT_FALSE(m_pStore->IsTagExisted(kSounds, MakeGuid(14)));
    EXPECT_FALSE(m_pStore->IsTagExisted(kMedia, MakeGuid(101)));
}

}  // namespace
