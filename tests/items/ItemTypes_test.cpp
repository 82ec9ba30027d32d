#include "items/ItemTypes.h"

#include <gtest/gtest.h>

namespace {

using qfc::ItemTypeSlot;

TEST(ItemTypes, TypeWithoutBits_HasNoSlot) { EXPECT_EQ(ItemTypeSlot(0), std::nullopt); }

TEST(ItemTypes, TypeOne_HasTheFirstSlot) { EXPECT_EQ(ItemTypeSlot(1), 0); }

TEST(ItemTypes, EveryBit_HasTheSlotOfItsPosition) {
    for (int nBit = 0; nBit < qfc::kItemTypeSlots; ++nBit) EXPECT_EQ(ItemTypeSlot(DWORD{1} << nBit), nBit);
}

TEST(ItemTypes, SeveralBits_TheHighestDecides) {
    EXPECT_EQ(ItemTypeSlot(1 | 64 | 256), 8);
    EXPECT_EQ(ItemTypeSlot(0xFFFFFFFF), 31);
}

TEST(ItemTypes, TranslatedTypes_HaveTheirStoredValues) {
    EXPECT_EQ(qfc::item_type::kVideo, 1u);
    EXPECT_EQ(qfc::item_type::kTransition, 64u);
    EXPECT_EQ(qfc::item_type::kVideoFilter, 128u);
    EXPECT_EQ(qfc::item_type::kAudioFilter, 256u);
    EXPECT_EQ(qfc::item_type::kSpeed, 67108864u);
}

}  // namespace
