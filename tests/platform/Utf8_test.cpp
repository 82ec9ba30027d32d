#include "platform/text/Utf8.h"

#include <gtest/gtest.h>

namespace {

TEST(Utf8, DecodesEveryLength) {
    const std::pair<std::string_view, char32_t> texts[] = {{"a", U'a'},    {"\xC2\x80", 0x80},
                                                           {"é", 0xE9},    {"\xEF\xBF\xBF", 0xFFFF},
                                                           {"😀", 0x1F600}, {"\xF4\x8F\xBF\xBF", 0x10FFFF}};
    for (const auto& [bytes, character] : texts) {
        const auto decoded = qfc::DecodeUtf8(std::string(bytes) + "x");
        EXPECT_TRUE(decoded.valid) << bytes;
        EXPECT_EQ(decoded.character, character) << bytes;
        EXPECT_EQ(decoded.length, bytes.size()) << bytes;
        std::string back;
        qfc::AppendUtf8(back, character);
        EXPECT_EQ(back, bytes);
    }
}

TEST(Utf8, BrokenSequenceCountsOnce_UpToTheByteThatBreaksIt) {
    const std::pair<std::string_view, std::size_t> texts[] = {{"\x80", 1},
                                                              {"\xC0\x80", 1},
                                                              {"\xC1\xBF", 1},
                                                              {"\xC3", 1},
                                                              {"\xC3x", 1},
                                                              {"\xE0\x80\x80", 1},
                                                              {"\xE2\x82", 2},
                                                              {"\xE2\x82x", 2},
                                                              {"\xED\xA0\x80", 1},
                                                              {"\xF0\x8F\xBF\xBF", 1},
                                                              {"\xF0\x9F\x98", 3},
                                                              {"\xF4\x90\x80\x80", 1},
                                                              {"\xF5\x80\x80\x80", 1},
                                                              {"\xFF", 1}};
    for (const auto& [bytes, length] : texts) {
        const auto decoded = qfc::DecodeUtf8(bytes);
        EXPECT_FALSE(decoded.valid) << testing::PrintToString(std::string(bytes));
        EXPECT_EQ(decoded.length, length) << testing::PrintToString(std::string(bytes));
    }
}

TEST(Utf8, CharactersBeyond16BitsTakeASurrogatePair) {
    std::u16string text;
    qfc::AppendUtf16(text, U'a');
    qfc::AppendUtf16(text, 0x1F600);
    EXPECT_EQ(text, u"a\xD83D\xDE00");
}

}  // namespace
