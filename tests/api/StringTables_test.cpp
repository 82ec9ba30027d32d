#include "api/names/StringTables.h"

#include "platform/text/CodePages.h"

#include <gtest/gtest.h>
#include <string>

namespace {

int moduleAddress;
int otherAddress;
const HINSTANCE kModule = &moduleAddress;
const HINSTANCE kOther = &otherAddress;

TEST(StringTables, TextsBelongToTheirModule) {
    const qfc::ModuleString strings[] = {{1, "Media"}, {2, "Sounds"}};
    ASSERT_TRUE(qfc::SetModuleStrings(kModule, strings, 2));
    EXPECT_STREQ(qfc::ModuleText(kModule, 1), "Media");
    EXPECT_STREQ(qfc::ModuleText(kModule, 2), "Sounds");
    EXPECT_STREQ(qfc::ModuleText(kModule, 3), "");
    EXPECT_STREQ(qfc::ModuleText(kOther, 1), "");
    EXPECT_STREQ(qfc::ModuleText(nullptr, 1), "");
}

TEST(StringTables, NewTableTakesThePlaceOfTheOld_NoStringsTakeItAway) {
    const qfc::ModuleString first[] = {{1, "One"}, {2, "Two"}};
    const qfc::ModuleString second[] = {{1, "Eins"}};
    qfc::SetModuleStrings(kModule, first, 2);
    ASSERT_TRUE(qfc::SetModuleStrings(kModule, second, 1));
    EXPECT_STREQ(qfc::ModuleText(kModule, 1), "Eins");
    EXPECT_STREQ(qfc::ModuleText(kModule, 2), "");
    ASSERT_TRUE(qfc::SetModuleStrings(kModule, nullptr, 0));
    EXPECT_STREQ(qfc::ModuleText(kModule, 1), "");
}

TEST(StringTables, NullModuleIsRefused_NullTextIsNone) {
    const qfc::ModuleString strings[] = {{1, nullptr}};
    EXPECT_FALSE(qfc::SetModuleStrings(nullptr, strings, 1));
    EXPECT_TRUE(qfc::SetModuleStrings(kModule, strings, 1));
    EXPECT_STREQ(qfc::ModuleText(kModule, 1), "");
}

TEST(StringTables, TextsAreCutBetweenCharactersOfTheCodePage) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    const std::string odd = "x" + std::string(258, 'y') + "\x83\x83z";
    const std::string even = std::string(258, 'y') + "\x83\x83z";
    const qfc::ModuleString strings[] = {{1, odd.c_str()}, {2, even.c_str()}};
    qfc::SetModuleStrings(kModule, strings, 2);
    EXPECT_EQ(qfc::ModuleText(kModule, 1).View(), odd.substr(0, 259));
    EXPECT_EQ(qfc::ModuleText(kModule, 2).View(), even.substr(0, 260));
    qfc::SetAnsiCodePage("UTF-8");
}

TEST(StringTables, TextsAreCutAt260BytesWithoutCuttingACharacter) {
    const std::string longText = std::string(259, 'x') + "äy";
    const qfc::ModuleString strings[] = {{1, longText.c_str()}};
    qfc::SetModuleStrings(kModule, strings, 1);
    EXPECT_EQ(qfc::ModuleText(kModule, 1).View(), std::string(259, 'x'));
    const std::string plain(300, 'x');
    const qfc::ModuleString others[] = {{1, plain.c_str()}};
    qfc::SetModuleStrings(kModule, others, 1);
    EXPECT_EQ(qfc::ModuleText(kModule, 1).GetLength(), 260);
}

}  // namespace
