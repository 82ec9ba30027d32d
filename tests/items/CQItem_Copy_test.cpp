#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "tests/items/ItemBuilders.h"

#include <gtest/gtest.h>
#include <list>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace qfc::test;
namespace mask = qfc::copy_mask;

DBTools* SomeTools() {
    static int nMarker;
    return reinterpret_cast<DBTools*>(&nMarker);
}

// Every field set, and taken by a folder as its second item: so it has a parent, the attached flag and the number 1.
struct FilledSource {
    FilledSource() : pItem(NewFilledItem(1)) {
        pItem->fnSetDbTools(SomeTools());
        pItem->AddLibTag(GuidOf(40));
        folder.AddItem(new CQItem("first"), 1);
        folder.AddItem(pItem, 1);
        EXPECT_NE(pItem->GetNumber(), 0u);
    }
    CQFolder folder;
    CQItem* pItem;  // The folder's.
};

TEST(CQItem_CopyConstructor, DescriptiveFields_AreTakenAlong) {
    const FilledSource source;
    const CQItem copy(*source.pItem);
    EXPECT_EQ(copy.GetItemName(), "Item 1");
    EXPECT_EQ(copy.GetFileName(), "C:\\media\\clip.avi");
    EXPECT_EQ(copy.GetDescription(), "2020 1 2 3 4 5 2020 1 2 3 4 6");
    EXPECT_EQ(copy.GetAnnotation(), "a note");
    EXPECT_EQ(copy.GetTemplatePath(), "C:\\templates\\one");
    EXPECT_EQ(copy.GetAttrib(), 1u);
    EXPECT_EQ(copy.GetItemType(), 1u);
    EXPECT_EQ(copy.fnGetTimeStamp(), 1'600'000'000u);
    EXPECT_EQ(copy.fnGetDbTools(), SomeTools());
    EXPECT_EQ(copy.GetFrameSize(), 300u);
    EXPECT_EQ(copy.GetCurThumbFrameNum(), 4u);
    EXPECT_EQ(copy.GetOrgThumbFrameNum(), 5u);
}

TEST(CQItem_CopyConstructor, Payloads_AreCopiesOfTheirOwn) {
    const FilledSource source;
    const CQItem copy(*source.pItem);
    for (const int nKind : {qfc::kBitmapCache, qfc::kBlackBox, qfc::kFilm}) {
        EXPECT_EQ(InMemory(copy, nKind), InMemory(*source.pItem, nKind)) << "kind " << nKind;
        EXPECT_NE(copy.PayloadInMemory(nKind).data(), source.pItem->PayloadInMemory(nKind).data()) << "kind " << nKind;
    }
    EXPECT_EQ(copy.GetBlackBoxSize(), 3000u);
    EXPECT_EQ(copy.GetCacheSize(), source.pItem->GetCacheSize());
    EXPECT_EQ(copy.GetFilmSize(), 900u);
}

TEST(CQItem_CopyConstructor, AbsentPayloads_StayAbsentWithSizeZero) {
    CQItem source;
    source.ChangeFilm(nullptr, 500, 100);
    const CQItem copy(source);
    EXPECT_EQ(copy.GetFilm(), nullptr);
    EXPECT_EQ(copy.GetFilmSize(), 0u);
    EXPECT_EQ(copy.GetFrameSize(), 100u);
    EXPECT_EQ(copy.GetCache(), nullptr);
    EXPECT_EQ(copy.GetCacheSize(), 0u);
    EXPECT_EQ(copy.GetBlackBoxSize(), 0u);
}

TEST(CQItem_CopyConstructor, Identity_IsLeftBehind) {
    const FilledSource source;
    const CQItem copy(*source.pItem);
    EXPECT_FALSE(copy.GetUniqueID() == source.pItem->GetUniqueID());
    EXPECT_FALSE(copy.GetUniqueID() == GUID_NULL);
    EXPECT_EQ(copy.GetNumber(), 0u);
    EXPECT_EQ(copy.GetDBID(), 0);
    EXPECT_EQ(copy.GetParentFolder(), nullptr);
    EXPECT_EQ(copy.GetIsDeletable(), 0);
    EXPECT_EQ(copy.IsTagExist(GuidOf(40)), 0);
}

TEST(CQItem_CopyConstructor, Copy_IsMarkedModified) {
    const CQItem source;
    const CQItem copy(source);
    EXPECT_EQ(source.IsModified(), 0);
    EXPECT_EQ(copy.IsModified(), 1);
}

TEST(CQItem_CopyConstructor, CopyOfAnAttachedItem_CanBeAttachedItself) {
    CQFolder first;
    auto* const pItem = new CQItem("one");
    pItem->SetItemType(64);
    first.AddItem(pItem, 1);
    CQFolder second;
    auto* const pCopy = new CQItem(*pItem);
    second.AddItem(pCopy, 1);
    EXPECT_EQ(pCopy->GetParentFolder(), &second);
}

std::string TextOf(const ByteVector& bytes) { return std::string(bytes.begin(), bytes.end()); }

// All that an item holds by the mask bit that copies it; under 0 what none copies.
std::map<DWORD, std::string> GroupsOf(const CQItem& item) {
    std::ostringstream fields;
    for (const CString& text : {item.GetItemName(), item.GetFileName(), item.GetDescription(), item.GetAnnotation()}) {
        fields << text.View() << '|';
    }
    fields << item.GetAttrib() << '|' << item.GetItemType() << '|' << item.GetFrameSize() << '|'
           << item.fnGetTimeStamp();
    std::ostringstream cache;
    cache << item.GetCurThumbFrameNum() << '|' << item.GetOrgThumbFrameNum() << '|' << item.GetCacheSize() << '|'
          << TextOf(InMemory(item, qfc::kBitmapCache));
    std::ostringstream own;
    own << item.GetTemplatePath().View() << '|' << qfc::GuidToText(item.GetUniqueID()) << '|' << item.GetNumber() << '|'
        << item.GetDBID() << '|' << item.GetIsDeletable() << '|' << item.GetParentFolder() << '|'
        << item.fnGetDbTools();
    std::list<GUID> tags;
    item.CopyTagVec(tags);
    for (const GUID& tag : tags) own << '|' << qfc::GuidToText(tag);
    return {{0, own.str()},
            {mask::kFields, fields.str()},
            {mask::kBlackBox, std::to_string(item.GetBlackBoxSize()) + TextOf(InMemory(item, qfc::kBlackBox))},
            {mask::kCache, cache.str()},
            {mask::kFilm, std::to_string(item.GetFilmSize()) + TextOf(InMemory(item, qfc::kFilm))}};
}

// As full as the source, and different in everything.
void FillTarget(CQItem& item) {
    item.SetItemName("Item 2");
    item.SetFileName("C:\\media\\other.avi");
    item.GetDescription() = "another description";
    item.GetAnnotation() = "another note";
    item.SetTemplatePath("C:\\templates\\two");
    item.SetItemType(2);
    item.fnSetTimeStamp(5);
    item.SetDBID(78);
    item.AddLibTag(GuidOf(41));
    item.GetCurThumbFrameNum() = 6;
    item.GetOrgThumbFrameNum() = 7;
    GiveBlackBox(item, Pattern(400, 8));
    GiveCache(item, Dib24(12, 8));
    GiveFilm(item, Pattern(800, 9), 200);
    item.GetAttrib() = 3;
}

class CQItem_Copy : public testing::Test {
protected:
    // Into an untouched item and into a filled one.
    void ExpectGroupsCopied(DWORD dwMask) {
        const auto source = GroupsOf(*m_source.pItem);
        for (const bool bFilled : {false, true}) {
            CQItem target;
            if (bFilled) FillTarget(target);
            target.SetModified(0);
            const auto before = GroupsOf(target);
            target.Copy(m_source.pItem, dwMask);
            EXPECT_EQ(target.IsModified(), 1) << "mask " << dwMask;
            for (const auto& [dwBit, text] : GroupsOf(target)) {
                ASSERT_NE(before.at(dwBit), source.at(dwBit));
                EXPECT_TRUE(text == ((dwMask & dwBit) != 0 ? source : before).at(dwBit))
                    << "mask " << dwMask << ", group " << dwBit << (bFilled ? ", filled" : "");
            }
        }
    }
    FilledSource m_source;
};

TEST_F(CQItem_Copy, MaskZero_ChangesOnlyTheModifiedFlag) { ExpectGroupsCopied(0); }

TEST_F(CQItem_Copy, EveryMask_CopiesItsGroupsAndLeavesAllElse) {
    for (DWORD dwMask = 0; dwMask < 32; ++dwMask) ExpectGroupsCopied(dwMask);
    ExpectGroupsCopied(mask::kAll);
}

TEST_F(CQItem_Copy, BitsBeyondTheTable_CopyNothing) { ExpectGroupsCopied(0xFFFFFFE0); }

TEST_F(CQItem_Copy, NullSource_DoesNothing) {
    CQItem target("kept");
    target.Copy(nullptr, mask::kAll);
    EXPECT_EQ(target.GetItemName(), "kept");
    EXPECT_EQ(target.IsModified(), 0);
}

TEST_F(CQItem_Copy, TheItemItself_IsOnlyMarkedModified) {
    CQItem& item = *m_source.pItem;
    const auto blackBox = InMemory(item, qfc::kBlackBox);
    const auto film = InMemory(item, qfc::kFilm);
    item.SetModified(0);
    item.Copy(&item, mask::kAll);
    EXPECT_EQ(item.IsModified(), 1);
    EXPECT_EQ(InMemory(item, qfc::kBlackBox), blackBox);
    EXPECT_EQ(InMemory(item, qfc::kFilm), film);
}

TEST_F(CQItem_Copy, FieldsBit_CopiesTheseFields) {
    CQItem target;
    target.Copy(m_source.pItem, mask::kFields);
    EXPECT_EQ(target.GetItemName(), "Item 1");
    EXPECT_EQ(target.GetFileName(), "C:\\media\\clip.avi");
    EXPECT_EQ(target.GetDescription(), "2020 1 2 3 4 5 2020 1 2 3 4 6");
    EXPECT_EQ(target.GetAnnotation(), "a note");
    EXPECT_EQ(target.GetAttrib(), 1u);
    EXPECT_EQ(target.GetItemType(), 1u);
    EXPECT_EQ(target.GetFrameSize(), 300u);
    EXPECT_EQ(target.fnGetTimeStamp(), 1'600'000'000u);
}

TEST_F(CQItem_Copy, CacheBit_CopiesTheThumbnailFramesToo) {
    CQItem target;
    target.Copy(m_source.pItem, mask::kCache);
    EXPECT_EQ(InMemory(target, qfc::kBitmapCache), InMemory(*m_source.pItem, qfc::kBitmapCache));
    EXPECT_EQ(target.GetCurThumbFrameNum(), 4u);
    EXPECT_EQ(target.GetOrgThumbFrameNum(), 5u);
}

TEST_F(CQItem_Copy, FilmBit_LeavesTheFrameSize) {
    CQItem target;
    target.Copy(m_source.pItem, mask::kFilm);
    EXPECT_EQ(InMemory(target, qfc::kFilm), InMemory(*m_source.pItem, qfc::kFilm));
    EXPECT_EQ(target.GetFilmSize(), 900u);
    EXPECT_EQ(target.GetFrameSize(), 0u);
}

TEST_F(CQItem_Copy, SourceWithoutPayloads_EmptiesTheTarget) {
    const CQItem empty;
    CQItem& target = *m_source.pItem;
    target.Copy(&empty, mask::kBlackBox | mask::kCache | mask::kFilm);
    EXPECT_EQ(target.GetBlackBoxSize(), 0u);
    EXPECT_TRUE(target.PayloadInMemory(qfc::kBlackBox).empty());
    EXPECT_EQ(target.GetCache(), nullptr);
    EXPECT_EQ(target.GetCacheSize(), 0u);
    EXPECT_EQ(target.GetFilm(), nullptr);
    EXPECT_EQ(target.GetFilmSize(), 0u);
    EXPECT_EQ(target.GetFrameSize(), 300u);
}

TEST_F(CQItem_Copy, IdentityAndPlace_AreNeverCopied) {
    CQItem target;
    const GUID guid = target.GetUniqueID();
    target.Copy(m_source.pItem, mask::kAll);
    EXPECT_TRUE(target.GetUniqueID() == guid);
    EXPECT_EQ(target.GetNumber(), 0u);
    EXPECT_EQ(target.GetDBID(), 0);
    EXPECT_TRUE(target.GetTemplatePath().IsEmpty());
    EXPECT_EQ(target.IsTagExist(GuidOf(40)), 0);
    EXPECT_EQ(target.GetParentFolder(), nullptr);
    EXPECT_EQ(target.GetIsDeletable(), 0);
    EXPECT_EQ(target.fnGetDbTools(), nullptr);
}

TEST_F(CQItem_Copy, CopyOfAnAttachedItem_CanStillBeAttachedItself) {
    CQFolder other;
    auto* const pTarget = new CQItem;
    pTarget->Copy(m_source.pItem, mask::kAll);
    other.AddItem(pTarget, 1);
    EXPECT_EQ(pTarget->GetParentFolder(), &other);
}

TEST_F(CQItem_Copy, SizesWithoutBytes_AreNotTaken) {
    CQItem source;
    source.ChangeBlackBox(nullptr, 30);
    source.ChangeCache(nullptr, 40);
    source.ChangeFilm(nullptr, 500, 100);
    CQItem& target = *m_source.pItem;
    target.Copy(&source, mask::kBlackBox | mask::kCache | mask::kFilm);
    EXPECT_EQ(target.GetBlackBoxSize(), 0u);
    EXPECT_EQ(target.GetCacheSize(), 0u);
    EXPECT_EQ(target.GetFilmSize(), 0u);
    EXPECT_EQ(target.GetFilm(), nullptr);
}

TEST(CQItem_Equals, Null_IsNeverEqual) { EXPECT_EQ(CQItem().Equals(nullptr), 0); }

TEST(CQItem_Equals, NamesAreComparedWithCase) {
    CQItem lower("clip");
    CQItem same("clip");
    CQItem upper("Clip");
    EXPECT_EQ(lower.Equals(&same), 1);
    EXPECT_EQ(lower.Equals(&upper), 0);
}

TEST(CQItem_Equals, TypesMustAgree) {
    CQItem video;
    CQItem filter;
    video.SetItemType(1);
    filter.SetItemType(128);
    EXPECT_EQ(video.Equals(&filter), 0);
}

TEST(CQItem_Equals, FilmsAreComparedByteForByte) {
    CQItem one;
    CQItem other;
    auto bytes = Pattern(200);
    GiveFilm(one, bytes, 100);
    GiveFilm(other, bytes, 100);
    EXPECT_EQ(one.Equals(&other), 1);
    bytes[199] ^= 1;
    GiveFilm(other, bytes, 100);
    EXPECT_EQ(one.Equals(&other), 0);
    GiveFilm(other, Pattern(100), 100);
    EXPECT_EQ(one.Equals(&other), 0);
}

TEST(CQItem_Equals, FilmsThatCannotBeLoaded_AreNotEqual) {
    CQItem one;
    CQItem other;
    one.ChangeFilm(nullptr, 200, 100);
    other.ChangeFilm(nullptr, 200, 100);
    EXPECT_EQ(one.Equals(&other), 0);
    GiveFilm(other, Pattern(200), 100);
    EXPECT_EQ(one.Equals(&other), 0);
}

// A kind of item that fills the data block.
class ItemWithData : public CQItem {
public:
    explicit ItemWithData(const ByteVector& bytes) { Fill(bytes); }
    explicit ItemWithData(const CQItem& source) : CQItem(source) {}
    void Fill(const ByteVector& bytes) {
        ChangeDataBlock(bytes.empty() ? nullptr : PlainCopy(bytes), static_cast<unsigned>(bytes.size()));
    }
    ByteVector Data() const {
        const auto* const pFirst = reinterpret_cast<const BYTE*>(GetDataBlock().data());
        return GetDataBlock().empty() ? ByteVector{} : ByteVector(pFirst, pFirst + GetDataBlock().size());
    }
};

TEST(CQItem_DataBlock, CopyConstructor_MakesACopyOfItsOwn) {
    ItemWithData source(Pattern(50));
    const ItemWithData copy(static_cast<const CQItem&>(source));
    source.Fill(Pattern(50, 9));
    EXPECT_EQ(copy.Data(), Pattern(50));
}

TEST(CQItem_DataBlock, OnlyItsOwnBit_CopiesIt) {
    const ItemWithData source(Pattern(50));
    for (DWORD dwMask = 0; dwMask < 32; ++dwMask) {
        ItemWithData target(Pattern(5, 3));
        target.Copy(&source, dwMask);
        EXPECT_EQ(target.Data(), (dwMask & mask::kDataBlock) != 0 ? Pattern(50) : Pattern(5, 3)) << "mask " << dwMask;
    }
}

TEST(CQItem_DataBlock, SourceWithoutOne_EmptiesTheTarget) {
    const CQItem empty;
    ItemWithData target(Pattern(5));
    target.Copy(&empty, mask::kDataBlock);
    EXPECT_EQ(target.Data(), ByteVector{});
    CQItem none;
    EXPECT_EQ(target.Equals(&none), 1);
}

TEST(CQItem_DataBlock, EqualsComparesItsBytes) {
    ItemWithData one(Pattern(50));
    ItemWithData other(Pattern(50));
    EXPECT_EQ(one.Equals(&other), 1);
    other.Fill(Pattern(50, 2));
    EXPECT_EQ(one.Equals(&other), 0);
    other.Fill(Pattern(49));
    EXPECT_EQ(one.Equals(&other), 0);
}

TEST(CQItem_Equals, GuidFileAndBlackBox_DoNotMatter) {
    CQItem one("same");
    CQItem other("same");
    one.SetFileName("a");
    other.SetFileName("b");
    GiveBlackBox(one, Pattern(10));
    EXPECT_EQ(one.Equals(&other), 1);
}

TEST(CQItem_IsSameItem, TheGuidAloneDecides) {
    CQItem one("a");
    CQItem other("b");
    EXPECT_EQ(one.IsSameItem(&other), 0);
    other.SetUniqueID(one.GetUniqueID());
    EXPECT_EQ(one.IsSameItem(&other), 1);
    EXPECT_EQ(one.IsSameItem(nullptr), 0);
}

TEST(CQItem_IsSameItem, EveryByteOfTheGuidCounts) {
    CQItem one;
    for (std::size_t i = 0; i < sizeof(GUID); ++i) {
        CQItem other;
        GUID guid = one.GetUniqueID();
        reinterpret_cast<BYTE*>(&guid)[i] ^= 0x80;
        other.SetUniqueID(guid);
        EXPECT_EQ(one.IsSameItem(&other), 0) << "byte " << i;
    }
}

}  // namespace
