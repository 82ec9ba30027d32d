#include "tags/TagWords.h"

#include "platform/text/CodePages.h"
#include "tags/TagRecords.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

namespace {

using Parts = std::vector<std::string_view>;

constexpr qfc::LocalDate kDay{2024, 5, 6};

void ExpectSpecifier(std::string_view text, int type, const char* value) {
    const qfc::TagSpecifier specifier = qfc::ReadTagSpecifier(text, kDay);
    EXPECT_EQ(specifier.type, type) << text;
    EXPECT_EQ(specifier.value, CString(value)) << text;
}

// Texts are in CP932 while it lives.
class JapanesePage {
public:
    JapanesePage() { EXPECT_TRUE(qfc::SetAnsiCodePage("CP932")); }
    ~JapanesePage() { qfc::SetAnsiCodePage("UTF-8"); }
};

TEST(TagWords, WordsOfCategoryTypesCountInTheirExactSpelling) {
    EXPECT_EQ(qfc::CategoryTypeOfWord("Date"), 1);
    EXPECT_EQ(qfc::CategoryTypeOfWord("Untagged"), 2);
    EXPECT_EQ(qfc::CategoryTypeOfWord("Face"), 3);
    for (const char* word : {"face", "DATE", "untagged", "Faces", " Face", "", "Places"}) {
        EXPECT_EQ(qfc::CategoryTypeOfWord(word), 0) << word;
    }
}

TEST(TagWords, WordsOfTagTypesCountInAnyCase) {
    for (const char* word : {"String", "string", "STRING"}) EXPECT_EQ(qfc::TagTypeOfWord(word), 0) << word;
    for (const char* word : {"Static", "static", "STATIC"}) EXPECT_EQ(qfc::TagTypeOfWord(word), 1) << word;
    for (const char* word : {"Date", "date", "dAtE"}) EXPECT_EQ(qfc::TagTypeOfWord(word), 2) << word;
    for (const char* word : {"", "Dates", " Date", "Face", "1"}) EXPECT_EQ(qfc::TagTypeOfWord(word), 0) << word;
}

TEST(TagWords, SpecifierIsAWordAndAValue) {
    ExpectSpecifier("String@Holiday", qfc::tag_type::kString, "Holiday");
    ExpectSpecifier("static@Holiday", qfc::tag_type::kStatic, "Holiday");
    ExpectSpecifier("Whatever@Holiday", qfc::tag_type::kString, "Holiday");
    ExpectSpecifier("@Holiday", qfc::tag_type::kString, "Holiday");
    ExpectSpecifier("String@Summer holiday", qfc::tag_type::kString, "Summer holiday");
}

TEST(TagWords, DateSpecifierIsTodayTwice) {
    ExpectSpecifier("Date@x", qfc::tag_type::kDate, "2024-05-06~2024-05-06");
    ExpectSpecifier("date@2020-01-01~2020-01-01", qfc::tag_type::kDate, "2024-05-06~2024-05-06");
    EXPECT_EQ(qfc::ReadTagSpecifier("Date@x", kDay).written, CString("x"));
}

TEST(TagWords, SpecifierOfAnyOtherNumberOfPartsHasNoValue) {
    for (const char* text : {"", "Holiday", "Static", "Static@a@b", "Date@a@b", "String@A@B", "@@", "a@b@c@d"}) {
        ExpectSpecifier(text, 0, "");
    }
}

TEST(TagWords, SpecifierWithoutAValueHasNone) { ExpectSpecifier("String@", qfc::tag_type::kString, ""); }

TEST(TagWords, YearsAreFilledWithBlanksMonthsAndDaysWithZeros) {
    EXPECT_EQ(qfc::DateTagName({99, 1, 2}), CString("  99-01-02~  99-01-02"));
    EXPECT_EQ(qfc::DateTagName({2024, 12, 31}), CString("2024-12-31~2024-12-31"));
}

TEST(TagWords, TodayIsTheDayOfTheLocalZone) {
    // Two zones that never have the same day.
    setenv("TZ", "EAST-13", 1);
    tzset();
    const qfc::LocalDate east = qfc::Today();
    setenv("TZ", "WEST12", 1);
    tzset();
    const qfc::LocalDate west = qfc::Today();
    EXPECT_NE(east.day, west.day);
}

TEST(TagWords, TodayHasTheYearMonthAndDayOfTheClock) {
    const auto today = [] {
        const time_t now = time(nullptr);
        tm day{};
        localtime_r(&now, &day);
        char text[16];
        strftime(text, sizeof text, "%Y-%m-%d", &day);
        return CString(text) + "~" + text;
    };
    const CString before = today();
    const CString name = qfc::DateTagName(qfc::Today());
    EXPECT_TRUE(name == before || name == today()) << name.View();
}

TEST(TagWords, SplitKeepsEmptyParts) {
    EXPECT_EQ(qfc::SplitAnsi("", ';'), (Parts{""}));
    EXPECT_EQ(qfc::SplitAnsi("a", ';'), (Parts{"a"}));
    EXPECT_EQ(qfc::SplitAnsi(";a;;b;", ';'), (Parts{"", "a", "", "b", ""}));
}

// A character whose second byte is '@' in this code page.
TEST(TagWords, SplitStepsOverCharactersThatEndLikeTheSeparator) {
    const JapanesePage page;
    EXPECT_EQ(qfc::SplitAnsi("\x83\x40@\x83\x40", '@'), (Parts{"\x83\x40", "\x83\x40"}));
    ExpectSpecifier("String@\x83\x40", qfc::tag_type::kString, "\x83\x40");
    ExpectSpecifier("\x83\x40", 0, "");
}

TEST(TagWords, LeadByteAtTheEndIsNoWayOut) {
    const JapanesePage page;
    EXPECT_EQ(qfc::SplitAnsi("a@\x83", '@'), (Parts{"a", "\x83"}));
    EXPECT_EQ(qfc::SplitAnsi("\x83", '@'), (Parts{"\x83"}));
}

}  // namespace
