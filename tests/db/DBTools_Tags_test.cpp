#include "platform/text/CodePages.h"
#include "tests/db/TagLibrary.h"
#include "tests/support/MemoryFaults.h"

#include <climits>
#include <string>

namespace {

using namespace qfc::test;

// --- Rows ---

TEST_F(DBToolsTags, CategoryGoesIntoItsColumns) {
    CTagCategory category = MakeCategory(kCategory, "Places", 7);
    category.m_bDeletable = false;
    category.m_nType = 3;
    ASSERT_TRUE(m_tools->UpdateCategory(category));
    EXPECT_EQ(RawDb(m_path).Rows("select CATEGORY_NAME, CATEGORY_GALLERY, CATEGORY_DELETABLE, CATEGORY_TYPE,"
                                 " CATEGORY_GUID from LIB_TAG_CATEGORY_TABLE"),
              (Rows{{"'Places'", "7", "0", "3", Literal(kCategory)}}));
}

TEST_F(DBToolsTags, TagGoesIntoItsColumns) {
    CLibTag tag = MakeTag(kBeach, "beach");
    tag.m_nType = 2;
    tag.m_bChecked = true;
    tag.m_bDeletable = false;
    tag.m_nPictureSize = 3;
    tag.m_pPicture = MakePicture(3);
    ASSERT_TRUE(m_tools->UpdateTag(tag));
    EXPECT_EQ(RawDb(m_path).Rows("select TAG_NAME, CATEGORY_GUID, TAG_TYPE, TAG_CHECKED, TAG_DELETABLE,"
                                 " TAG_PICTURE_SIZE, TAG_PICTURE_DATA, TAG_GUID from LIB_TAG_TABLE"),
              (Rows{{"'beach'", Literal(kCategory), "2", "1", "0", "3", "X'010203'", Literal(kBeach)}}));
}

TEST_F(DBToolsTags, UpdatesReplaceTheRowOfTheSameGuid) {
    ASSERT_TRUE(m_tools->UpdateCategory(MakeCategory(kCategory, "Places")));
    ASSERT_TRUE(m_tools->UpdateCategory(MakeCategory(kCategory, "Countries")));
    ASSERT_TRUE(m_tools->UpdateTag(MakeTag(kBeach, "beach")));
    ASSERT_TRUE(m_tools->UpdateTag(MakeTag(kBeach, "coast")));
    EXPECT_EQ(RawDb(m_path).Rows("select CATEGORY_NAME from LIB_TAG_CATEGORY_TABLE"), (Rows{{"'Countries'"}}));
    EXPECT_EQ(RawDb(m_path).Rows("select TAG_NAME from LIB_TAG_TABLE"), (Rows{{"'coast'"}}));
}

TEST_F(DBToolsTags, UpdateOfACategoryAloneLeavesItsTagsOut) {
    ASSERT_TRUE(m_tools->UpdateCategory(MakePlaces()));
    EXPECT_EQ(Count("LIB_TAG_CATEGORY_TABLE"), "1");
    EXPECT_EQ(Count("LIB_TAG_TABLE"), "0");
}

TEST_F(DBToolsTags, NamesAreStoredAsUtf8AndComeBackInTheCodePage) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    CTagCategory category = MakeCategory(kCategory,
                                         "St\xE4"
                                         "dte");
    category.m_tags = {MakeTag(kBeach, "K\xF6ln")};
    const bool bSaved = m_tools->SaveCategoriesAndTags({category});
    const auto categories = Load();
    qfc::SetAnsiCodePage("UTF-8");
    ASSERT_TRUE(bSaved);
    EXPECT_EQ(Cell("select CATEGORY_NAME from LIB_TAG_CATEGORY_TABLE"), "'Städte'");
    EXPECT_EQ(Cell("select TAG_NAME from LIB_TAG_TABLE"), "'Köln'");
    ASSERT_EQ(categories.size(), 1U);
    EXPECT_EQ(categories[0].m_strName, category.m_strName);
    EXPECT_EQ(categories[0].m_tags.front().m_strName, CString("K\xF6ln"));
}

TEST_F(DBToolsTags, PictureComesBackWithItsOwnLength) {
    ASSERT_TRUE(SaveWithPicture(5000, MakePicture(5000)));
    const CLibTag tag = LoadedTag();
    EXPECT_EQ(tag.m_nPictureSize, 5000);
    ASSERT_NE(tag.m_pPicture, nullptr);
    EXPECT_EQ(*tag.m_pPicture, *MakePicture(5000));
}

TEST_F(DBToolsTags, OnlyTheBytesThatCountAreStored) {
    ASSERT_TRUE(SaveWithPicture(2, MakePicture(5)));
    EXPECT_EQ(Cell("select TAG_PICTURE_DATA from LIB_TAG_TABLE"), "X'0102'");
    EXPECT_EQ(Cell("select TAG_PICTURE_SIZE from LIB_TAG_TABLE"), "2");
}

TEST_F(DBToolsTags, SizeBeyondThePictureStoresThePictureAlone) {
    ASSERT_TRUE(SaveWithPicture(INT_MAX, MakePicture(3)));
    EXPECT_EQ(Cell("select TAG_PICTURE_DATA from LIB_TAG_TABLE"), "X'010203'");
    EXPECT_EQ(Cell("select TAG_PICTURE_SIZE from LIB_TAG_TABLE"), std::to_string(INT_MAX));
    EXPECT_EQ(LoadedTag().m_nPictureSize, 3);
}

TEST_F(DBToolsTags, MissingPictureOrNegativeSizeStoresNoBytes) {
    for (const int size : {-1, INT_MIN, 0}) {
        ASSERT_TRUE(SaveWithPicture(size, MakePicture(3)));
        EXPECT_EQ(Cell("select TAG_PICTURE_DATA from LIB_TAG_TABLE"), "X''") << size;
        EXPECT_EQ(Cell("select TAG_PICTURE_SIZE from LIB_TAG_TABLE"), std::to_string(size));
    }
    ASSERT_TRUE(SaveWithPicture(1000, nullptr));
    EXPECT_EQ(Cell("select TAG_PICTURE_DATA from LIB_TAG_TABLE"), "X''");
    EXPECT_EQ(Cell("select TAG_PICTURE_SIZE from LIB_TAG_TABLE"), "1000");
    const CLibTag tag = LoadedTag();
    EXPECT_EQ(tag.m_strName, CString("Anna"));
    EXPECT_EQ(tag.m_nPictureSize, 0);
    EXPECT_EQ(tag.m_pPicture, nullptr);
}

// Kept: the size column is written and never read back.
TEST_F(DBToolsTags, StoredPictureSizeIsNotBelieved) {
    ASSERT_TRUE(SaveWithPicture(3, MakePicture(3)));
    Exec("update LIB_TAG_TABLE set TAG_PICTURE_SIZE = 2000000000");
    EXPECT_EQ(LoadedTag().m_nPictureSize, 3);
}

// --- Loading ---

TEST_F(DBToolsTags, EverythingStoredComesBack) {
    CTagCategory places = MakePlaces();
    places.m_nType = 2;
    places.m_bDeletable = false;
    places.m_tags.front().m_bChecked = true;
    places.m_tags.front().m_nType = 1;
    places.m_tags.front().m_bDeletable = false;
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({places, MakeCategory(MakeGuid(110), "Empty", 9)}));
    const auto categories = Load();
    ASSERT_EQ(categories.size(), 2U);
    EXPECT_EQ(categories[0].m_guid, kCategory);
    EXPECT_EQ(categories[0].m_strName, CString("Places"));
    EXPECT_EQ(categories[0].m_nGallery, 1);
    EXPECT_EQ(categories[0].m_nType, 2);
    EXPECT_FALSE(categories[0].m_bDeletable);
    ASSERT_EQ(categories[0].m_tags.size(), 2U);
    const CLibTag& first = categories[0].m_tags.front();
    EXPECT_EQ(first.m_guid, kBeach);
    EXPECT_EQ(first.m_guidCategory, kCategory);
    EXPECT_EQ(first.m_strName, CString("beach"));
    EXPECT_EQ(first.m_nType, 1);
    EXPECT_TRUE(first.m_bChecked);
    EXPECT_FALSE(first.m_bDeletable);
    const CLibTag& second = categories[0].m_tags.back();
    EXPECT_FALSE(second.m_bChecked);
    EXPECT_TRUE(second.m_bDeletable);
    EXPECT_EQ(categories[1].m_nGallery, 9);
    EXPECT_TRUE(categories[1].m_tags.empty());
}

TEST_F(DBToolsTags, ValuesStayInMemory) {
    CTagCategory places = MakePlaces();
    places.m_tags.front().m_values = {1, 2};
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({places}));
    EXPECT_TRUE(Load()[0].m_tags.front().m_values.empty());
}

// Kept: the one column whose NULL is not 0.
TEST_F(DBToolsTags, CategoryTypeNullReadsAsOne) {
    Exec("insert into LIB_TAG_CATEGORY_TABLE(CATEGORY_GUID) values(" + Literal(kCategory) + ")");
    const auto categories = Load();
    ASSERT_EQ(categories.size(), 1U);
    EXPECT_EQ(categories[0].m_nType, 1);
    EXPECT_EQ(categories[0].m_nGallery, 0);
    EXPECT_FALSE(categories[0].m_bDeletable);
    EXPECT_TRUE(categories[0].m_strName.IsEmpty());
}

TEST_F(DBToolsTags, TagOfNullsReadsAsZeros) {
    Exec("insert into LIB_TAG_CATEGORY_TABLE(CATEGORY_GUID) values(" + Literal(kCategory) + ")");
    Exec("insert into LIB_TAG_TABLE(TAG_GUID, CATEGORY_GUID) values(" + Literal(kBeach) + ", " + Literal(kCategory) +
         ")");
    const CLibTag tag = LoadedTag();
    EXPECT_EQ(tag.m_guid, kBeach);
    EXPECT_TRUE(tag.m_strName.IsEmpty());
    EXPECT_EQ(tag.m_nType, 0);
    EXPECT_FALSE(tag.m_bDeletable);
    EXPECT_FALSE(tag.m_bChecked);
    EXPECT_EQ(tag.m_pPicture, nullptr);
}

TEST_F(DBToolsTags, RowsWithoutAUsableGuidAreLeftOut) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    const std::string category = Literal(kCategory);
    for (const char* guid : {"NULL", "x''", "x'0102'", "17", "'text'", "zeroblob(17)", "zeroblob(100000)"}) {
        const std::string text = guid;
        Exec("insert into LIB_TAG_CATEGORY_TABLE(CATEGORY_NAME, CATEGORY_GUID) values('hostile', " + text + ")");
        Exec("insert into LIB_TAG_TABLE(TAG_NAME, CATEGORY_GUID, TAG_GUID) values('hostile', " + category + ", " +
             text + ")");
        Exec("insert into LIB_TAG_TABLE(TAG_NAME, CATEGORY_GUID, TAG_GUID) values('hostile', " + text +
             ", randomblob(16))");
    }
    const auto categories = Load();
    ASSERT_EQ(categories.size(), 1U);
    EXPECT_EQ(categories[0].m_tags.size(), 2U);
}

TEST_F(DBToolsTags, TagOfAnUnknownCategoryIsLeftOut) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    ASSERT_TRUE(m_tools->UpdateTag(MakeTag(MakeGuid(103), "lost", MakeGuid(999))));
    const auto categories = Load();
    ASSERT_EQ(categories.size(), 1U);
    EXPECT_EQ(categories[0].m_tags.size(), 2U);
}

TEST_F(DBToolsTags, OfTwoCategoriesWithTheSameBytesTheFirstGetsTheTags) {
    const std::string blob = "x'30313233343536373839616263646566'";
    Exec(
        "insert into LIB_TAG_CATEGORY_TABLE(CATEGORY_NAME, CATEGORY_GUID) values('text', '0123456789abcdef'), "
        "('blob', " +
        blob + ")");
    Exec("insert into LIB_TAG_TABLE(TAG_NAME, CATEGORY_GUID, TAG_GUID) values('t', " + blob + ", " + Literal(kBeach) +
         ")");
    const auto categories = Load();
    ASSERT_EQ(categories.size(), 2U);
    EXPECT_EQ(categories[0].m_tags.size(), 1U);
    EXPECT_EQ(categories[1].m_tags.size(), 0U);
}

TEST_F(DBToolsTags, CellsOfOtherTypesAreConverted) {
    Exec("insert into LIB_TAG_CATEGORY_TABLE values(17, 'x', 'y', x'00', " + Literal(kCategory) + ")");
    Exec("insert into LIB_TAG_TABLE values(2.5, " + Literal(kCategory) + ", 'a', '1x', 8589934592, 'lie', 'abc', " +
         Literal(kBeach) + ")");
    const auto categories = Load();
    ASSERT_EQ(categories.size(), 1U);
    EXPECT_EQ(categories[0].m_strName, CString("17"));
    EXPECT_EQ(categories[0].m_nType, 0);
    const CLibTag tag = LoadedTag();
    EXPECT_EQ(tag.m_strName, CString("2.5"));
    EXPECT_TRUE(tag.m_bChecked);
    EXPECT_EQ(tag.m_nPictureSize, 3);
}

TEST_F(DBToolsTags, LoadingAppends) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    std::vector<CTagCategory> categories{MakeCategory(MakeGuid(110), "before")};
    ASSERT_TRUE(m_tools->LoadTags(categories));
    ASSERT_EQ(categories.size(), 2U);
    EXPECT_EQ(categories[0].m_strName, CString("before"));
}

TEST_F(DBToolsTags, FailedLoadingAppendsNothing) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    Exec("DROP TABLE LIB_TAG_TABLE");
    std::vector<CTagCategory> categories{MakeCategory(MakeGuid(110), "before")};
    EXPECT_FALSE(m_tools->LoadTags(categories));
    EXPECT_EQ(categories.size(), 1U);
}

TEST_F(DBToolsTags, TableWithoutAColumnCannotBeLoaded) {
    Exec("DROP TABLE LIB_TAG_CATEGORY_TABLE; CREATE TABLE LIB_TAG_CATEGORY_TABLE(CATEGORY_GUID BLOB)");
    Exec("insert into LIB_TAG_CATEGORY_TABLE values(" + Literal(kCategory) + ")");
    std::vector<CTagCategory> categories;
    EXPECT_FALSE(m_tools->LoadTags(categories));
}

TEST_F(DBToolsTags, LoadingWithoutMemoryIsAllOrNothing) {
    CTagCategory places = MakePlaces();
    places.m_tags.front().m_nPictureSize = 3000;
    places.m_tags.front().m_pPicture = MakePicture(3000);
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({places}));
    for (const bool sticky : {false, true}) {
        for (int n = 1;; ++n) {
            std::vector<CTagCategory> categories;
            bool bRead = false;
            bool bFailed = false;
            {
                const MemoryFaults faults(n, sticky);
                ASSERT_NO_THROW(bRead = m_tools->LoadTags(categories)) << "allocation " << n;
                bFailed = faults.HasFailed();
            }
            ASSERT_EQ(categories.size(), bRead ? 1U : 0U) << "allocation " << n;
            if (bRead) {
                ASSERT_EQ(categories[0].m_tags.size(), 2U) << "allocation " << n;
            }
            if (!bFailed) break;
        }
    }
}

}  // namespace
