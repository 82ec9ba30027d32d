#include "platform/os/LastError.h"
#include "tests/platform/IniTest.h"

#include <chrono>
#include <fcntl.h>
#include <future>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

struct IniValue : qfc::test::IniTest {};

TEST_F(IniValue, EveryKindOfLineBreakEndsALine) {
    File("[S]\ra=1\nb=2\r\nc=3\r\rd=4");
    EXPECT_EQ(Value("S", "a"), "1");
    EXPECT_EQ(Value("S", "b"), "2");
    EXPECT_EQ(Value("S", "c"), "3");
    EXPECT_EQ(Value("S", "d"), "4");
}

TEST_F(IniValue, BlanksTabsAndVerticalTabsAroundNamesAndValuesGo) {
    File(" \t\v[ \t\v S \v\t ]\n \t\v key \v\t = \v\t a value \t\v\n");
    EXPECT_EQ(Value("S", "key"), "a value");
}

TEST_F(IniValue, SectionNameEndsAtTheFirstBracketOrWithTheLine) {
    File("[one]two]\na=1\n[open\na=2\n[in[ner]\na=3\n[text] behind = it\na=4");
    EXPECT_EQ(Value("one", "a"), "1");
    EXPECT_EQ(Value("open", "a"), "2");
    EXPECT_EQ(Value("in[ner", "a"), "3");
    EXPECT_EQ(Value("text", "a"), "4");
}

TEST_F(IniValue, SplitsAtTheFirstEqualsSign) {
    File("[S]\na=b=c\n");
    EXPECT_EQ(Value("S", "a"), "b=c");
}

TEST_F(IniValue, OnlyASemicolonAtTheStartMakesAComment) {
    File("[S]\n;a=1\n \t;a=2\na=3 ; more\n#b=4\nc;d=5\n");
    EXPECT_EQ(Value("S", "a"), "3 ; more");
    EXPECT_EQ(Value("S", "#b"), "4");
    EXPECT_EQ(Value("S", "c;d"), "5");
    EXPECT_EQ(Value("S", ";a"), "none");
}

TEST_F(IniValue, LinesBeforeTheFirstSectionAreIgnored) {
    File("a=1\n[S]\nb=2\n");
    EXPECT_EQ(Value("S", "a"), "none");
    EXPECT_EQ(Value("", "a"), "none");
}

TEST_F(IniValue, LineWithoutEqualsSignIsNotFoundByName) {
    File("[S]\nkey\n");
    EXPECT_EQ(Value("S", "key"), "none");
}

TEST_F(IniValue, KeyWithNothingBehindItIsEmptyAndNotTheDefault) {
    File("[S]\nkey=\nblank= \t\n");
    EXPECT_EQ(Value("S", "key"), "");
    EXPECT_EQ(Value("S", "blank"), "");
}

TEST_F(IniValue, NamesMatchInAnyCase_ValuesKeepTheirs) {
    File("[SecTion]\nÄKey=VaLue\n");
    EXPECT_EQ(Value("sEction", "äkEY"), "VaLue");
}

TEST_F(IniValue, OnlyBlanksAroundTheNamesAskedForGo) {
    File("[S]\nkey=1\n");
    EXPECT_EQ(Value("  S ", " key  "), "1");
    EXPECT_EQ(Value("S", "\tkey"), "none");
    EXPECT_EQ(Value("S\t", "key"), "none");
}

TEST_F(IniValue, FirstOfTwoSectionsAndOfTwoKeysCounts) {
    File("[S]\na=1\nA=2\n[s]\na=3\nb=4\n");
    EXPECT_EQ(Value("S", "a"), "1");
    EXPECT_EQ(Value("S", "b"), "none");
}

TEST_F(IniValue, KeylessLineOfTheSameNameDoesNotHideTheKey) {
    File("[S]\na\na=1\n");
    EXPECT_EQ(Value("S", "a"), "1");
}

TEST_F(IniValue, OnePairOfMatchingOuterQuotesGoes) {
    File("[S]\na=\" x \"\nb='y'\nc=\"\"x\"\"\nd=\"x'\ne=\"x\nf=x\"\ng=\"\nh=\"\"\n");
    EXPECT_EQ(Value("S", "a"), " x ");
    EXPECT_EQ(Value("S", "b"), "y");
    EXPECT_EQ(Value("S", "c"), "\"x\"");
    EXPECT_EQ(Value("S", "d"), "\"x'");
    EXPECT_EQ(Value("S", "e"), "\"x");
    EXPECT_EQ(Value("S", "f"), "x\"");
    EXPECT_EQ(Value("S", "g"), "\"");
    EXPECT_EQ(Value("S", "h"), "");
}

TEST_F(IniValue, DefaultLosesTrailingBlanksOnly) {
    EXPECT_EQ(Value("S", "key", "  text\t  "), "  text\t");
    EXPECT_EQ(Value("S", "key", "   "), "");
    EXPECT_EQ(Value("S", "key", nullptr), "");
    File("[S]\n");
    EXPECT_EQ(Value("S", "key", "other "), "other");
    EXPECT_EQ(Value("T", "key", "other "), "other");
    EXPECT_EQ(Value("S", "key", "default", 4), "def");
}

TEST_F(IniValue, IsCutToTheBuffer) {
    File("[S]\nkey=value\n");
    EXPECT_EQ(Value("S", "key", "", 6), "value");
    EXPECT_EQ(Value("S", "key", "", 5), "valu");
    EXPECT_EQ(Value("S", "key", "", 1), "");
    char untouched = '#';
    EXPECT_EQ(GetPrivateProfileStringA("S", "key", "", &untouched, 0, path.c_str()), 0u);
    EXPECT_EQ(untouched, '#');
    EXPECT_EQ(GetPrivateProfileStringA("S", "key", "", nullptr, 10, path.c_str()), 0u);
}

TEST_F(IniValue, BufferOf260BytesHolds259) {
    File("[S]\nkey=" + std::string(300, 'x') + "\n");
    EXPECT_EQ(Value("S", "key", "", 260), std::string(259, 'x'));
}

TEST_F(IniValue, LengthCountsModulo65536) {
    File("[S]\na=" + std::string(65535, 'x') + "\nb=" + std::string(65536 + 5, 'y') + "\n");
    EXPECT_EQ(Value("S", "a", "", 100000).size(), 65535u);
    EXPECT_EQ(Value("S", "b", "", 100000), "yyyyy");
}

TEST_F(IniValue, Utf8MarkSpoilsTheFirstLineOnly) {
    File("\xEF\xBB\xBF[S]\na=1\n[T]\nb=2\n");
    EXPECT_EQ(Value("S", "a"), "none");
    EXPECT_EQ(Value("T", "b"), "2");
}

TEST_F(IniValue, BytesThatFormNoCharacterComeBackAsTheyAre) {
    File("[S]\na=\xFF\xC3\x80 x\n");
    EXPECT_EQ(Value("S", "a"), "\xFF\xC3\x80 x");
}

TEST_F(IniValue, EndsAtANulInTheFile) {
    File(std::string("[S]\na=one\0two\n", 14));
    EXPECT_EQ(Value("S", "a"), "one");
}

TEST_F(IniValue, TrailByteThatLooksLikeABracketDoesNotEndTheSectionName) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    File("[\x83\x5D\x83\x5B]\nkey=\x83\x5C\n");
    EXPECT_EQ(Value("\x83\x5D\x83\x5B", "key"), "\x83\x5C");
}

TEST_F(IniValue, CaseFoldsInTheCodePage) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    File("[\xC4]\n\xD6=\xDC\n");
    EXPECT_EQ(Value("\xE4", "\xF6"), "\xDC");
}

TEST_F(IniValue, MissingFolderFileOrPathGivesTheDefault) {
    char buffer[16];
    for (const char* file : {"/no/such/folder/x.ini", "/", ".", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(GetPrivateProfileStringA("S", "k", "d", buffer, sizeof(buffer), file), 1u);
        EXPECT_STREQ(buffer, "d");
    }
    GetPrivateProfileStringA("S", "k", "d", buffer, sizeof(buffer), path.c_str());
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(IniValue, PipeIsNoProfileAndIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(Value("S", "k"), "none");
}

TEST_F(IniValue, EmptyFileHasNoValues) {
    File("");
    EXPECT_EQ(Value("S", "k"), "none");
}

TEST_F(IniValue, ChangeOfTheFileIsSeenAtOnce) {
    File("[S]\na=1\n");
    EXPECT_EQ(Value("S", "a"), "1");
    File("[S]\na=2\n");
    EXPECT_EQ(Value("S", "a"), "2");
    std::filesystem::remove(path);
    EXPECT_EQ(Value("S", "a"), "none");
    File("[S]\na=3\n");
    EXPECT_EQ(Value("S", "a"), "3");
}

TEST_F(IniValue, ChangeOfAFileIsSeenThoughSizeAndTimeOfChangeStay) {
    const auto setOld = [&] {
        const timeval times[2] = {{1000000000, 0}, {1000000000, 0}};
        return utimes(path.c_str(), times);
    };
    File("[S]\na=1\n");
    ASSERT_EQ(setOld(), 0);
    EXPECT_EQ(Value("S", "a"), "1");
    File("[S]\na=2\n");
    ASSERT_EQ(setOld(), 0);
    EXPECT_EQ(Value("S", "a"), "2");
}

TEST_F(IniValue, FileIsReadAnewForAnotherCodePage) {
    File("[\x83\x5D]\nkey=1\n");
    EXPECT_EQ(Value("\x83\x5D", "key"), "none");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    EXPECT_EQ(Value("\x83\x5D", "key"), "1");
}

TEST_F(IniValue, ManyFilesAreToldApart) {
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 40; ++i) {
            const std::string file = folder.Write("f" + std::to_string(i), "[S]\nk=" + std::to_string(i + round));
            EXPECT_EQ(qfc::ReadProfileText("S", "k", "", file), std::to_string(i + round));
        }
    }
}

TEST_F(IniValue, HundredThousandLinesAreFoundByName) {
    std::string content;
    for (int section = 0; section < 100; ++section) {
        content += "[Section " + std::to_string(section) + "]\n";
        for (int i = 0; i < 1000; ++i) content += "Key " + std::to_string(i) + "=" + std::to_string(section + i) + "\n";
    }
    File(content);
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(Value("section 99", ("key " + std::to_string(i)).c_str()), std::to_string(99 + i));
}

TEST_F(IniValue, Utf16IsUnderstood) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : std::u16string_view(u"[Größe]\r\nKéy=ä😀ß\r\n")) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    File(bytes);
    EXPECT_EQ(Value("GRÖßE", "kÉY"), "ä😀ß");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_EQ(Value("gr\xF6\xDF"
                    "e",
                    "K\xC9Y"),
              "\xE4??\xDF");
}

TEST_F(IniValue, Utf16OfTheOtherByteOrderIsNotUnderstood) {
    std::string bytes = "\xFE\xFF";
    for (const char c : std::string_view("[S]\na=1\n")) bytes += std::string(1, '\0') + c;
    File(bytes);
    EXPECT_EQ(Value("S", "a"), "none");
}

TEST_F(IniValue, BackslashesSeparateFoldersToo) {
    folder.MakeFolder("sub");
    folder.Write("sub/x.ini", "[S]\nk=1\n");
    EXPECT_EQ(qfc::ReadProfileText("S", "k", "", folder / "sub\\x.ini"), "1");
}

TEST_F(IniValue, BareNameIsInTheDataFolder_DotIsTheWorkingFolder) {
    ASSERT_EQ(setenv("QFCLIB_DATA_DIR", folder.MakeFolder("data").c_str(), 1), 0);
    folder.Write("data/own.ini", "[S]\nk=data\n");
    folder.Write("own.ini", "[S]\nk=working\n");
    std::filesystem::current_path(folder.Path());
    EXPECT_EQ(qfc::ReadProfileText("S", "k", "", "own.ini"), "data");
    EXPECT_EQ(qfc::ReadProfileText("S", "k", "", ".\\own.ini"), "working");
    EXPECT_EQ(qfc::ReadProfileText("S", "k", "", "./own.ini"), "working");
}

TEST_F(IniValue, BareNameIsNowhereWhenTheDataFolderHasNoPath) {
    const std::string deep = folder.MakeFolder(std::string(200, 'x') + "/" + std::string(200, 'x'));
    ASSERT_EQ(setenv("QFCLIB_DATA_DIR", deep.c_str(), 1), 0);
    folder.Write("own.ini", "[S]\nk=working\n");
    std::filesystem::current_path(folder.Path());
    EXPECT_EQ(qfc::ReadProfileText("S", "k", "none", "own.ini"), "none");
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(WritePrivateProfileStringA("S", "k", "v", "new.ini"), 0);
    EXPECT_EQ(WritePrivateProfileStringA("S", "k", nullptr, "new.ini"), 0);
    EXPECT_FALSE(std::filesystem::exists(folder / "new.ini"));
}

TEST_F(IniValue, ReadersDoNotWaitForAWriter) {
    File("[S]\na=1\n");
    const int lock = open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    std::future<std::string> value = std::async(std::launch::async, [&] { return Value("S", "a"); });
    const bool read = value.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
    close(lock);
    EXPECT_TRUE(read);
    EXPECT_EQ(value.get(), "1");
}

TEST_F(IniValue, NumberIsReadFromTheStartOfTheValue) {
    File("[S]\na=1\nb= 12x\nc=x\nd=\ne=-3\nf=99999999999\ng=\"7\"\n");
    const auto number = [&](const char* key) { return qfc::ReadProfileNumber("S", key, 42, path); };
    EXPECT_EQ(number("a"), 1);
    EXPECT_EQ(number("b"), 12);
    EXPECT_EQ(number("c"), 0);
    EXPECT_EQ(number("d"), 0);
    EXPECT_EQ(number("e"), -3);
    EXPECT_EQ(number("f"), 0);
    EXPECT_EQ(number("g"), 7);
    EXPECT_EQ(number("missing"), 42);
}

}  // namespace
