#include "api/names/Translation.h"

#include "platform/os/IniFile.h"
#include "platform/os/Places.h"
#include "platform/text/CodePages.h"
#include "tests/support/HostPlaces.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

using qfc::LookUpTranslation;
using qfc::WriteTranslation;
using qfc::test::HostPlaces;

constexpr DWORD kAllTypes[] = {1, 64, 128, 256, 67108864};

struct Translation : testing::Test {
    HostPlaces places;
};

struct TranslationSwitches : Translation {};

TEST_F(TranslationSwitches, AreOffWithoutAnIni) {
    EXPECT_FALSE(qfc::IsTranslationOn());
    EXPECT_FALSE(qfc::IsTranslationCollected());
}

TEST_F(TranslationSwitches, AreOffWithoutTheirKeys) {
    places.ApplicationIni("[Orvel Cinelume Init Project]\nOther=1\n[USERMODE]\nSupportTWTranslateMode=1\n");
    EXPECT_FALSE(qfc::IsTranslationOn());
    EXPECT_FALSE(qfc::IsTranslationCollected());
}

TEST_F(TranslationSwitches, AreOnAt1) {
    places.TurnCollectingOn();
    EXPECT_TRUE(qfc::IsTranslationOn());
    EXPECT_TRUE(qfc::IsTranslationCollected());
}

TEST_F(TranslationSwitches, AreOffAtAnyOtherNumber) {
    places.ApplicationIni(
        "[Orvel Cinelume Init Project]\nSupportTWTranslateMode=2\n[USERMODE]\nCreateTWTranslateData=-1\n");
    EXPECT_FALSE(qfc::IsTranslationOn());
    EXPECT_FALSE(qfc::IsTranslationCollected());
}

TEST_F(TranslationSwitches, AreOffWithoutAPathToTheIni) {
    const std::string deep = places.Folder() / "data/" + std::string(250, 'x');
    places.Folder().MakeFolder("data/" + std::string(250, 'x'));
    std::ofstream(deep + "/Cinelume.ini") << "[Orvel Cinelume Init Project]\nSupportTWTranslateMode=1\n";
    setenv("QFCLIB_DATA_DIR", deep.c_str(), 1);
    EXPECT_FALSE(qfc::IsTranslationOn());
}

TEST_F(TranslationSwitches, AreReadOncePerProcess) {
    EXPECT_FALSE(qfc::IsTranslationOn());
    EXPECT_FALSE(qfc::IsTranslationCollected());
    places.TurnCollectingOn();
    EXPECT_FALSE(qfc::IsTranslationOn());
    EXPECT_FALSE(qfc::IsTranslationCollected());
}

struct TranslationPaths : Translation {};

TEST_F(TranslationPaths, AreInTheFolderBesideTheHost) {
    EXPECT_EQ(qfc::TranslationFilePath().View(), qfc::HostFolder() + "orvel.dat\\qvTWTranslateData.dat");
    EXPECT_EQ(qfc::ArFilterFilePath().View(), qfc::HostFolder() + "orvel.dat\\ARFilter.ini");
}

TEST_F(TranslationPaths, StayAsTheyWereFirst) {
    const CString first = qfc::TranslationFilePath();
    setenv("QFCLIB_HOST_DIR", "/elsewhere", 1);
    EXPECT_EQ(qfc::TranslationFilePath(), first);
}

TEST_F(TranslationPaths, AreEmptyWhenTheyDoNotFitAPathBuffer_AndNothingIsFoundOrWritten) {
    const std::string deep = places.Folder().MakeFolder(std::string(250, 'x') + "/orvel.dat");
    setenv("QFCLIB_HOST_DIR", (places.Folder() / std::string(250, 'x')).c_str(), 1);
    std::ofstream(deep + "/qvTWTranslateData.dat") << "[TW_FOLDER_1]\nA=B\n";
    EXPECT_TRUE(qfc::TranslationFilePath().IsEmpty());
    EXPECT_TRUE(qfc::ArFilterFilePath().IsEmpty());
    EXPECT_STREQ(LookUpTranslation(1, "A", true), "");
    EXPECT_EQ(WriteTranslation(1, "C", true), 0);
}

struct TranslationLookUp : Translation {};

TEST_F(TranslationLookUp, FoldersHaveASectionForEachNumber) {
    places.Translations("[TW_FOLDER_1]\nA=one\n[TW_FOLDER_-1]\nA=all bits\n[TW_FOLDER_0]\nA=none\n");
    EXPECT_STREQ(LookUpTranslation(1, "A", true), "one");
    EXPECT_STREQ(LookUpTranslation(0xFFFFFFFF, "A", true), "all bits");
    EXPECT_STREQ(LookUpTranslation(0, "A", true), "none");
    EXPECT_STREQ(LookUpTranslation(2, "A", true), "");
    EXPECT_STREQ(LookUpTranslation(1, "B", true), "");
}

TEST_F(TranslationLookUp, FiveItemTypesHaveASection) {
    places.Translations(
        "[TW_ITEMTYPE_VIDEO]\nA=v\n[TW_ITEMTYPE_TX]\nA=t\n[TW_ITEMTYPE_VIDEO_FILTER]\nA=vf\n"
        "[TW_ITEMTYPE_AUDIO_FILTER]\nA=af\n[TW_ITEMTYPE_SPEED]\nA=s\n[TW_FOLDER_2]\nA=folder\n");
    const char* const expected[] = {"v", "t", "vf", "af", "s"};
    for (int i = 0; i < 5; ++i) EXPECT_STREQ(LookUpTranslation(kAllTypes[i], "A", false), expected[i]);
    for (const DWORD type : {0u, 2u, 65u, 0xFFFFFFFFu}) EXPECT_STREQ(LookUpTranslation(type, "A", false), "") << type;
}

TEST_F(TranslationLookUp, IsEmptyWithoutAFile) { EXPECT_STREQ(LookUpTranslation(1, "A", true), ""); }

TEST_F(TranslationLookUp, GivesUtf8_KeysAreInTheCodePage) {
    places.Translations("[TW_FOLDER_1]\nä=漢ß\n");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_STREQ(LookUpTranslation(1, "\xE4", true), "漢ß");
}

// In these code pages the bytes of the two names' UTF-8 forms are letters that differ in case only.
TEST_F(TranslationLookUp, NamesDoNotMeetInAnyCodePage) {
    places.Translations("[TW_FOLDER_5]\nвод=water\nгод=year\nÌ=i\nÜ=u\n");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1251"));
    EXPECT_STREQ(LookUpTranslation(5, "\xE2\xEE\xE4", true), "water");
    EXPECT_STREQ(LookUpTranslation(5, "\xE3\xEE\xE4", true), "year");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_STREQ(LookUpTranslation(5, "\xDC", true), "u");
    EXPECT_STREQ(LookUpTranslation(5, "\xCC", true), "i");
}

TEST_F(TranslationLookUp, CaseDoesNotMatterBeyondAsciiInAnyCodePage) {
    places.Translations("[TW_FOLDER_5]\nГод=year\n");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1251"));
    EXPECT_STREQ(LookUpTranslation(5, "\xE3\xCE\xE4", true), "year");
}

TEST_F(TranslationLookUp, SectionNamesEndAtTheirBracketInAnyCodePage) {
    places.Translations("[ッ]\nA=found\n");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    EXPECT_STREQ(LookUpTranslation("ッ", "A"), "found");
}

TEST_F(TranslationLookUp, NothingIsFoundForNoName) {
    places.Translations("[TW_FOLDER_0]\n=x\n");
    EXPECT_STREQ(LookUpTranslation(0, "", true), "");
    EXPECT_STREQ(LookUpTranslation(0, "  ", true), "");
}

TEST_F(TranslationLookUp, IsCutTo259Bytes) {
    places.Translations("[TW_FOLDER_1]\nA=" + std::string(300, 'x') + "\n");
    EXPECT_EQ(LookUpTranslation(1, "A", true).View(), std::string(259, 'x'));
}

TEST_F(TranslationLookUp, FolderOfEitherSpellingIsFound) {
    std::filesystem::rename(places.Folder() / "host/Orvel.dat", places.Folder() / "host/orvel.dat");
    places.Folder().Write("host/orvel.dat/qvTWTranslateData.dat", "[TW_FOLDER_1]\nA=B\n");
    EXPECT_STREQ(LookUpTranslation(1, "A", true), "B");
}

TEST_F(TranslationLookUp, ResultsOfThreadsDoNotMix) {
    places.Translations("[TW_FOLDER_1]\nA=" + std::string(200, 'a') + "\nB=" + std::string(200, 'b') + "\n");
    const auto look = [](const char* key, char expected) {
        for (int i = 0; i < 500; ++i) ASSERT_EQ(LookUpTranslation(1, key, true).View(), std::string(200, expected));
    };
    std::thread other(look, "B", 'b');
    look("A", 'a');
    other.join();
}

TEST(TranslationBuffers, KeepTheTextOfTheLookUpBeforeWithoutAFile) {
    const qfc::test::TempFolder folder;
    const CString file = folder.Write("data", "[S]\nA=found\n").c_str();
    qfc::TranslationBuffer buffer;
    EXPECT_STREQ(buffer.Read("", "S", "A"), "");
    EXPECT_STREQ(buffer.Read(file, "S", "A"), "found");
    EXPECT_STREQ(buffer.Read("", "S", "B"), "found");
    EXPECT_STREQ(buffer.Read(file, "S", "B"), "");
    EXPECT_STREQ(buffer.Read("", "S", "A"), "");
}

struct TranslationWriter : Translation {
    std::string Written() const { return qfc::test::ReadFile(places.TranslationFile()); }
};

TEST_F(TranslationWriter, WritesTheNameAsKeyAndValue) {
    EXPECT_EQ(WriteTranslation(5, "Größe", true), 1);
    EXPECT_EQ(WriteTranslation(0x80000000, "B", true), 1);
    EXPECT_EQ(Written(), "[TW_FOLDER_5]\r\nGröße=Größe\r\n[TW_FOLDER_-2147483648]\r\nB=B\r\n");
}

TEST_F(TranslationWriter, CollectsThreeItemTypesOnly) {
    EXPECT_EQ(WriteTranslation(1, "Video", false), 0);
    EXPECT_EQ(WriteTranslation(67108864, "Speed", false), 0);
    EXPECT_EQ(WriteTranslation(2, "Other", false), 0);
    EXPECT_EQ(WriteTranslation(64, "A", false), 1);
    EXPECT_EQ(WriteTranslation(128, "B", false), 1);
    EXPECT_EQ(WriteTranslation(256, "C", false), 1);
    EXPECT_EQ(Written(),
              "[TW_ITEMTYPE_TX]\r\nA=A\r\n[TW_ITEMTYPE_VIDEO_FILTER]\r\nB=B\r\n"
              "[TW_ITEMTYPE_AUDIO_FILTER]\r\nC=C\r\n");
}

TEST_F(TranslationWriter, WritesEachNameOncePerProcess) {
    EXPECT_EQ(WriteTranslation(5, "A", true), 1);
    places.Translations("[TW_FOLDER_5]\r\nA=changed by hand\r\n");
    EXPECT_EQ(WriteTranslation(5, "A", true), 1);
    EXPECT_EQ(Written(), "[TW_FOLDER_5]\r\nA=changed by hand\r\n");
    EXPECT_EQ(WriteTranslation(6, "A", true), 1);
    EXPECT_EQ(WriteTranslation(64, "A", false), 1);
    EXPECT_EQ(LookUpTranslation(6, "A", true), "A");
    EXPECT_EQ(LookUpTranslation(64, "A", false), "A");
}

TEST_F(TranslationWriter, WritesOverATranslation) {
    places.Translations("; by hand\n[TW_FOLDER_5]\nA=translated\nB=kept\n");
    EXPECT_EQ(WriteTranslation(5, "A", true), 1);
    EXPECT_EQ(Written(), "; by hand\n[TW_FOLDER_5]\nA=A\nB=kept\n");
}

TEST_F(TranslationWriter, WithoutTheFolderItFails_AndTriesAgain) {
    std::filesystem::remove(places.Folder() / "host/Orvel.dat");
    EXPECT_EQ(WriteTranslation(5, "A", true), 0);
    places.Folder().MakeFolder("host/Orvel.dat");
    EXPECT_EQ(WriteTranslation(5, "A", true), 1);
}

TEST_F(TranslationWriter, NamesThatCannotBeKeysAreRefused) {
    for (const char* name : {"", "a=b", "[S]", ";c", "a\nb", "a\r[S]", " a", "a ", "\ta", "a\v"}) {
        EXPECT_EQ(WriteTranslation(5, name, true), 0) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(places.TranslationFile()));
}

TEST_F(TranslationWriter, QuotedNamesAreCollectedWithTheirQuotes) {
    EXPECT_EQ(WriteTranslation(5, "\"A\"", true), 1);
    EXPECT_EQ(Written(), "[TW_FOLDER_5]\r\n\"A\"=\"A\"\r\n");
}

TEST_F(TranslationWriter, FileIsUtf8WhateverTheCodePage) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_EQ(WriteTranslation(5, "\xE4", true), 1);
    EXPECT_EQ(Written(), "[TW_FOLDER_5]\r\nä=ä\r\n");
}

TEST_F(TranslationWriter, NamesDoNotMeetInAnyCodePage) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1251"));
    EXPECT_EQ(WriteTranslation(5, "\xE2\xEE\xE4", true), 1);
    EXPECT_EQ(WriteTranslation(5, "\xE3\xEE\xE4", true), 1);
    EXPECT_EQ(Written(), "[TW_FOLDER_5]\r\nвод=вод\r\nгод=год\r\n");
}

TEST_F(TranslationWriter, ThreadsLoseNoName) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 20; ++i) {
                EXPECT_EQ(WriteTranslation(5, CString(std::string_view(std::to_string(t * 10 + i))), true), 1);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(qfc::ReadProfileSection("TW_FOLDER_5", places.TranslationFile()).size(), 50u);
}

}  // namespace
