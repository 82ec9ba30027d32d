#include "platform/framework/CString.h"

#include "platform/framework/Exceptions.h"

#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace {

template <class Call>
bool ThrowsInvalidArgument(Call call) {
    try {
        call();
    } catch (CInvalidArgException* exception) {
        exception->Delete();
        return true;
    }
    return false;
}

TEST(CStringConstruction, NullIsTheEmptyText) {
    const char* missing = nullptr;
    CString text(missing);
    EXPECT_TRUE(text.IsEmpty());
    text = "filled";
    text = missing;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_STREQ(text, "");
    EXPECT_TRUE(CString(missing, 5).IsEmpty());
}

TEST(CStringConstruction, TakesALengthARepeatedCharacterOrAView) {
    EXPECT_STREQ(CString("abcdef", 3), "abc");
    EXPECT_STREQ(CString("abc", -1), "");
    EXPECT_STREQ(CString('x', 4), "xxxx");
    EXPECT_STREQ(CString('x', -4), "");
    EXPECT_STREQ(CString(std::string("view")), "view");
    EXPECT_EQ(CString(std::string_view("a\0b", 3)).GetLength(), 3);
}

TEST(CStringConstruction, ViewIsNotConvertedSilently) {
    EXPECT_FALSE((std::is_convertible_v<std::string_view, CString>));
    EXPECT_TRUE((std::is_convertible_v<const char*, CString>));
}

TEST(CStringAccess, IndexOfTheLengthIsTheClosingNul) {
    const CString text("ab");
    EXPECT_EQ(text[0], 'a');
    EXPECT_EQ(text.GetAt(1), 'b');
    EXPECT_EQ(text[2], '\0');
}

TEST(CStringAccess, IndexOutsideThrowsInvalidArgument) {
    CString text("ab");
    EXPECT_TRUE(ThrowsInvalidArgument([&] { static_cast<void>(text[3]); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { static_cast<void>(text.GetAt(-1)); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { text.SetAt(2, 'x'); }));
    text.SetAt(1, 'x');
    EXPECT_STREQ(text, "ax");
}

TEST(CStringAccess, EmptyMakesItEmpty) {
    CString text("ab");
    text.Empty();
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text.GetLength(), 0);
}

TEST(CStringCompare, BytesAreUnsigned) {
    EXPECT_GT(CString("\xE9").Compare("z"), 0);
    EXPECT_LT(CString("z").Compare("\xE9"), 0);
}

TEST(CStringCompare, IsCaseSensitive) {
    EXPECT_LT(CString("B").Compare("a"), 0);
    EXPECT_NE(CString("a").Compare("A"), 0);
}

TEST(CStringCompare, EndsAtAnEmbeddedNul) {
    const CString text(std::string_view("ab\0cd", 5));
    EXPECT_EQ(text.Compare("ab"), 0);
    EXPECT_TRUE(text == "ab");
    EXPECT_EQ(text.GetLength(), 5);
    EXPECT_EQ(text.View(), std::string_view("ab\0cd", 5));
}

TEST(CStringCompare, NullIsTheEmptyText) {
    const char* missing = nullptr;
    EXPECT_EQ(CString("").Compare(missing), 0);
    EXPECT_GT(CString("a").Compare(missing), 0);
    EXPECT_EQ(CString("").CompareNoCase(missing), 0);
}

TEST(CStringCompare, NoCaseFoldsToLowerCase_SoUnderscoreSortsBeforeLetters) {
    EXPECT_LT(CString("_").CompareNoCase("A"), 0);
    EXPECT_LT(CString("_").CompareNoCase("a"), 0);
    EXPECT_GT(CString("_").Compare("A"), 0);
}

TEST(CStringCompare, NoCaseFoldsBeyondAscii) {
    EXPECT_EQ(CString("ÀÉÎ").CompareNoCase("àéî"), 0);
    EXPECT_EQ(CString("ΟΔΟΣ").CompareNoCase("οδος"), 0);
    EXPECT_EQ(CString("МОСКВА").CompareNoCase("москва"), 0);
    EXPECT_NE(CString("é").CompareNoCase("e"), 0);
}

TEST(CStringCompare, NoCaseAlsoEndsAtAnEmbeddedNul) {
    EXPECT_EQ(CString(std::string_view("AB\0x", 4)).CompareNoCase("ab"), 0);
}

TEST(CStringCompare, OperatorsWorkWithTextOnEitherSide) {
    const CString a("a");
    const CString b("b");
    EXPECT_TRUE(a == "a" && "a" == a && a == CString("a"));
    EXPECT_TRUE(a != "b" && "b" != a && a != b);
    EXPECT_TRUE(a < b && a < "b" && "a" < b && b > a && b >= "b" && a <= "a");
}

TEST(CStringCompare, MapsAreInTheOrderOfCompare) {
    std::map<CString, int> map{{"b", 2}, {"\xC3\xA9", 4}, {"a", 1}, {"B", 0}};
    std::vector<int> order;
    for (const auto& entry : map) order.push_back(entry.second);
    EXPECT_EQ(order, (std::vector{0, 1, 2, 4}));
    EXPECT_EQ(map.count("a"), 1u);
}

TEST(CStringFind, GivesTheFirstIndexOrMinusOne) {
    const CString text("abcabc");
    EXPECT_EQ(text.Find('c'), 2);
    EXPECT_EQ(text.Find('c', 3), 5);
    EXPECT_EQ(text.Find("bc"), 1);
    EXPECT_EQ(text.Find("bc", 2), 4);
    EXPECT_EQ(text.Find("x"), -1);
    EXPECT_EQ(text.Find('x'), -1);
    EXPECT_EQ(text.ReverseFind('b'), 4);
    EXPECT_EQ(text.ReverseFind('x'), -1);
}

TEST(CStringFind, EmptyTextIsFoundAtTheStart) {
    const CString text("abc");
    EXPECT_EQ(text.Find(""), 0);
    EXPECT_EQ(text.Find("", 2), 2);
    EXPECT_EQ(text.Find("", 3), 3);
}

TEST(CStringFind, StartOutsideFindsNothing) {
    const CString text("abc");
    EXPECT_EQ(text.Find("", 4), -1);
    EXPECT_EQ(text.Find('a', 4), -1);
    EXPECT_EQ(text.Find("a", -1), -1);
    EXPECT_EQ(text.Find(static_cast<const char*>(nullptr)), -1);
}

TEST(CStringParts, AreClippedToTheText) {
    const CString text("abcdef");
    EXPECT_STREQ(text.Left(2), "ab");
    EXPECT_STREQ(text.Left(20), "abcdef");
    EXPECT_STREQ(text.Left(-1), "");
    EXPECT_STREQ(text.Right(2), "ef");
    EXPECT_STREQ(text.Right(20), "abcdef");
    EXPECT_STREQ(text.Right(-1), "");
    EXPECT_STREQ(text.Mid(4), "ef");
    EXPECT_STREQ(text.Mid(1, 2), "bc");
    EXPECT_STREQ(text.Mid(4, 20), "ef");
    EXPECT_STREQ(text.Mid(6), "");
    EXPECT_STREQ(text.Mid(20, 2), "");
    EXPECT_STREQ(text.Mid(1, -1), "");
}

TEST(CStringCase, MapsInPlaceAndReturnsItself) {
    CString text("Äbc-Ж");
    EXPECT_EQ(&text.MakeLower(), &text);
    EXPECT_STREQ(text, "äbc-ж");
    EXPECT_STREQ(text.MakeUpper(), "ÄBC-Ж");
}

TEST(CStringTrim, WithoutArgumentWhiteSpaceGoes) {
    EXPECT_STREQ(CString(" \t\n\v\f\ra b \t\n\v\f\r").Trim(), "a b");
    EXPECT_STREQ(CString("  a ").TrimLeft(), "a ");
    EXPECT_STREQ(CString("  a ").TrimRight(), "  a");
    EXPECT_STREQ(CString(" \t ").Trim(), "");
}

TEST(CStringTrim, TextIsASetOfCharacters) {
    EXPECT_STREQ(CString("name.tmp").TrimRight(".pmt"), "name");
    EXPECT_STREQ(CString("abcXcba").Trim("abc"), "X");
    EXPECT_STREQ(CString("abcX").TrimLeft("ba"), "cX");
    EXPECT_STREQ(CString("  x").TrimLeft(""), "  x");
}

TEST(CStringTrim, CharacterTrimsThatOneOnly) {
    EXPECT_STREQ(CString("\\a\\\\").TrimRight('\\'), "\\a");
    EXPECT_STREQ(CString("\\a\\").TrimLeft('\\'), "a\\");
    EXPECT_STREQ(CString("--a--").Trim('-'), "a");
}

std::vector<std::string> Pieces(const CString& text, const char* delimiters) {
    std::vector<std::string> pieces;
    int position = 0;
    for (CString piece = text.Tokenize(delimiters, position); position != -1;
         piece = text.Tokenize(delimiters, position)) {
        pieces.emplace_back(piece);
    }
    return pieces;
}

TEST(CStringTokenize, RunsOfDelimitersGiveNoEmptyPiece) {
    EXPECT_EQ(Pieces("\\A\\\\B\\", "\\"), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(Pieces("a || b ||  || c", "|"), (std::vector<std::string>{"a ", " b ", "  ", " c"}));
    EXPECT_TRUE(Pieces("", ";").empty());
    EXPECT_TRUE(Pieces(";;;", ";").empty());
}

TEST(CStringTokenize, PositionIsMinusOneOnlyWhenNothingIsLeft) {
    const CString text("a;b");
    int position = 0;
    EXPECT_STREQ(text.Tokenize(";", position), "a");
    EXPECT_EQ(position, 2);
    EXPECT_STREQ(text.Tokenize(";", position), "b");
    EXPECT_NE(position, -1);
    EXPECT_STREQ(text.Tokenize(";", position), "");
    EXPECT_EQ(position, -1);
    EXPECT_STREQ(text.Tokenize(";", position), "");
    EXPECT_EQ(position, -1);
}

TEST(CStringReplace, CountsThePlaces) {
    CString text("aXbXc");
    EXPECT_EQ(text.Replace('X', '|'), 2);
    EXPECT_STREQ(text, "a|b|c");
    EXPECT_EQ(text.Replace("|", "--"), 2);
    EXPECT_STREQ(text, "a--b--c");
    EXPECT_EQ(text.Replace("--", nullptr), 2);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(text.Replace("", "x"), 0);
    EXPECT_EQ(text.Replace("zz", "x"), 0);
    EXPECT_EQ(text.Replace('a', 'a'), 0);
    EXPECT_STREQ(text, "abc");
}

TEST(CStringFormat, FollowsPrintf) {
    CString text("old");
    text.Format("CQItem %u", 4294967295u);
    EXPECT_STREQ(text, "CQItem 4294967295");
    text.AppendFormat("|%4d-%02d", 99, 5);
    EXPECT_STREQ(text, "CQItem 4294967295|  99-05");
    text.Format("%s", "");
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CStringFormat, HasNoLengthLimit) {
    const std::string big(100000, 'x');
    CString text;
    text.Format("<%s>", big.c_str());
    EXPECT_EQ(text.GetLength(), 100002);
}

TEST(CStringConcatenation, TakesTextsAndCharactersOnEitherSide) {
    const CString b("b");
    EXPECT_STREQ("a" + b, "ab");
    EXPECT_STREQ(b + "c", "bc");
    EXPECT_STREQ(b + b, "bb");
    EXPECT_STREQ('a' + b + 'c', "abc");
    CString text("x");
    text += text;
    text += 'y';
    text += "z";
    text += static_cast<const char*>(nullptr);
    EXPECT_STREQ(text, "xxyz");
}

TEST(CStringConcatenation, KeepsEmbeddedNuls) {
    CString text(std::string_view("a\0", 2));
    text += CString("b");
    EXPECT_EQ(text.View(), std::string_view("a\0b", 3));
}

TEST(CStringStreaming, PrintsTheText) {
    std::ostringstream stream;
    stream << CString("text");
    EXPECT_EQ(stream.str(), "text");
}

}  // namespace
