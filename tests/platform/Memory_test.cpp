#include "platform/os/Memory.h"

#include "platform/os/LastError.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace {

bool IsZero(const void* bytes, std::size_t size) {
    const auto* first = static_cast<const BYTE*>(bytes);
    return std::all_of(first, first + size, [](BYTE byte) { return byte == 0; });
}

TEST(GlobalMemory, IsZeroedAndKeepsItsAddress) {
    const HGLOBAL block = GlobalAlloc(GHND, 1000);
    ASSERT_NE(block, nullptr);
    void* bytes = GlobalLock(block);
    ASSERT_NE(bytes, nullptr);
    EXPECT_NE(bytes, block);
    EXPECT_TRUE(IsZero(bytes, 1000));
    EXPECT_EQ(GlobalLock(block), bytes);
    EXPECT_GE(GlobalSize(block), 1000u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % alignof(std::max_align_t), 0u);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, UnlockTellsWhetherLocksRemain) {
    const HGLOBAL block = GlobalAlloc(GHND, 8);
    GlobalLock(block);
    GlobalLock(block);
    EXPECT_NE(GlobalUnlock(block), 0);
    EXPECT_EQ(GlobalUnlock(block), 0);
    EXPECT_EQ(GlobalUnlock(block), 0);
    GlobalFree(block);
}

TEST(GlobalMemory, HandleOfAPointerIsGivenBack) {
    const HGLOBAL block = GlobalAlloc(GHND, 8);
    EXPECT_EQ(GlobalHandle(GlobalLock(block)), block);
    EXPECT_EQ(GlobalHandle(nullptr), nullptr);
    GlobalFree(block);
}

TEST(GlobalMemory, BlockOfSizeZeroHasAHandleButNoBytes) {
    const HGLOBAL block = GlobalAlloc(GHND, 0);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalLock(block), nullptr);
    EXPECT_EQ(GlobalSize(block), 0u);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, ImpossibleSizeGivesNull) {
    EXPECT_EQ(GlobalAlloc(GHND, std::numeric_limits<std::size_t>::max()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(qfc::AllocGlobalBlock(std::numeric_limits<std::size_t>::max()), nullptr);
    EXPECT_EQ(qfc::AllocPlainBlock(std::numeric_limits<std::size_t>::max()), nullptr);
}

TEST(GlobalMemory, OnlyMoveableBlocksAreGiven) { EXPECT_EQ(GlobalAlloc(GMEM_ZEROINIT, 8), nullptr); }

TEST(GlobalMemory, NullIsNoBlock) {
    EXPECT_EQ(GlobalLock(nullptr), nullptr);
    EXPECT_EQ(GlobalUnlock(nullptr), 0);
    EXPECT_EQ(GlobalSize(nullptr), 0u);
    EXPECT_EQ(GlobalFree(nullptr), nullptr);
}

TEST(GlobalMemory, WhatIsNoHandleIsReturned) {
    alignas(16) BYTE foreign[64] = {};
    EXPECT_EQ(GlobalFree(foreign), foreign);
    EXPECT_EQ(GlobalLock(foreign), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(PayloadAllocators, GlobalBlockIsLockedOnceAndZeroed) {
    void* bytes = qfc::AllocGlobalBlock(100);
    ASSERT_NE(bytes, nullptr);
    EXPECT_TRUE(IsZero(bytes, 100));
    const HGLOBAL block = GlobalHandle(bytes);
    EXPECT_EQ(GlobalUnlock(block), 0);
    EXPECT_EQ(GlobalLock(block), bytes);
    qfc::FreeGlobalBlock(bytes);
}

TEST(PayloadAllocators, PlainBlockIsAnArrayOfBytes) {
    void* bytes = qfc::AllocPlainBlock(100);
    ASSERT_NE(bytes, nullptr);
    EXPECT_TRUE(IsZero(bytes, 100));
    delete[] static_cast<BYTE*>(bytes);
}

TEST(PayloadAllocators, NothingIsNull) {
    EXPECT_EQ(qfc::AllocGlobalBlock(0), nullptr);
    EXPECT_EQ(qfc::AllocPlainBlock(0), nullptr);
    qfc::FreeGlobalBlock(nullptr);
    qfc::FreePlainBlock(nullptr);
}

template <class Block>
class PayloadBlocks : public testing::Test {};
using BlockKinds = testing::Types<qfc::GlobalBlock, qfc::PlainBlock>;
TYPED_TEST_SUITE(PayloadBlocks, BlockKinds);

TYPED_TEST(PayloadBlocks, OwnTheirBytes) {
    TypeParam block(10);
    ASSERT_TRUE(block);
    EXPECT_EQ(block.size(), 10u);
    EXPECT_EQ(block.bytes().size(), 10u);
    block.data()[9] = 1;
    TypeParam moved(std::move(block));
    EXPECT_EQ(moved.data()[9], 1);
    moved.reset();
    EXPECT_FALSE(moved);
    EXPECT_EQ(moved.size(), 0u);
}

TYPED_TEST(PayloadBlocks, ReleaseHandsTheBytesOver) {
    TypeParam block(10);
    BYTE* bytes = block.data();
    void* released = block.release();
    EXPECT_EQ(released, bytes);
    EXPECT_FALSE(block);
    const TypeParam again(released, 10);
    EXPECT_EQ(again.data(), bytes);
}

TYPED_TEST(PayloadBlocks, OfSizeZeroAreEmpty) {
    const TypeParam block(0);
    EXPECT_FALSE(block);
    EXPECT_TRUE(block.bytes().empty());
}

}  // namespace
