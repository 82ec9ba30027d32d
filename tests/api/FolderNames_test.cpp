#include "api/names/FolderNames.h"

#include "api/names/PathRules.h"
#include "platform/text/AnsiCodec.h"
#include "platform/text/CodePages.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using qfc::DecodeFolderName;
using qfc::DisplayNameOf;
using qfc::DisplayPathOf;
using qfc::EncodeFolderName;
using qfc::PathOfEncodedName;

struct FolderNames : testing::Test {
    ~FolderNames() override { qfc::SetAnsiCodePage("UTF-8"); }
};

TEST_F(FolderNames, Display_OfAnEncodedNameIsTheLastText) {
    EXPECT_STREQ(DisplayNameOf("||3||Abc||5||Hello"), "Hello");
    EXPECT_STREQ(DisplayNameOf("||3||Abc"), "Abc");
    EXPECT_STREQ(DisplayNameOf("||3||Abc||0||"), "");
    EXPECT_STREQ(DisplayNameOf("||4||a||b||6||c||1||"), "c||1||");
    EXPECT_STREQ(DisplayNameOf("||2||a|||3||xyz"), "xyz");
    EXPECT_STREQ(DisplayNameOf("||0||||1||a"), "a");
}

TEST_F(FolderNames, Display_OfTheKeyFormIsWhatStandsBehindTheFirstMark) {
    EXPECT_STREQ(DisplayNameOf("key--Shown"), "Shown");
    EXPECT_STREQ(DisplayNameOf("key--a--b"), "a--b");
    EXPECT_STREQ(DisplayNameOf("key--"), "");
    EXPECT_STREQ(DisplayNameOf("k---x"), "-x");
}

TEST_F(FolderNames, Display_OfANameThatBeginsWithTheKeyMarkIsTheWholeName) {
    EXPECT_STREQ(DisplayNameOf("--Shown"), "--Shown");
    EXPECT_STREQ(DisplayNameOf("--a--b"), "--a--b");
    EXPECT_STREQ(DisplayNameOf("---x"), "---x");
}

TEST_F(FolderNames, Display_OfAPlainNameIsTheName) {
    for (const char* name : {"", "Plain", "a-b", "a|b", "a||b", "|x", "-"}) EXPECT_STREQ(DisplayNameOf(name), name);
}

TEST_F(FolderNames, Display_WithoutASecondMarkIsTheName) {
    EXPECT_STREQ(DisplayNameOf("||"), "||");
    EXPECT_STREQ(DisplayNameOf("||5"), "||5");
    EXPECT_STREQ(DisplayNameOf("||5|a--b"), "||5|a--b");
}

TEST_F(FolderNames, Display_NegativeLengthsCountAsNothing) {
    EXPECT_STREQ(DisplayNameOf("||-4||x"), "x");
    EXPECT_STREQ(DisplayNameOf("||-4||x||-2||y"), "y");
}

TEST_F(FolderNames, Display_LengthsThatLieAreCutToWhatIsThere) {
    EXPECT_STREQ(DisplayNameOf("||99||x"), "x");
    EXPECT_STREQ(DisplayNameOf("||99999999999999999999999||x"), "x");
    EXPECT_STREQ(DisplayNameOf("||2147483647||x||1||y"), "x||1||y");
    EXPECT_STREQ(DisplayNameOf("||x||y"), "y");
    EXPECT_STREQ(DisplayNameOf("||||y"), "y");
    EXPECT_STREQ(DisplayNameOf("||3||Abcd"), "Abcd");
    EXPECT_STREQ(DisplayNameOf("||3||Abc||"), "");
    EXPECT_STREQ(DisplayNameOf("||1||Abc||1||d"), "d");
    EXPECT_STREQ(DisplayNameOf("||3||Abc7||5||HelloXXX"), "5||HelloXXX");
}

TEST_F(FolderNames, Display_EndsOnManyMarks) {
    const std::string bars(1000000, '|');
    EXPECT_STREQ(DisplayNameOf(bars.c_str()), "");
    EXPECT_STREQ(DisplayNameOf((bars + "|").c_str()), "|");
}

TEST_F(FolderNames, Display_LengthsAreBytes) {
    EXPECT_STREQ(DisplayNameOf("||5||Müll||2||ü"), "ü");
    EXPECT_STREQ(EncodeFolderName({"Mü", "ü"}), "||3||Mü||2||ü");
}

TEST_F(FolderNames, Display_StepsOverTrailBytes) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    // Two characters whose second bytes are bars, then one bar.
    EXPECT_STREQ(DisplayNameOf("||2||\x83\x7C|\x83\x7C||1||x"), "x");
    EXPECT_STREQ(DisplayNameOf("\x83\x7C--\x83\x7C"), "\x83\x7C");
    EXPECT_STREQ(DisplayNameOf("||3||a\x83\x7C||2||\x83\x7C"), "\x83\x7C");
    EXPECT_STREQ(DisplayNameOf("||9\x83\x7C|x"), "||9\x83\x7C|x");
}

TEST_F(FolderNames, Decode_TakesWholeEncodedNamesOnly) {
    using Texts = std::vector<CString>;
    EXPECT_EQ(DecodeFolderName("||3||Abc||5||Hello"), (Texts{"Abc", "Hello"}));
    EXPECT_EQ(DecodeFolderName("||4||a||b||0||"), (Texts{"a||b", ""}));
    for (const char* name : {"", "Plain", "||", "||3||Ab", "||3||Abcd", "||-4||x", "||+1||x", "|| 1||x", "||1||a||",
                             "||18446744073709551615||x", "||99999999999999999999999||x", "||||x", "x||1||y"}) {
        EXPECT_EQ(DecodeFolderName(name), Texts{}) << name;
    }
}

TEST_F(FolderNames, PathOfAnEncodedName_HoldsTheEncodedNamesFromTheGalleryDown) {
    EXPECT_STREQ(PathOfEncodedName("||5||Media||1||A"), "\\||5||Media||1||A");
    EXPECT_STREQ(PathOfEncodedName("||5||Media||1||A||1||B"), "\\||5||Media||1||A\\||5||Media||1||A||1||B");
}

TEST_F(FolderNames, PathOfAnEncodedName_OfTheGalleryItselfIsEmpty) {
    EXPECT_STREQ(PathOfEncodedName("||5||Media"), "");
    EXPECT_STREQ(PathOfEncodedName(""), "");
}

TEST_F(FolderNames, PathOfAnotherName_IsInTheGallery) {
    EXPECT_STREQ(PathOfEncodedName("Plain"), "\\Plain");
    EXPECT_STREQ(PathOfEncodedName("key--Shown"), "\\key--Shown");
    EXPECT_STREQ(PathOfEncodedName("||-4||x"), "\\||-4||x");
}

TEST_F(FolderNames, PathOfAnEncodedName_ThatWouldFillAllMemory_IsInTheGallery) {
    std::string name = "||1||M";
    for (int i = 0; i < 200000; ++i) name += "||0||";
    EXPECT_EQ(PathOfEncodedName(name.c_str()).View(), "\\" + name);
}

TEST_F(FolderNames, PathOfAnEncodedName_OfAThousandLevelsIsOne) {
    std::vector<CString> texts{"Media"};
    for (int i = 0; i < 1000; ++i) texts.push_back(std::to_string(i).c_str());
    const CString path = qfc::PathOfEncodedTexts(texts);
    const std::vector<CString> names = qfc::SplitFolderPath(path);
    ASSERT_EQ(names.size(), 1000u);
    EXPECT_STREQ(names[1], "||5||Media||1||0||1||1");
    EXPECT_EQ(names.back(), EncodeFolderName(texts));
    EXPECT_EQ(qfc::PathOfEncodedTexts(texts, 1000).View(), "\\" + std::string(names.back().GetString()));
}

TEST_F(FolderNames, DisplayPath_LeavesTheGalleryOutAndBeginsWithoutBackslash) {
    EXPECT_STREQ(DisplayPathOf("||5||Media||1||A||1||B"), "A\\B");
    EXPECT_STREQ(DisplayPathOf("||5||Media"), "");
    EXPECT_STREQ(DisplayPathOf("\\A\\key--B\\||1||M||1||C"), "A\\B\\C");
    EXPECT_STREQ(DisplayPathOf("A\\B"), "A\\B");
    EXPECT_STREQ(DisplayPathOf("||5||Media||1||A\\||5||Media||1||A||1||B"), "A\\B");
    EXPECT_STREQ(DisplayPathOf(""), "");
    EXPECT_STREQ(DisplayPathOf("\\"), "");
}

// Texts of the pieces that the encodings are made of, so that every confusion comes up.
class RandomTexts {
public:
    explicit RandomTexts(std::vector<std::string> pieces) : m_pieces(std::move(pieces)) {}

    std::vector<CString> Next() {
        std::vector<CString> texts(1 + m_random() % 5);
        for (CString& text : texts) {
            do {
                for (auto count = m_random() % 6; count > 0; --count) {
                    text += m_pieces[m_random() % m_pieces.size()].c_str();
                }
            } while (text.IsEmpty());
        }
        return texts;
    }

private:
    std::vector<std::string> m_pieces;
    std::mt19937 m_random{20260101};
};

void ExpectRoundTrips(RandomTexts texts) {
    for (int i = 0; i < 5000; ++i) {
        const std::vector<CString> names = texts.Next();
        const CString encoded = EncodeFolderName(names);
        ASSERT_EQ(DecodeFolderName(encoded), names) << encoded;
        ASSERT_EQ(DisplayNameOf(encoded), names.back()) << encoded;
        const CString shown = qfc::JoinDisplayPath({names.begin() + 1, names.end()});
        ASSERT_EQ(DisplayPathOf(encoded), shown) << encoded;
        ASSERT_EQ(DisplayPathOf(PathOfEncodedName(encoded)), shown) << encoded;
    }
}

TEST_F(FolderNames, AnyNamesComeBack_Utf8) {
    ExpectRoundTrips(
        RandomTexts({"||", "|", "--", "-", "0", "1", "12", "x", " ", "[", "]", "=", "ä", "漢", "😀", "\xFF"}));
}

TEST_F(FolderNames, AnyNamesComeBack_Cp1252) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    ExpectRoundTrips(RandomTexts({"||", "|", "--", "-", "0", "1", "12", "x", "\xE4", "\x81", "\xFF", "@"}));
}

TEST_F(FolderNames, AnyNamesComeBack_Cp932) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    // Trail bytes that look like a backslash, a bar, brackets and an at-sign.
    ExpectRoundTrips(RandomTexts({"||", "|", "--", "-", "0", "1", "12", "x", "\x83\x5C", "\x83\x7C", "\x83\x5B",
                                  "\x83\x5D", "\x83\x40", "\xB1"}));
}

TEST_F(FolderNames, HostileNamesEnd) {
    std::mt19937 random(7);
    const std::string pieces[] = {"||", "|", "-", "--", "9", "-4", "99999999999999999999", "\\", "x", "\x83", "\xC3"};
    for (const char* page : {"UTF-8", "CP932"}) {
        ASSERT_TRUE(qfc::SetAnsiCodePage(page));
        for (int i = 0; i < 20000; ++i) {
            CString name = random() % 2 == 0 ? "||" : "";
            for (auto count = random() % 12; count > 0; --count) name += pieces[random() % std::size(pieces)].c_str();
            // What is shown is an end of the name.
            const CString shown = DisplayNameOf(name);
            ASSERT_TRUE(name.View().ends_with(shown.View())) << name;
            DisplayPathOf(name);
            PathOfEncodedName(name);
        }
    }
}

}  // namespace
