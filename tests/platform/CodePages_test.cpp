#include "platform/text/CodePages.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

struct CodePages : testing::Test {
    ~CodePages() override { qfc::SetAnsiCodePage("UTF-8"); }
    static std::string AllBytes() {
        std::string bytes;
        for (int i = 1; i < 256; ++i) bytes += static_cast<char>(i);
        return bytes;
    }
};

TEST_F(CodePages, Utf8IsTheDefault_AndKeepsEveryByte) {
    EXPECT_STREQ(qfc::AnsiCodePage(), "UTF-8");
    const std::string bytes = AllBytes() + std::string(1, '\0') + "\xC3";
    EXPECT_EQ(qfc::AnsiToUtf8(bytes), bytes);
    EXPECT_EQ(qfc::Utf8ToAnsi(bytes), bytes);
}

TEST_F(CodePages, UnknownPagesAreRefusedAndChangeNothing) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    for (const char* name : {"no such page", "", "UTF-16LE", "UTF-32"}) {
        EXPECT_FALSE(qfc::SetAnsiCodePage(name)) << name;
    }
    EXPECT_FALSE(qfc::SetAnsiCodePage(nullptr));
    EXPECT_STREQ(qfc::AnsiCodePage(), "CP1252");
}

// Their texts cannot be converted character by character, and nothing that is not ASCII would come back.
TEST_F(CodePages, PagesThatShiftBetweenSetsAreRefused) {
    for (const char* name : {"ISO-2022-JP", "ISO-2022-JP-2", "ISO-2022-KR", "ISO-2022-CN", "UTF-7", "HZ"}) {
        EXPECT_FALSE(qfc::SetAnsiCodePage(name)) << name;
    }
}

TEST_F(CodePages, PagesThatContainAsciiAreTaken) {
    for (const char* name :
         {"CP1250", "CP1251",     "CP1252", "CP1255",     "CP1256",     "CP1258",  "CP437",  "CP850",
          "CP866",  "CP932",      "CP936",  "CP949",      "CP950",      "GB18030", "EUC-JP", "EUC-KR",
          "EUC-TW", "BIG5-HKSCS", "KOI8-R", "ISO-8859-1", "ISO-8859-8", "TIS-620", "TCVN",   "MACINTOSH"}) {
        EXPECT_TRUE(qfc::SetAnsiCodePage(name)) << name;
        const std::string text = "A\\b|c-d_e";
        EXPECT_EQ(qfc::Utf8ToAnsi(qfc::AnsiToUtf8(text)), text) << name;
    }
}

TEST_F(CodePages, Utf8CanBeChosenAgainInAnySpelling) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    ASSERT_TRUE(qfc::SetAnsiCodePage("utf8"));
    EXPECT_EQ(qfc::AnsiToUtf8("\xFF"), "\xFF");
}

TEST_F(CodePages, Cp1252ConvertsBothWays) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_EQ(qfc::AnsiToUtf8("caf\xE9 \x80"), "café €");
    EXPECT_EQ(qfc::Utf8ToAnsi("café €"), "caf\xE9 \x80");
}

TEST_F(CodePages, HolesOfCp1252PassAsControlCharacters) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("windows-1252"));
    EXPECT_EQ(qfc::AnsiToUtf16("\x81\x8D\x8F\x90\x9D"), u"\x81\x8D\x8F\x90\x9D");
    EXPECT_EQ(qfc::AnsiToUtf8("\x81"), "\xC2\x81");
    EXPECT_EQ(qfc::Utf8ToAnsi("\xC2\x9D"), "\x9D");
}

TEST_F(CodePages, EveryByteOfCp1252ComesBack) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_EQ(qfc::Utf8ToAnsi(qfc::AnsiToUtf8(AllBytes())), AllBytes());
}

TEST_F(CodePages, WhatThePageDoesNotHaveBecomesAQuestionMark) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_EQ(qfc::Utf8ToAnsi("aЖb"), "a?b");
    EXPECT_EQ(qfc::Utf8ToAnsi("a\xFF"
                              "b"),
              "a?b");
}

TEST_F(CodePages, CharacterBeyond16BitsBecomesTwoQuestionMarks) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_EQ(qfc::Utf8ToAnsi("a😀b"), "a??b");
}

TEST_F(CodePages, BytesThatFormNoCharacterBecomeAQuestionMark) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    EXPECT_EQ(qfc::AnsiToUtf8("\x83\x41"), "ア");
    EXPECT_EQ(qfc::AnsiToUtf8("a\x83"), "a?");
    EXPECT_EQ(qfc::AnsiToUtf16("a\x83"), u"a\xFFFD");
}

TEST_F(CodePages, LongNamesOfMultiByteCharactersConvert) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("GB18030"));
    EXPECT_EQ(qfc::AnsiToUtf8(qfc::Utf8ToAnsi("中文 é 😀")), "中文 é 😀");
}

TEST_F(CodePages, AccentsAfterALetterAreNotSwallowed) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1258"));
    // Letter and combining accent, apart and at the end of the text.
    EXPECT_EQ(qfc::AnsiToUtf16("e\xECx"
                               "e"),
              u"e\x0301xe");
}

TEST_F(CodePages, InvalidUtf8BecomesTheReplacementCharacterTowardsUtf16) {
    EXPECT_EQ(qfc::AnsiToUtf16("a\xFFz"), u"a\xFFFDz");
    EXPECT_EQ(qfc::AnsiToUtf16("\xE2\x82"), u"\xFFFD");
    EXPECT_EQ(qfc::AnsiToUtf16("é😀"), u"\x00E9\xD83D\xDE00");
    EXPECT_EQ(qfc::AnsiToUtf16(""), u"");
}

TEST_F(CodePages, DatabaseHelperConvertsNames) {
    EXPECT_STREQ(CDBStringHelper::ASCII2UTF_8("caf\xE9"), "caf\xE9");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_STREQ(CDBStringHelper::ASCII2UTF_8("caf\xE9"), "café");
    EXPECT_STREQ(CDBStringHelper::UTF_82ASCII("café"), "caf\xE9");
    EXPECT_TRUE(CDBStringHelper::UTF_82ASCII("").IsEmpty());
}

TEST_F(CodePages, ThreadsConvertAtTheSameTime) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    const auto convert = [] {
        for (int i = 0; i < 500; ++i) EXPECT_EQ(qfc::Utf8ToAnsi(qfc::AnsiToUtf8("caf\xE9")), "caf\xE9");
    };
    std::thread other(convert);
    convert();
    other.join();
}

}  // namespace
