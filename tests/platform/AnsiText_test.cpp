#include "platform/text/AnsiText.h"

#include "platform/text/CodePages.h"

#include <gtest/gtest.h>

namespace {

using qfc::CutAnsi;
using qfc::FindInAnsi;
using qfc::FindLastInAnsi;
constexpr auto npos = std::string_view::npos;

struct AnsiText : testing::Test {
    ~AnsiText() override { qfc::SetAnsiCodePage("UTF-8"); }
};

TEST_F(AnsiText, Find_InUtf8GoesByBytes) {
    EXPECT_EQ(FindInAnsi("a\\b\\c", "\\"), 1u);
    EXPECT_EQ(FindInAnsi("a\\b\\c", "\\", 2), 3u);
    EXPECT_EQ(FindInAnsi("ä||x", "||"), 2u);
    EXPECT_EQ(FindInAnsi("\xC3\\", "\\"), 1u);
    EXPECT_EQ(FindInAnsi("abc", "|"), npos);
    EXPECT_EQ(FindInAnsi("", "|"), npos);
}

TEST_F(AnsiText, Find_SkipsTrailBytes) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    EXPECT_EQ(FindInAnsi("\x83\x5C\\x", "\\"), 2u);
    EXPECT_EQ(FindInAnsi("\x83\x5C\x83\x5C", "\\"), npos);
    EXPECT_EQ(FindInAnsi("a\x83\x7C|b||c", "||"), 5u);
    EXPECT_EQ(FindInAnsi("\x83\x7C|", "||"), npos);
    EXPECT_EQ(FindInAnsi("\x83\x5D]\x83\x5B", "["), npos);
    EXPECT_EQ(FindInAnsi("\\\x83\x5C\\", "\\", 1), 3u);
}

TEST_F(AnsiText, Find_LeadByteWithoutTrailIsOneCharacter) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    EXPECT_EQ(FindInAnsi("\x83", "\\"), npos);
    EXPECT_EQ(FindInAnsi("\x83 \\", "\\"), 2u);
}

TEST_F(AnsiText, FindLast_SkipsTrailBytes) {
    EXPECT_EQ(FindLastInAnsi("a\\b\\c", '\\'), 3u);
    EXPECT_EQ(FindLastInAnsi("abc", '\\'), npos);
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    EXPECT_EQ(FindLastInAnsi("a\\b\\\x83\x5C", '\\'), 3u);
    EXPECT_EQ(FindLastInAnsi("\x83\x5C", '\\'), npos);
}

TEST_F(AnsiText, Cut_KeepsCharactersWhole) {
    EXPECT_EQ(CutAnsi("abc", 3), "abc");
    EXPECT_EQ(CutAnsi("abcd", 3), "abc");
    EXPECT_EQ(CutAnsi("abä", 3), "ab");
    EXPECT_EQ(CutAnsi("ä", 0), "");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    EXPECT_EQ(CutAnsi("\x83\x5C\x83\x5C", 3), "\x83\x5C");
}

}  // namespace
