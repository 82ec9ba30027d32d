#include "platform/text/CodePages.h"
#include "tags/TagRecords.h"
#include "tests/db/DbTestSupport.h"
#include "tests/support/MemoryFaults.h"
#include "tests/support/SqlTrace.h"

#include <climits>
#include <sqlite3.h>

namespace {

using namespace qfc::test;
using Rows = std::vector<RawDb::Row>;

const GUID kCategory = MakeGuid(100);
const GUID kBeach = MakeGuid(101);
const GUID kSunset = MakeGuid(102);
const GUID kItem = MakeGuid(1);
const GUID kOther = MakeGuid(2);

CLibTag MakeTag(const GUID& guid, const char* name, const GUID& category = kCategory) {
    CLibTag tag;
    tag.m_guid = guid;
    tag.m_guidCategory = category;
    tag.m_strName = name;
    return tag;
}

CTagCategory MakeCategory(const GUID& guid, const char* name, int gallery = 1) {
    CTagCategory category;
    category.m_guid = guid;
    category.m_strName = name;
    category.m_nGallery = gallery;
    return category;
}

CTagCategory MakePlaces() {
    CTagCategory category = MakeCategory(kCategory, "Places");
    category.m_tags = {MakeTag(kBeach, "beach"), MakeTag(kSunset, "sunset")};
    return category;
}

std::shared_ptr<const std::vector<BYTE>> MakePicture(std::size_t size) {
    auto picture = std::make_shared<std::vector<BYTE>>(size);
    for (std::size_t i = 0; i < size; ++i) (*picture)[i] = static_cast<BYTE>(i + 1);
    return picture;
}

class DBToolsTags : public LibraryTest {
protected:
    std::vector<CTagCategory> Load() {
        std::vector<CTagCategory> categories;
        EXPECT_TRUE(m_tools->LoadTags(categories));
        return categories;
    }
    Rows Links() const { return RawDb(m_path).Rows("select * from TAG_ITEM_RELATION_TABLE order by 1, 2"); }
    void Link(const GUID& item, const GUID& tag) { ASSERT_TRUE(m_tools->InsertTag2Item(item, tag)); }
    CLibTag LoadedTag() {
        const auto categories = Load();
        return categories.size() == 1 && categories[0].m_tags.size() == 1 ? categories[0].m_tags.front() : CLibTag();
    }
    bool SaveWithPicture(int size, std::shared_ptr<const std::vector<BYTE>> picture) {
        CTagCategory category = MakeCategory(kCategory, "Faces");
        category.m_tags = {MakeTag(kBeach, "Anna")};
        category.m_tags.front().m_nPictureSize = size;
        category.m_tags.front().m_pPicture = std::move(picture);
        return m_tools->SaveCategoriesAndTags({category});
    }
};

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
}

TEST_F(DBToolsTags, SizeBeyondThePictureStoresThePictureAlone) {
    ASSERT_TRUE(SaveWithPicture(INT_MAX, MakePicture(3)));
    EXPECT_EQ(Cell("select TAG_PICTURE_DATA from LIB_TAG_TABLE"), "X'010203'");
    EXPECT_EQ(LoadedTag().m_nPictureSize, 3);
}

TEST_F(DBToolsTags, MissingPictureOrNegativeSizeStoresNoBytes) {
    for (const int size : {-1, INT_MIN, 0}) {
        ASSERT_TRUE(SaveWithPicture(size, MakePicture(3)));
        EXPECT_EQ(Cell("select TAG_PICTURE_DATA from LIB_TAG_TABLE"), "X''") << size;
    }
    ASSERT_TRUE(SaveWithPicture(1000, nullptr));
    EXPECT_EQ(Cell("select TAG_PICTURE_DATA from LIB_TAG_TABLE"), "X''");
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

// --- Writing many ---

TEST_F(DBToolsTags, FailureInTheMiddleOfManyRollsAllBack) {
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

TEST_F(DBToolsTags, SavingStopsAtTheFirstFailure) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    Exec("DROP TABLE LIB_TAG_CATEGORY_TABLE");
    trace.Clear();
    EXPECT_FALSE(m_tools->SaveCategoriesAndTags({MakePlaces(), MakePlaces()}));
    EXPECT_EQ(trace.CountStartingWith("REPLACE"), 1);
    EXPECT_EQ(trace.CountStartingWith("ROLLBACK"), 1);
}

TEST_F(DBToolsTags, NothingToDoIsTrue) {
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

TEST_F(DBToolsTags, WithoutADatabaseEverythingIsFalse) {
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

TEST_F(DBToolsTags, DeletedCategoryLeavesItsTagsAndTheirLinks) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    Link(kItem, kBeach);
    ASSERT_TRUE(m_tools->DeleteCategory(kCategory));
    EXPECT_EQ(Count("LIB_TAG_CATEGORY_TABLE"), "0");
    EXPECT_EQ(Count("LIB_TAG_TABLE"), "2");
    EXPECT_EQ(Links().size(), 1U);
}

TEST_F(DBToolsTags, DeletedTagTakesItsLinksAlone) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    Link(kItem, kBeach);
    Link(kOther, kBeach);
    Link(kItem, kSunset);
    ASSERT_TRUE(m_tools->DeleteTag(kBeach));
    EXPECT_EQ(RawDb(m_path).Rows("select TAG_GUID from LIB_TAG_TABLE"), (Rows{{Literal(kSunset)}}));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kSunset)}}));
}

TEST_F(DBToolsTags, ManyAreDeletedTogether) {
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

TEST_F(DBToolsTags, DeletingWhatIsNotThereIsTrue) {
    EXPECT_TRUE(m_tools->DeleteCategory(kCategory));
    EXPECT_TRUE(m_tools->DeleteTag(kBeach));
    EXPECT_TRUE(m_tools->DeleteTagFromItem(kItem, kBeach));
}

// --- Links ---

TEST_F(DBToolsTags, LinkingTwiceLeavesOneRow) {
    Link(kItem, kBeach);
    Link(kItem, kBeach);
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kBeach)}}));
}

TEST_F(DBToolsTags, EveryTagIsLinkedToEveryItem) {
    const GUID items[] = {kItem, kOther};
    const GUID tags[] = {kBeach, kSunset};
    ASSERT_TRUE(m_tools->InsertTags2Items(items, tags));
    EXPECT_EQ(Links().size(), 4U);
    const GUID one[] = {kSunset};
    ASSERT_TRUE(m_tools->DeleteTagsFromItems(items, one));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kBeach)}, {Literal(kOther), Literal(kBeach)}}));
}

TEST_F(DBToolsTags, UnlinkingTakesTheOneLink) {
    Link(kItem, kBeach);
    Link(kItem, kSunset);
    Link(kOther, kBeach);
    ASSERT_TRUE(m_tools->DeleteTagFromItem(kItem, kBeach));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kSunset)}, {Literal(kOther), Literal(kBeach)}}));
}

TEST_F(DBToolsTags, LinkThatFailsUndoesThoseBefore) {
    Exec("CREATE TRIGGER refuse BEFORE INSERT ON TAG_ITEM_RELATION_TABLE WHEN NEW.TAGS_GUID = " + Literal(kSunset) +
         " AND NEW.ITEM_GUID = " + Literal(kOther) + " BEGIN SELECT RAISE(FAIL, 'no'); END");
    const GUID items[] = {kItem, kOther};
    const GUID tags[] = {kBeach, kSunset};
    EXPECT_FALSE(m_tools->InsertTags2Items(items, tags));
    EXPECT_TRUE(Links().empty());
}

TEST_F(DBToolsTags, ItemsOfATagComeAsRows) {
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

TEST_F(DBToolsTags, MergeMovesEveryLinkAndRemovesTheSource) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    Link(kItem, kBeach);
    Link(kOther, kBeach);
    Link(kOther, kSunset);
    ASSERT_TRUE(m_tools->MergeTag(kBeach, kSunset));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kSunset)}, {Literal(kOther), Literal(kSunset)}}));
    EXPECT_EQ(RawDb(m_path).Rows("select TAG_GUID from LIB_TAG_TABLE"), (Rows{{Literal(kSunset)}}));
}

TEST_F(DBToolsTags, MergeOfManyIsOneTransaction) {
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

TEST_F(DBToolsTags, MergeOfATagWithItselfChangesNothing) {
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

TEST_F(DBToolsTags, MergeDropsLinksThatNameNoItem) {
    Link(kItem, kBeach);
    Exec("insert into TAG_ITEM_RELATION_TABLE values(x'01', " + Literal(kBeach) + "), (NULL, " + Literal(kBeach) +
         "), ('odd', " + Literal(kBeach) + ")");
    ASSERT_TRUE(m_tools->MergeTag(kBeach, kSunset));
    EXPECT_EQ(Links(), (Rows{{Literal(kItem), Literal(kSunset)}}));
}

TEST_F(DBToolsTags, TagsOutliveAClear) {
    ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
    Link(kItem, kBeach);
    ASSERT_TRUE(m_tools->ClearDatabase());
    EXPECT_EQ(Load().size(), 1U);
    EXPECT_EQ(Links().size(), 1U);
}

}  // namespace
