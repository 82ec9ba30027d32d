#include "platform/framework/Guid.h"

#include <gtest/gtest.h>
#include <map>

namespace {

constexpr GUID kSample{0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};

TEST(Guid, BytesAreTheMemoryImage) {
    const unsigned char expected[16] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                                        0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
    EXPECT_EQ(std::memcmp(qfc::GuidBytes(kSample).data(), expected, 16), 0);
}

TEST(Guid, BytesOfTheRightLength_GiveTheGuidBack) {
    const auto guid = qfc::GuidFromBytes(qfc::GuidBytes(kSample).data(), 16);
    ASSERT_TRUE(guid);
    EXPECT_EQ(*guid, kSample);
}

TEST(Guid, BytesOfAnyOtherLength_AreRefused) {
    const char bytes[32] = {};
    for (const std::size_t length : {0, 1, 15, 17, 32}) EXPECT_FALSE(qfc::GuidFromBytes(bytes, length)) << length;
    EXPECT_FALSE(qfc::GuidFromBytes(nullptr, 16));
}

TEST(Guid, OrderIsThatOfTheStoredBytes) {
    // 0x00000100 is the larger number, but its first stored byte is the smaller one.
    const GUID larger{0x00000100, 0, 0, {}};
    const GUID smaller{0x00000001, 0, 0, {}};
    EXPECT_TRUE(larger < smaller);
    EXPECT_FALSE(smaller < larger);
    EXPECT_FALSE(kSample < kSample);
    std::map<GUID, int> ordered{{smaller, 2}, {larger, 1}};
    EXPECT_EQ(ordered.begin()->second, 1);
}

TEST(GuidText, IsUpperCaseWithHyphensAndWithoutBraces) {
    EXPECT_EQ(qfc::GuidToText(kSample), "00112233-4455-6677-8899-AABBCCDDEEFF");
    EXPECT_EQ(qfc::GuidToText(GUID_NULL), "00000000-0000-0000-0000-000000000000");
}

TEST(GuidText, IsReadInEitherCaseWithOrWithoutBraces) {
    for (const char* text : {"00112233-4455-6677-8899-AABBCCDDEEFF", "00112233-4455-6677-8899-aabbccddeeff",
                             "{00112233-4455-6677-8899-AABBCCDDEEFF}"}) {
        const auto guid = qfc::GuidFromText(text);
        ASSERT_TRUE(guid) << text;
        EXPECT_EQ(*guid, kSample) << text;
    }
}

TEST(GuidText, AnythingElseIsRefused) {
    for (const char* text :
         {"", "00112233", "00112233-4455-6677-8899-AABBCCDDEEF", "00112233-4455-6677-8899-AABBCCDDEEFFF",
          "00112233445566778899AABBCCDDEEFF", "{00112233-4455-6677-8899-AABBCCDDEEFF",
          "00112233-4455-6677-8899-AABBCCDDEEFG", "001122330445506677088990AABBCCDDEEFF",
          "{{0112233-4455-6677-8899-AABBCCDDEEF}}", "0-112233-4455-6677-8899AABBCCDDEEFF1"}) {
        EXPECT_FALSE(qfc::GuidFromText(text)) << text;
    }
}

}  // namespace
