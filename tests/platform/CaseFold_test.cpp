#include "platform/text/CaseFold.h"

#include "platform/text/CaseFoldTables.h"
#include "platform/text/CodePages.h"

#include <gtest/gtest.h>
#include <span>

namespace {

TEST(CaseFold, CoversTheScriptsThatHaveCases) {
    const std::pair<char32_t, char32_t> pairs[] = {
        {U'A', U'a'},   {U'Z', U'z'}, {U'À', U'à'},       {U'Þ', U'þ'},       {U'Ā', U'ā'},      {U'Ÿ', U'ÿ'},
        {U'Š', U'š'},   {U'Ǆ', U'ǆ'}, {U'Α', U'α'},       {U'Ω', U'ω'},       {U'Ά', U'ά'},      {U'Ѐ', U'ѐ'},
        {U'А', U'а'},   {U'Я', U'я'}, {U'Ѫ', U'ѫ'},       {U'Ա', U'ա'},       {U'Ֆ', U'ֆ'},      {U'Ა', U'ა'},
        {U'Ḁ', U'ḁ'},   {U'Ạ', U'ạ'}, {U'Ὀ', U'ὀ'},       {U'ᾈ', U'ᾀ'},       {U'Ⅰ', U'ⅰ'},      {U'Ⓐ', U'ⓐ'},
        {U'Ａ', U'ａ'}, {U'Ⲁ', U'ⲁ'}, {0x10400, 0x10428}, {0x1E900, 0x1E922}, {0x10C80, 0x10CC0}};
    for (const auto& [upper, lower] : pairs) {
        EXPECT_EQ(qfc::FoldToLower(upper), lower) << static_cast<unsigned>(upper);
        EXPECT_EQ(qfc::FoldToLower(lower), lower) << static_cast<unsigned>(lower);
        EXPECT_EQ(qfc::FoldToUpper(lower), upper) << static_cast<unsigned>(lower);
        EXPECT_EQ(qfc::FoldToUpper(upper), upper) << static_cast<unsigned>(upper);
    }
}

TEST(CaseFold, OtherFormsOfALetterFoldButNeverComeBack) {
    EXPECT_EQ(qfc::FoldToLower(U'ς'), U'σ');
    EXPECT_EQ(qfc::FoldToUpper(U'ς'), U'Σ');
    EXPECT_EQ(qfc::FoldToUpper(U'σ'), U'Σ');
    EXPECT_EQ(qfc::FoldToLower(U'ſ'), U's');
    EXPECT_EQ(qfc::FoldToUpper(U's'), U'S');
    EXPECT_EQ(qfc::FoldToLower(0x212A), U'k');
    EXPECT_EQ(qfc::FoldToUpper(U'k'), U'K');
    EXPECT_EQ(qfc::FoldToLower(0xB5), 0x3BCu);
    EXPECT_EQ(qfc::FoldToUpper(0x3BC), 0x39Cu);
}

TEST(CaseFold, WhatHasNoSimpleCaseStays) {
    for (const char32_t c : {U'0', U'_', U'[', U'@', U'`', U'{', U'ß', U'ı', U'İ', U'×', U'÷', U'中', U'あ', U'א'}) {
        EXPECT_EQ(qfc::FoldToLower(c), c) << static_cast<unsigned>(c);
        EXPECT_EQ(qfc::FoldToUpper(c), c) << static_cast<unsigned>(c);
    }
}

TEST(CaseFold, TablesAreOrderedAndFoldingIsDoneAfterOneStep) {
    for (const std::span<const qfc::CaseRange> table :
         {std::span<const qfc::CaseRange>(qfc::kCasePairs), std::span<const qfc::CaseRange>(qfc::kOneWayFolds)}) {
        char32_t previous = 0;
        for (const qfc::CaseRange& range : table) {
            EXPECT_GT(range.first, previous);
            EXPECT_GE(range.last, range.first);
            previous = range.last;
            for (char32_t c = range.first; c <= range.last; c += static_cast<char32_t>(range.step)) {
                const char32_t lower = qfc::FoldToLower(c);
                EXPECT_NE(lower, c) << static_cast<unsigned>(c);
                EXPECT_EQ(qfc::FoldToLower(lower), lower) << static_cast<unsigned>(c);
            }
        }
    }
}

TEST(CaseFold, UpperCaseOfEveryPairComesBack) {
    for (const qfc::CaseRange& range : qfc::kCasePairs) {
        for (char32_t c = range.first; c <= range.last; c += static_cast<char32_t>(range.step)) {
            EXPECT_EQ(qfc::FoldToUpper(qfc::FoldToLower(c)), c) << static_cast<unsigned>(c);
        }
    }
}

TEST(CaseFoldOfTexts, LeavesBrokenBytesAlone) {
    EXPECT_EQ(qfc::FoldAnsiToLower("A\xFF"
                                   "B\xC3"),
              "a\xFF"
              "b\xC3");
    EXPECT_EQ(qfc::FoldAnsiToUpper("a\xE2\x82"), "A\xE2\x82");
}

TEST(CaseFoldOfTexts, KeepsEmbeddedNuls) {
    EXPECT_EQ(qfc::FoldAnsiToLower(std::string_view("A\0B", 3)), std::string("a\0b", 3));
}

TEST(CaseFoldOfTexts, FollowsAnotherCodePage) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_EQ(qfc::FoldAnsiToLower("\xC9"
                                   "A\x8A"),
              "\xE9"
              "a\x9A");
    EXPECT_EQ(qfc::FoldAnsiToUpper("\xE9"
                                   "a\x9A"),
              "\xC9"
              "A\x8A");
    // The page has no Greek mu: the micro sign keeps its byte.
    EXPECT_EQ(qfc::FoldAnsiToLower("\xB5"), "\xB5");
    EXPECT_EQ(CString("\xC9").CompareNoCase("\xE9"), 0);
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1251"));
    EXPECT_EQ(qfc::FoldAnsiToLower("\xC9"), "\xE9");
    EXPECT_EQ(qfc::FoldAnsiToLower("\xA8"), "\xB8");
    ASSERT_TRUE(qfc::SetAnsiCodePage("UTF-8"));
}

TEST(CaseFoldOfTexts, TakesTrailBytesForWhatTheyAre) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    // Katakana A; its second byte is the letter A.
    EXPECT_EQ(qfc::FoldAnsiToLower("\x83\x41"
                                   "A"),
              "\x83\x41"
              "a");
    ASSERT_TRUE(qfc::SetAnsiCodePage("UTF-8"));
}

}  // namespace
