#include "service/operations/QueryLibItemThumbnailInfo.h"
#include "service/operations/UpdateLibItemThumbnail.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace {

using Manager = QFCLibraryManager;
using qfc::test::RawDb;

class EntriesThumbnails : public qfc::test::LibraryFixture {};

TEST_F(EntriesThumbnails, UpdateLibItemThumbnail_StoresTheBitmapCacheAlone) {
    CQItem* const pItem = AddItem("Sunrise");
    qfc::test::GiveBitmapCache(*pItem, 20, 10);
    qfc::test::GiveBlackBox(*pItem, 64);
    EXPECT_EQ(Manager::fnUpdateLibItemThumbnail(pItem), 1);
    EXPECT_EQ(CountRows("CACHE_DATA_TABLE"), 1);
    EXPECT_EQ(CountRows("CACHE_DATA_TABLE where CACHE_DATA_TYPE = 0"), 1);
}

TEST_F(EntriesThumbnails, UpdateLibItemThumbnail_WithoutABitmapInMemory_IsOneAndLeavesWhatIsStored) {
    CQItem* const pItem = AddItem("Sunrise");
    EXPECT_EQ(Manager::fnUpdateLibItemThumbnail(pItem), 1);
    EXPECT_EQ(CountRows("CACHE_DATA_TABLE"), 0);
    qfc::test::GiveBitmapCache(*pItem, 20, 10);
    ASSERT_EQ(Manager::fnUpdateLibItemThumbnail(pItem), 1);
    pItem->ChangeCache(nullptr, 0);
    EXPECT_EQ(Manager::fnUpdateLibItemThumbnail(pItem), 1);
    EXPECT_EQ(CountRows("CACHE_DATA_TABLE where CACHE_DATA_TYPE = 0"), 1);
}

TEST_F(EntriesThumbnails, UpdateLibItemThumbnail_WithoutItemOrDatabase_Fails) {
    EXPECT_EQ(Manager::fnUpdateLibItemThumbnail(nullptr), 0);
    CQItem item("Sunrise");
    qfc::test::GiveBitmapCache(item, 20, 10);
    LibraryOperation_UpdateLibItemThumbnail operation(&item, nullptr);
    EXPECT_EQ(operation.execute(), 0);
    qfc::test::RefuseWrites(DatabaseFile(), "CACHE_DATA_TABLE");
    EXPECT_EQ(Manager::fnUpdateLibItemThumbnail(&item), 0);
}

TEST_F(EntriesThumbnails, QueryLibItemThumbnailInfo_ListsEveryStoredBitmapCache) {
    CQItem* const pFirst = NewItem("First", 4);
    qfc::test::GiveBitmapCache(*pFirst, 30, 20);
    CQItem* const pSecond = NewItem("Second", 1);
    qfc::test::GiveBlackBox(*pSecond, 50);
    for (CQItem* const p : {pFirst, pSecond}) ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, p), 1);

    std::vector<_DS_LibItemTunmbnailInfo_> thumbnails(5);
    EXPECT_EQ(Manager::fnQueryLibItemThumbnailInfo(thumbnails), 1);
    ASSERT_EQ(thumbnails.size(), 1u);
    EXPECT_EQ(thumbnails[0].guidItem, pFirst->GetUniqueID());
    EXPECT_EQ(thumbnails[0].dwItemType, 4u);
    EXPECT_EQ(thumbnails[0].nReserved, 0);
    EXPECT_EQ(std::to_string(thumbnails[0].nCompressedSize),
              RawDb(DatabaseFile()).Cell("select COMPRESSED_SIZE from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 0"));
    EXPECT_EQ(thumbnails[0].sizeBitmapCache.cx, 30);
    EXPECT_EQ(thumbnails[0].sizeBitmapCache.cy, 20);
    EXPECT_EQ(thumbnails[0].strPath, "C:\\media\\First.avi");
}

bool Same(const _DS_LibItemTunmbnailInfo_& a, const _DS_LibItemTunmbnailInfo_& b) {
    return a.guidItem == b.guidItem && a.dwItemType == b.dwItemType && a.nReserved == b.nReserved &&
           a.nCompressedSize == b.nCompressedSize && a.sizeBitmapCache.cx == b.sizeBitmapCache.cx &&
           a.sizeBitmapCache.cy == b.sizeBitmapCache.cy && a.strPath == b.strPath;
}

TEST_F(EntriesThumbnails, QueryLibItemThumbnailInfo_GivesTheSameRowsFromSizesAndFromWholeRows) {
    for (int width = 8; width < 24; width += 4) {
        CQItem* const pItem = NewItem(("item" + std::to_string(width)).c_str(), static_cast<DWORD>(width));
        qfc::test::GiveBitmapCache(*pItem, width, 2 * width);
        ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, pItem), 1);
    }
    std::vector<_DS_LibItemTunmbnailInfo_> answers[2];
    for (const bool bShortcuts : {false, true}) {
        m_pClips->GetDBTools()->SetShortcuts(bShortcuts);
        LibraryOperation_QueryLibItemThumbnailInfo operation(m_pClips->GetDBTools());
        EXPECT_EQ(operation.execute(), 1);
        answers[bShortcuts] = operation.Thumbnails();
    }
    ASSERT_EQ(answers[0].size(), 4u);
    std::set<int> heights;
    for (const auto& info : answers[0]) heights.insert(info.sizeBitmapCache.cy);
    EXPECT_EQ(heights, (std::set<int>{16, 24, 32, 40}));
    EXPECT_TRUE(std::ranges::equal(answers[0], answers[1], Same));
}

TEST_F(EntriesThumbnails, QueryLibItemThumbnailInfo_PassesOverHostileRows) {
    RawDb(DatabaseFile())
        .Exec(
            "insert into CACHE_DATA_TABLE values(10, 0, X'0011', 0, X'0102');"
            "insert into CACHE_DATA_TABLE values(10, 0, X'0011', 0, 'text');"
            "insert into CACHE_DATA_TABLE values(999999999, 3, X'001122', 0, X'00112233445566778899AABBCCDDEEFF')");
    for (const bool bShortcuts : {true, false}) {
        m_pClips->GetDBTools()->SetShortcuts(bShortcuts);
        std::vector<_DS_LibItemTunmbnailInfo_> thumbnails;
        EXPECT_EQ(Manager::fnQueryLibItemThumbnailInfo(thumbnails), 1);
        ASSERT_EQ(thumbnails.size(), 1u);  // Known by its id, although its bytes are no bitmap.
        EXPECT_EQ(thumbnails[0].sizeBitmapCache.cx, -1);
        EXPECT_EQ(thumbnails[0].nCompressedSize, 3);
        EXPECT_TRUE(thumbnails[0].strPath.IsEmpty());
    }
}

// Kept: 1 says that the worker ran the query.
TEST_F(EntriesThumbnails, QueryLibItemThumbnailInfo_ThatFails_EmptiesTheListAndReportsSuccess) {
    RawDb(DatabaseFile()).Exec("drop table CACHE_DATA_TABLE");
    std::vector<_DS_LibItemTunmbnailInfo_> thumbnails(3);
    EXPECT_EQ(Manager::fnQueryLibItemThumbnailInfo(thumbnails), 1);
    EXPECT_TRUE(thumbnails.empty());
    for (DBTools* const pDBTools : {static_cast<DBTools*>(nullptr), m_pClips->GetDBTools()}) {
        LibraryOperation_QueryLibItemThumbnailInfo operation(pDBTools);
        EXPECT_EQ(operation.execute(), 0);
    }
}

}  // namespace
