#include "api/names/PathRules.h"

#include "platform/text/CodePages.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

Texts Split(const char* path, bool inOrder = true) {
    Texts parts;
    for (const CString& part : qfc::SplitFolderPath(path, inOrder)) parts.emplace_back(part.View());
    return parts;
}

TEST(PathRules, Split_DropsEmptyComponents) {
    EXPECT_EQ(Split("\\A\\\\B\\"), (Texts{"A", "B"}));
    EXPECT_EQ(Split("A"), Texts{"A"});
    EXPECT_EQ(Split(""), Texts{});
    EXPECT_EQ(Split("\\\\\\"), Texts{});
    EXPECT_EQ(Split("A/B\\ C "), (Texts{"A/B", " C "}));
}

TEST(PathRules, Split_ReversesWithoutTheOrderFlag) { EXPECT_EQ(Split("A\\B\\C", false), (Texts{"C", "B", "A"})); }

TEST(PathRules, FileNameTail_StartsWithABackslash) {
    const struct {
        const char* path;
        const char* tail;
    } rows[] = {
        {"C:\\media\\clip.avi", "\\clip.avi"},
        {"clip.avi", "clip.avi"},
        {"", ""},
        {"C:\\media\\", "\\"},
        {"/home/me/clip.avi", "\\clip.avi"},
        {"C:\\odd/clip.avi", "\\odd/clip.avi"},
    };
    for (const auto& row : rows) EXPECT_STREQ(qfc::FileNameTail(row.path), row.tail) << row.path;
}

TEST(PathRules, FileNameOf_HasNoSeparatorBeforeIt) {
    EXPECT_STREQ(qfc::FileNameOf("C:\\media\\clip.avi"), "clip.avi");
    EXPECT_STREQ(qfc::FileNameOf("/home/me/clip.avi"), "clip.avi");
    EXPECT_STREQ(qfc::FileNameOf("clip.avi"), "clip.avi");
    EXPECT_STREQ(qfc::FileNameOf("C:\\odd/clip.avi"), "odd/clip.avi");
    EXPECT_STREQ(qfc::FileNameOf("C:\\media\\"), "");
    EXPECT_STREQ(qfc::FileNameOf(""), "");
}

TEST(PathRules, NativeFileName_BecomesOneWithABackslash) {
    EXPECT_STREQ(qfc::AsFileNameTail("/clip.avi"), "\\clip.avi");
    EXPECT_STREQ(qfc::AsFileNameTail("\\clip.avi"), "\\clip.avi");
    EXPECT_STREQ(qfc::AsFileNameTail("clip.avi"), "clip.avi");
    EXPECT_STREQ(qfc::AsFileNameTail("/odd\\clip.avi"), "/odd\\clip.avi");
}

struct PathRulesCp932 : testing::Test {
    PathRulesCp932() { qfc::SetAnsiCodePage("CP932"); }
    ~PathRulesCp932() override { qfc::SetAnsiCodePage("UTF-8"); }
};

TEST_F(PathRulesCp932, TrailByteThatLooksLikeABackslashDoesNotSplit) {
    EXPECT_EQ(Split("\\\x83\x5C\\\x83\x5C\x83\x5C"), (Texts{"\x83\x5C", "\x83\x5C\x83\x5C"}));
}

TEST_F(PathRulesCp932, TrailByteThatLooksLikeABackslashIsPartOfTheFileName) {
    EXPECT_STREQ(qfc::FileNameTail("C:\\a\\\x83\x5C.avi"), "\\\x83\x5C.avi");
    EXPECT_STREQ(qfc::FileNameTail("/a/\x83\x5C.avi"), "\\\x83\x5C.avi");
    EXPECT_STREQ(qfc::AsFileNameTail("/\x83\x5C.avi"), "\\\x83\x5C.avi");
}

}  // namespace
