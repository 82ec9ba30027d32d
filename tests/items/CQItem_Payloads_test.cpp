#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "tests/items/ItemBuilders.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace qfc::test;

unsigned SizeOf(const ByteVector& bytes) { return static_cast<unsigned>(bytes.size()); }

TEST(CQItem_BlackBox, ChangedBlackBox_IsTakenAndMarksModified) {
    CQItem item;
    EXPECT_EQ(item.ChangeBlackBox(PlainCopy(Pattern(20)), 20), 1);
    EXPECT_EQ(item.GetBlackBoxSize(), 20u);
    EXPECT_EQ(InMemory(item, qfc::kBlackBox), Pattern(20));
    EXPECT_EQ(item.IsModified(), 1);
}

TEST(CQItem_BlackBox, NullBlackBox_AnswersOneAndMarksNothing) {
    CQItem item;
    GiveBlackBox(item, Pattern(20));
    item.SetModified(0);
    EXPECT_EQ(item.ChangeBlackBox(nullptr, 0), 1);
    EXPECT_EQ(item.GetBlackBox(), nullptr);
    EXPECT_EQ(item.GetBlackBoxSize(), 0u);
    EXPECT_EQ(item.IsModified(), 0);
}

TEST(CQItem_BlackBox, ItsOwnBuffer_MayBeGivenAgain) {
    CQItem item;
    GiveBlackBox(item, Pattern(20));
    item.ChangeBlackBox(item.GetBlackBox(), 10);
    EXPECT_EQ(InMemory(item, qfc::kBlackBox), Pattern(10));
}

TEST(CQItem_BlackBox, Detached_BelongsToTheCaller) {
    CQItem item;
    GiveBlackBox(item, Pattern(20));
    item.SetModified(0);
    const qfc::PlainBlock taken(item.DetachBlackBox(), 20);
    ASSERT_TRUE(taken);
    EXPECT_EQ(ByteVector(taken.data(), taken.data() + 20), Pattern(20));
    EXPECT_EQ(item.GetBlackBoxSize(), 0u);
    EXPECT_TRUE(item.PayloadInMemory(qfc::kBlackBox).empty());
    EXPECT_EQ(item.IsModified(), 1);
}

TEST(CQItem_BlackBox, DetachedWithoutOne_IsNullAndMarksModified) {
    CQItem item;
    EXPECT_EQ(item.DetachBlackBox(), nullptr);
    EXPECT_EQ(item.IsModified(), 1);
}

TEST(CQItem_BlackBox, WithoutGalleryAndFile_NothingIsLoaded) {
    CQItem item;
    EXPECT_EQ(item.GetBlackBox(), nullptr);
    EXPECT_EQ(item.TryLoadBB(), 0);
    EXPECT_EQ(item.IsModified(), 0);
}

TEST(CQItem_BlackBox, InAFolderWithoutFile_NothingIsLoaded) {
    CQFolder folder;
    auto* const pItem = new CQItem;
    pItem->GetAttrib() = 1;
    folder.AddItem(pItem, 1);
    EXPECT_EQ(pItem->TryLoadBB(), 0);
    EXPECT_EQ(pItem->TryLoadFilm(), 0);
}

TEST(CQItem_Cache, WholeBitmap_IsTaken) {
    CQItem item;
    const auto dib = Dib24(100, 10);
    ASSERT_EQ(dib.size(), 40u + 300 * 10);
    EXPECT_EQ(item.ChangeCache(GlobalCopy(dib), SizeOf(dib)), 1);
    EXPECT_EQ(item.GetCacheSize(), 3040u);
    EXPECT_EQ(InMemory(item, qfc::kBitmapCache), dib);
    EXPECT_EQ(item.IsModified(), 1);
}

TEST(CQItem_Cache, BitmapOneByteShort_IsRefusedAndMarksModified) {
    CQItem item;
    const auto dib = DibOfSize(100, 10, 24, 40 + 300 * 10 - 1);
    const qfc::GlobalBlock block(GlobalCopy(dib), dib.size());
    EXPECT_EQ(item.ChangeCache(block.data(), SizeOf(dib)), 0);
    EXPECT_EQ(item.GetCache(), nullptr);
    EXPECT_EQ(item.GetCacheSize(), 0u);
    EXPECT_EQ(item.IsModified(), 1);
}

TEST(CQItem_Cache, ItsOwnBlock_MayBeGivenAgain) {
    CQItem item;
    GiveCache(item, Dib24(10, 10));
    item.SetModified(0);
    void* const pOwn = item.GetCache();
    EXPECT_EQ(item.ChangeCache(pOwn, SizeOf(Dib24(10, 10))), 1);
    EXPECT_EQ(item.GetCache(), pOwn);
    EXPECT_EQ(InMemory(item, qfc::kBitmapCache), Dib24(10, 10));
    EXPECT_EQ(item.IsModified(), 1);
}

TEST(CQItem_Cache, ItsOwnBlockWithTooSmallASize_IsTheCallersAfterwards) {
    CQItem item;
    GiveCache(item, Dib24(10, 10));
    void* const pOwn = item.GetCache();
    EXPECT_EQ(item.ChangeCache(pOwn, 50), 0);
    EXPECT_EQ(item.GetCache(), nullptr);
    EXPECT_EQ(item.GetCacheSize(), 0u);
    const qfc::GlobalBlock taken(pOwn, SizeOf(Dib24(10, 10)));
    EXPECT_EQ(ByteVector(taken.data(), taken.data() + taken.size()), Dib24(10, 10));
}

TEST(CQItem_Cache, RefusedBlock_StaysTheCallers) {
    const auto dib = DibOfSize(100, 10, 24, 3039);
    const qfc::GlobalBlock block(GlobalCopy(dib), dib.size());
    {
        CQItem item;
        EXPECT_EQ(item.ChangeCache(block.data(), SizeOf(dib)), 0);
    }
    EXPECT_EQ(ByteVector(block.data(), block.data() + block.size()), dib);
}

TEST(CQItem_Cache, RefusedBlock_StillEndsTheCacheBefore) {
    CQItem item;
    GiveCache(item, Dib24(4, 4));
    const auto dib = DibOfSize(100, 10, 24, 50);
    const qfc::GlobalBlock block(GlobalCopy(dib), dib.size());
    EXPECT_EQ(item.ChangeCache(block.data(), SizeOf(dib)), 0);
    EXPECT_EQ(item.GetCache(), nullptr);
}

TEST(CQItem_Cache, NullCache_AnswersOneAndMarksNothing) {
    CQItem item;
    GiveCache(item, Dib24(4, 4));
    item.SetModified(0);
    EXPECT_EQ(item.ChangeCache(nullptr, 0), 1);
    EXPECT_EQ(item.GetCache(), nullptr);
    EXPECT_EQ(item.IsModified(), 0);
}

struct DibCase {
    int nWidth;
    int nHeight;
    int nBits;
    std::size_t nRequired;
};

class CQItem_CacheSizes : public testing::TestWithParam<DibCase> {};

TEST_P(CQItem_CacheSizes, ExactSizeIsTakenAndOneByteLessIsNot) {
    const DibCase& given = GetParam();
    for (const bool bShort : {false, true}) {
        CQItem item;
        const auto dib = DibOfSize(given.nWidth, given.nHeight, given.nBits, given.nRequired - (bShort ? 1 : 0));
        void* const pBlock = GlobalCopy(dib);
        EXPECT_EQ(item.ChangeCache(pBlock, SizeOf(dib)), bShort ? 0 : 1);
        if (bShort) qfc::FreeGlobalBlock(pBlock);
    }
}

INSTANTIATE_TEST_SUITE_P(Depths, CQItem_CacheSizes,
                         testing::Values(DibCase{100, 10, 24, 3040},         // rows that need no padding
                                         DibCase{5, 3, 24, 40 + 16 * 3},     // 15 bytes padded to 16
                                         DibCase{10, 7, 8, 1064 + 12 * 7},   // the palette counts
                                         DibCase{1, 1, 8, 1064 + 4},         //
                                         DibCase{9, 2, 1, 40 + 4 * 2},       //
                                         DibCase{9, 2, 4, 40 + 4 * 2},       // 36 bits count as 4 bytes
                                         DibCase{33, 1, 1, 40 + 4},          // 33 bits too
                                         DibCase{3, 5, 32, 40 + 12 * 5},     //
                                         DibCase{5, -3, 24, 40 + 16 * 3}));  // stored from the top

TEST(CQItem_Cache, SizeBelowAHeader_IsRefusedUnread) {
    CQItem item;
    const qfc::GlobalBlock block(39);
    EXPECT_EQ(item.ChangeCache(block.data(), 39), 0);
    EXPECT_EQ(item.GetCache(), nullptr);
}

TEST(CQItem_Cache, ImpossibleBitmaps_AreRefused) {
    constexpr int kLargest = 0x7FFFFFFF;
    constexpr int kSmallest = -kLargest - 1;
    const DibCase cases[] = {{kLargest, kLargest, 32, 0}, {kLargest, kSmallest, 0xFFFF, 0},
                             {-100, 10, 24, 0},           {-100, -10, 24, 0},
                             {kSmallest, 1, 24, 0},       {1, kLargest, 24, 0}};
    for (const DibCase& given : cases) {
        CQItem item;
        const auto dib = DibOfSize(given.nWidth, given.nHeight, given.nBits, 3040);
        const qfc::GlobalBlock block(GlobalCopy(dib), dib.size());
        EXPECT_EQ(item.ChangeCache(block.data(), SizeOf(dib)), 0) << given.nWidth << " x " << given.nHeight;
    }
}

TEST(CQItem_Cache, BitmapCacheSize_IsThatOfTheHeader) {
    CQItem item;
    GiveCache(item, Dib24(12, 7));
    EXPECT_EQ(item.GetBitmapCacheSize().cx, 12);
    EXPECT_EQ(item.GetBitmapCacheSize().cy, 7);
}

TEST(CQItem_Cache, BitmapCacheSizeWithoutCache_IsMinusOne) {
    const CQItem item;
    EXPECT_EQ(item.GetBitmapCacheSize().cx, -1);
    EXPECT_EQ(item.GetBitmapCacheSize().cy, -1);
}

TEST(CQItem_Cache, PresentCache_NeedsNoLoading) {
    CQItem item;
    GiveCache(item, Dib24(2, 2));
    EXPECT_EQ(item.TryLoadBB(), 1);
}

TEST(CQItem_Film, ChangedFilm_IsTakenAndMarksModified) {
    CQItem item;
    EXPECT_EQ(item.ChangeFilm(static_cast<unsigned char*>(GlobalCopy(Pattern(60))), 60, 20), 1);
    EXPECT_EQ(item.GetFilmSize(), 60u);
    EXPECT_EQ(item.GetFrameSize(), 20u);
    EXPECT_EQ(InMemory(item, qfc::kFilm), Pattern(60));
    EXPECT_EQ(item.IsModified(), 1);
}

TEST(CQItem_Film, ItsOwnBlock_MayBeGivenAgain) {
    CQItem item;
    GiveFilm(item, Pattern(40), 10);
    unsigned char* const pOwn = item.GetFilm();
    EXPECT_EQ(item.ChangeFilm(pOwn, 40, 20), 1);
    EXPECT_EQ(item.GetFilm(), pOwn);
    EXPECT_EQ(InMemory(item, qfc::kFilm), Pattern(40));
    EXPECT_EQ(item.GetTotalFilmFrame(), 2u);
}

TEST(CQItem_Film, NullFilm_KeepsTheGivenSizesAndMarksNothing) {
    CQItem item;
    EXPECT_EQ(item.ChangeFilm(nullptr, 60, 20), 1);
    EXPECT_EQ(item.GetFilm(), nullptr);
    EXPECT_EQ(item.GetFilmSize(), 60u);
    EXPECT_EQ(item.GetFrameSize(), 20u);
    EXPECT_EQ(item.IsModified(), 0);
}

TEST(CQItem_Film, FrameCount_RoundsDown) {
    CQItem item;
    GiveFilm(item, Pattern(65), 20);
    EXPECT_EQ(item.GetTotalFilmFrame(), 3u);
}

TEST(CQItem_Film, FrameCountWithoutFilm_IsZero) {
    CQItem item;
    EXPECT_EQ(item.GetTotalFilmFrame(), 0u);
    item.GetAttrib() = 1;
    EXPECT_EQ(item.GetTotalFilmFrame(), 0u);
}

TEST(CQItem_Film, FrameSizeZero_GivesNoFrames) {
    CQItem item;
    GiveFilm(item, Pattern(60), 0);
    EXPECT_EQ(item.GetTotalFilmFrame(), 0u);
    EXPECT_EQ(item.GetFilmFrame(0), nullptr);
}

TEST(CQItem_Film, Frames_StandBackToBack) {
    CQItem item;
    GiveFilm(item, Pattern(60), 20);
    for (unsigned nIndex = 0; nIndex < 3; ++nIndex) {
        EXPECT_EQ(item.GetFilmFrame(nIndex), item.GetFilm() + 20 * nIndex);
    }
}

TEST(CQItem_Film, IndexAtOrPastTheEnd_GivesTheAddressPastTheLastFrame) {
    CQItem item;
    GiveFilm(item, Pattern(60), 20);
    EXPECT_EQ(item.GetFilmFrame(3), item.GetFilm() + 60);
    EXPECT_EQ(item.GetFilmFrame(5), item.GetFilm() + 60);
    EXPECT_EQ(item.GetFilmFrame(0xFFFFFFFF), item.GetFilm() + 60);
}

TEST(CQItem_Film, WithoutItsAttributeBit_IsNotHandedOut) {
    CQItem item;
    GiveFilm(item, Pattern(60), 20);
    item.GetAttrib() = 2;
    EXPECT_EQ(item.TryLoadFilm(), 1);
    EXPECT_EQ(item.GetFilmFrame(0), nullptr);
    EXPECT_EQ(item.GetTotalFilmFrame(), 3u);
}

TEST(CQItem_Film, NoFilmInMemory_GivesNoFrame) {
    CQItem item;
    EXPECT_EQ(item.GetFilmFrame(0), nullptr);
    item.GetAttrib() = 1;
    item.ChangeFilm(nullptr, 60, 20);
    EXPECT_EQ(item.GetFilmFrame(0), nullptr);
}

TEST(CQItem_GalleryMap, ItemWithoutParent_IsNotInAMap) { EXPECT_EQ(CQItem().IsExistInGalleryItemMap(), 0); }

TEST(CQItem_GalleryMap, RootThatIsNoGallery_HasNoMap) {
    CQFolder root;
    CQFolder* const pFolder = AddSub(root, "a");
    auto* const pItem = new CQItem;
    pFolder->AddItem(pItem, 1);
    EXPECT_EQ(pItem->IsExistInGalleryItemMap(), 0);
}

TEST(CQItem_GalleryMap, GalleryKnowsTheItemOnceItIsInItsMap) {
    CQGallery gallery;
    CQFolder* const pFolder = AddSub(gallery, "a");
    auto* const pItem = new CQItem;
    pFolder->AddItem(pItem, 1);
    EXPECT_EQ(pItem->IsExistInGalleryItemMap(), 0);
    gallery.AddItem2Map(pItem, 1);
    EXPECT_EQ(pItem->IsExistInGalleryItemMap(), 1);
}

}  // namespace
