#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "platform/compress/Compression.h"
#include "tests/items/ItemLibrary.h"
#include "tests/support/ConverterFaults.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace qfc::test;

class CQItem_DbBuffers : public StoredPayloadsFixture {};

// --- Payloads: into a buffer of the caller -------------------------------------------------------------------------

TEST_F(CQItem_DbBuffers, IntoNoBuffer_OneIsAllocatedByKind) {
    const auto pItem = Restarted();
    unsigned nSize = 0;
    void* pData = nullptr;
    ASSERT_EQ(pItem->LoadCacheDataFromDb(nSize, &pData, 1), 1);
    const qfc::PlainBlock blackBox(pData, nSize);
    EXPECT_EQ(nSize, 3000u);
    EXPECT_EQ(ByteVector(blackBox.data(), blackBox.data() + nSize), Pattern(3000, 1));

    nSize = 0;
    pData = nullptr;
    ASSERT_EQ(pItem->LoadCacheDataFromDb(nSize, &pData, 2), 1);
    const qfc::GlobalBlock film(pData, nSize);
    EXPECT_EQ(nSize, 900u);
    EXPECT_TRUE(pItem->PayloadInMemory(qfc::kFilm).empty());
}

TEST_F(CQItem_DbBuffers, IntoALargeEnoughBuffer_ItIsReused) {
    InsertPayload(1, "4", "0", "X'01020304'");
    const qfc::PlainBlock buffer(10);
    unsigned nSize = 10;
    void* pData = buffer.data();
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 1);
    EXPECT_EQ(pData, buffer.data());
    EXPECT_EQ(nSize, 4u);
    EXPECT_EQ(ByteVector(buffer.data(), buffer.data() + 4), (ByteVector{1, 2, 3, 4}));
}

TEST_F(CQItem_DbBuffers, IntoATooSmallBuffer_ItIsReplaced) {
    const auto pItem = Restarted();
    unsigned nSize = 2;
    void* pData = qfc::AllocPlainBlock(2);
    ASSERT_EQ(pItem->LoadCacheDataFromDb(nSize, &pData, 1), 1);
    const qfc::PlainBlock blackBox(pData, nSize);
    EXPECT_EQ(ByteVector(blackBox.data(), blackBox.data() + nSize), Pattern(3000, 1));
}

TEST_F(CQItem_DbBuffers, WithoutRow_BufferAndSizeAreLeftAlone) {
    BYTE byte = 7;
    unsigned nSize = 1;
    void* pData = &byte;
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 0);
    EXPECT_EQ(pData, &byte);
    EXPECT_EQ(nSize, 1u);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, nullptr, 1), 0);
}

TEST_F(CQItem_DbBuffers, AnnouncedBytesThatAreMissing_LeaveTheSizeAnnounced) {
    InsertPayload(1, "10", "0", "X''");
    unsigned nSize = 0;
    void* pData = nullptr;
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 0);
    EXPECT_EQ(pData, nullptr);
    EXPECT_EQ(nSize, 10u);
}

TEST_F(CQItem_DbBuffers, CorruptBytes_EndTheCallersBuffer) {
    InsertPayload(1, "64", "64", BlobLiteral(Pattern(64)));
    unsigned nSize = 64;
    void* pData = qfc::AllocPlainBlock(64);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 0);
    EXPECT_EQ(pData, nullptr);
    EXPECT_EQ(nSize, 0u);
}

TEST_F(CQItem_DbBuffers, SizeZeroIntoNoBuffer_AllocatesNothing) {
    InsertPayload(1, "0", "0", "X'0011'");
    unsigned nSize = 7;
    void* pData = nullptr;
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 1);
    EXPECT_EQ(pData, nullptr);
    EXPECT_EQ(nSize, 0u);
}

TEST_F(CQItem_DbBuffers, SizeZeroIntoABuffer_LeavesTheBufferAlone) {
    InsertPayload(1, "0", "0", "X'0011'");
    BYTE bytes[2] = {7, 8};
    unsigned nSize = 2;
    void* pData = bytes;
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 1);
    EXPECT_EQ(pData, bytes);
    EXPECT_EQ(nSize, 0u);
    EXPECT_EQ(bytes[0], 7);
    EXPECT_EQ(bytes[1], 8);
}

// The size tells the size of the buffer, which stays the caller's.
TEST_F(CQItem_DbBuffers, AnnouncedBytesThatAreMissing_LeaveTheCallersBufferWithItsSize) {
    BYTE bytes[2] = {7, 8};
    for (const char* pszBytes : {"X''", "NULL"}) {
        Sql("delete from CACHE_DATA_TABLE");
        InsertPayload(1, "10", "0", pszBytes);
        unsigned nSize = 2;
        void* pData = bytes;
        EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 0) << pszBytes;
        EXPECT_EQ(pData, bytes) << pszBytes;
        EXPECT_EQ(nSize, 2u) << pszBytes;
        EXPECT_EQ(bytes[0], 7) << pszBytes;
    }
}

TEST_F(CQItem_DbBuffers, BitmapIntoNoBuffer_IsAGlobalBlock) {
    const auto pItem = Restarted();
    unsigned nSize = 0;
    void* pData = nullptr;
    ASSERT_EQ(pItem->LoadCacheDataFromDb(nSize, &pData, 0), 1);
    EXPECT_NE(GlobalHandle(pData), nullptr);
    const qfc::GlobalBlock bitmap(pData, nSize);
    EXPECT_EQ(ByteVector(bitmap.data(), bitmap.data() + nSize), Dib24(10, 10));
    EXPECT_EQ(pItem->GetCache(), nullptr);
}

TEST_F(CQItem_DbBuffers, QueryThatFails_LeavesBufferSizeAndMembersAlone) {
    GiveBlackBox(m_item, Pattern(10));
    Sql("drop table CACHE_DATA_TABLE");
    BYTE byte = 7;
    unsigned nSize = 1;
    void* pData = &byte;
    for (const DWORD dwKind : {0u, 1u, 2u}) {
        EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, dwKind), 0) << dwKind;
        EXPECT_EQ(m_item.LoadCacheDataFromDb(dwKind), 0) << dwKind;
    }
    EXPECT_EQ(pData, &byte);
    EXPECT_EQ(nSize, 1u);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(InMemory(m_item, qfc::kBlackBox), Pattern(10));
}

// --- Without the compressor ----------------------------------------------------------------------------------------

class WithoutDecompressor {
public:
    WithoutDecompressor() : m_former(qfc::SetCompressionBinding({nullptr, nullptr})) {}
    ~WithoutDecompressor() { qfc::SetCompressionBinding(m_former); }

private:
    qfc::CompressionBinding m_former;
};

TEST_F(CQItem_DbBuffers, CompressedRowsWithoutDecompressor_EndTheBufferAndItsSize) {
    const auto pItem = Restarted();
    const std::string compressed = "COMPRESSED_SIZE > 0 and CACHE_DATA_TYPE = 1";
    ASSERT_EQ(CountOf("CACHE_DATA_TABLE where " + compressed), "1") << "the test needs a compressed row";
    const WithoutDecompressor without;
    unsigned nSize = 3000;
    void* pData = qfc::AllocPlainBlock(3000);
    EXPECT_EQ(pItem->LoadCacheDataFromDb(nSize, &pData, 1), 0);
    EXPECT_EQ(pData, nullptr);
    EXPECT_EQ(nSize, 0u);
    GiveBlackBox(*pItem, Pattern(8));
    EXPECT_EQ(pItem->LoadCacheDataFromDb(1), 0);
    EXPECT_TRUE(pItem->PayloadInMemory(qfc::kBlackBox).empty());
    EXPECT_EQ(pItem->GetBlackBoxSize(), 0u);
    EXPECT_EQ(CountOf("CACHE_DATA_TABLE where " + compressed), "1") << "the row stays";
}

// A thread's first payload, while there is no memory for what unpacks it.
TEST_F(CQItem_DbBuffers, CompressedRowsThatCannotBeUnpackedNow_AreReadTheNextTime) {
    const auto pItem = Restarted();
    OnNewThread([&] {
        {
            const ConverterFaults faults;
            EXPECT_EQ(pItem->LoadCacheDataFromDb(1), 0);
            EXPECT_EQ(faults.Refused(), 1);
        }
        EXPECT_EQ(pItem->LoadCacheDataFromDb(1), 1);
    });
    const auto loaded = pItem->PayloadInMemory(qfc::kBlackBox);
    EXPECT_EQ(loaded.size(), 3000u);
}

TEST_F(CQItem_DbBuffers, RawRowsWithoutDecompressor_AreRead) {
    InsertPayload(1, "4", "0", "X'01020304'");
    const WithoutDecompressor without;
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 1);
    EXPECT_EQ(InMemory(m_item, qfc::kBlackBox), (ByteVector{1, 2, 3, 4}));
}

TEST_F(CQItem_DbBuffers, WhatIsWrittenWithoutCompressor_IsRawAndComesBack) {
    {
        const WithoutDecompressor without;
        const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
        ASSERT_TRUE(m_library.Tools()->UpdateItemDB(pItem.get()));
    }
    EXPECT_EQ(CountOf("CACHE_DATA_TABLE where COMPRESSED_SIZE = 0"), "3");
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 1);
    EXPECT_EQ(InMemory(m_item, qfc::kBlackBox), Pattern(3000, 1));
}

TEST_F(CQItem_DbBuffers, NullSizeOfACompressedRow_IsThatOfTheBlackBoxAsWell) {
    const auto pItem = Restarted();
    Sql("update CACHE_DATA_TABLE set PRE_COMPRESSED_SIZE = NULL");
    Sql("update CACHE_DATA_TABLE set CACHE_DATA_TYPE = 9 where CACHE_DATA_TYPE = 0");
    Sql("update CACHE_DATA_TABLE set CACHE_DATA_TYPE = 0 where CACHE_DATA_TYPE = 1");
    ASSERT_EQ(CountOf("CACHE_DATA_TABLE where CACHE_DATA_TYPE = 0 and COMPRESSED_SIZE > 0"), "1");
    GiveBlackBox(*pItem, Pattern(3000, 99));
    EXPECT_EQ(pItem->LoadCacheDataFromDb(0), 1);
    EXPECT_EQ(InMemory(*pItem, qfc::kBitmapCache), Pattern(3000, 1));
    // Another size than that of the black box is not the one that was compressed.
    GiveBlackBox(*pItem, Pattern(2999));
    EXPECT_EQ(pItem->LoadCacheDataFromDb(0), 0);
    EXPECT_EQ(pItem->GetCache(), nullptr);
}

}  // namespace
