#include "tests/platform/IniTest.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct IniLists : qfc::test::IniTest {
    // Length and bytes of a call on a buffer of `size`.
    struct Answer {
        DWORD length;
        std::string bytes;
        bool operator==(const Answer&) const = default;
        friend std::ostream& operator<<(std::ostream& out, const Answer& answer) {
            return out << answer.length << " " << answer.bytes;
        }
    };
    template <class Call>
    Answer Ask(DWORD size, const Call& call) const {
        std::vector<char> buffer(size + 8, '#');
        const DWORD length = call(buffer.data());
        return {length, qfc::test::Shown(buffer)};
    }
    Answer Sections(DWORD size) const {
        return Ask(size, [&](char* b) { return GetPrivateProfileSectionNamesA(b, size, path.c_str()); });
    }
    Answer Lines(const char* section, DWORD size) const {
        return Ask(size, [&](char* b) { return GetPrivateProfileSectionA(section, b, size, path.c_str()); });
    }
    Answer Names(const char* section, const char* key, DWORD size) const {
        return Ask(size, [&](char* b) { return GetPrivateProfileStringA(section, key, "d ", b, size, path.c_str()); });
    }
};

TEST_F(IniLists, SectionNames_TrimmedInFileOrderWithDuplicates) {
    File("[ b ]\n[a]\nx=1\n[b]\n[B]\n");
    EXPECT_EQ(Sections(100), (Answer{8, "b0a0b0B00"}));
    EXPECT_THAT(qfc::ReadProfileSectionNames(path), ElementsAre("b", "a", "b", "B"));
}

TEST_F(IniLists, SectionNames_FitOnlyWithAByteToSpare) {
    File("[section1]\n[section2]\n[section3]\n");
    EXPECT_EQ(Sections(29), (Answer{27, "section10section20section300"}));
    EXPECT_EQ(Sections(28), (Answer{26, "section10section20section300"}));
    EXPECT_EQ(Sections(27), (Answer{25, "section10section20section00"}));
    EXPECT_EQ(Sections(2), (Answer{0, "00"}));
    EXPECT_EQ(Sections(1), (Answer{0, "0"}));
    EXPECT_EQ(Sections(0), (Answer{0, ""}));
}

TEST_F(IniLists, SectionNames_MissingFileTouchesOneByte) {
    EXPECT_EQ(Sections(10), (Answer{0, "0"}));
    EXPECT_EQ(Sections(0), (Answer{0, ""}));
    EXPECT_THAT(qfc::ReadProfileSectionNames(path), IsEmpty());
}

TEST_F(IniLists, SectionNames_ThousandsAreCutAt10240Bytes) {
    std::string content;
    for (int i = 0; i < 3000; ++i) content += "[name " + std::to_string(i) + "]\n";
    File(content);
    std::vector<char> buffer(10240 + 1, '#');
    EXPECT_EQ(GetPrivateProfileSectionNamesA(buffer.data(), 10240, path.c_str()), 10238u);
    EXPECT_EQ(buffer[10238], '\0');
    EXPECT_EQ(buffer[10239], '\0');
    EXPECT_EQ(buffer[10240], '#');
    EXPECT_EQ(qfc::ReadProfileSectionNames(path).size(), 3000u);
}

TEST_F(IniLists, Section_GivesLinesWithAndWithoutEqualsSign) {
    File("[S]\nname1 = val1\n name2=\n;comment\n\nname3\nname4=val4\n[T]\nother=1\n");
    EXPECT_EQ(Lines("s", 100), (Answer{35, "name1=val10name2=0name30name4=val400"}));
    EXPECT_THAT(qfc::ReadProfileSection("S", path), ElementsAre("name1=val1", "name2=", "name3", "name4=val4"));
}

TEST_F(IniLists, Section_KeepsQuotesAndLinesWithoutKey) {
    File("[S]\na = \"x\" \n= value\na=2\n");
    EXPECT_THAT(qfc::ReadProfileSection("S", path), ElementsAre("a=\"x\"", "=value", "a=2"));
}

TEST_F(IniLists, Section_IsCutInTheMiddleOfAnEntry) {
    File("[S]\nname1=val1\nname2=\nname3\nname4=val4\n");
    EXPECT_EQ(Lines("S", 36), (Answer{35, "name1=val10name2=0name30name4=val400"}));
    EXPECT_EQ(Lines("S", 35), (Answer{33, "name1=val10name2=0name30name4=val00"}));
    EXPECT_EQ(Lines("S", 24), (Answer{22, "name1=val10name2=0name00"}));
    EXPECT_EQ(Lines("S", 2), (Answer{0, "00"}));
    EXPECT_EQ(Lines("S", 1), (Answer{0, "0"}));
    EXPECT_EQ(Lines("S", 0), (Answer{0, ""}));
}

TEST_F(IniLists, Section_Of1024BytesEndsWithAnEntryWithoutItsEqualsSign) {
    std::string content = "[S]\n";
    for (int i = 0; i < 200; ++i) content += "category" + std::to_string(100 + i) + "=xy\n";
    File(content);
    const Answer answer = Lines("S", 1024);
    EXPECT_EQ(answer.length, 1022u);
    EXPECT_EQ(answer.bytes.substr(1020), "ca00");
    EXPECT_EQ(answer.bytes.size(), 1024u);
}

TEST_F(IniLists, Section_MissingIsEmptyWithTwoNuls) {
    EXPECT_EQ(Lines("S", 10), (Answer{0, "00"}));
    File("[S]\n;only a comment\n");
    EXPECT_EQ(Lines("S", 10), (Answer{0, "00"}));
    EXPECT_EQ(Lines("T", 10), (Answer{0, "00"}));
    EXPECT_EQ(Lines(nullptr, 10), (Answer{0, "00"}));
}

TEST_F(IniLists, Section_OfADuplicateNameIsTheFirst) {
    File("[S]\na=1\n[s]\nb=2\n");
    EXPECT_THAT(qfc::ReadProfileSection("S", path), ElementsAre("a=1"));
}

TEST_F(IniLists, NullKeyListsKeysThatHaveAnEqualsSign) {
    File("[S]\na=1\nkeyless\n;c=2\nA=3\nb=\n=4\n");
    EXPECT_EQ(Names("S", nullptr, 100), (Answer{6, "a0A0b00"}));
}

TEST_F(IniLists, NullSectionListsSectionsAlsoWithAKey) {
    File("[S]\na=1\n[T]\n");
    EXPECT_EQ(Names(nullptr, nullptr, 100), (Answer{4, "S0T00"}));
    EXPECT_EQ(Names(nullptr, "a", 100), (Answer{4, "S0T00"}));
}

TEST_F(IniLists, NullKeyOrSectionThatFindsNothingGivesTheDefault) {
    EXPECT_EQ(Names(nullptr, nullptr, 10), (Answer{1, "d0"}));
    EXPECT_EQ(Names("S", nullptr, 10), (Answer{1, "d0"}));
    File("[S]\na=1\n");
    EXPECT_EQ(Names("T", nullptr, 10), (Answer{1, "d0"}));
}

TEST_F(IniLists, NullKeyOrSectionIsCutAtTwoLessThanTheBuffer) {
    File("[S]\nabc=1\ndef=2\n");
    EXPECT_EQ(Names("S", nullptr, 9), (Answer{8, "abc0def00"}));
    EXPECT_EQ(Names("S", nullptr, 8), (Answer{6, "abc0de00"}));
    EXPECT_EQ(Names("S", nullptr, 1), (Answer{0, "0"}));
    EXPECT_EQ(Names("S", nullptr, 0), (Answer{0, ""}));
    EXPECT_EQ(Names(nullptr, nullptr, 2), (Answer{0, "00"}));
}

TEST_F(IniLists, NamesThatAreEmptyDoNotEndAList) {
    File("[]\na=1\n[T]\n");
    EXPECT_EQ(Sections(10), (Answer{2, "T00"}));
}

}  // namespace
