#include "tests/support/MemoryFaults.h"
#include "tests/tags/TagTestSupport.h"

#include <array>
#include <climits>
#include <cstring>

namespace {

using namespace qfc::test;
using namespace std::string_literals;
using namespace std::string_view_literals;
using Texts = std::vector<std::string>;

Texts KeysOf(std::string_view section) {
    Texts keys;
    CLibTagsMgr::GetIniFileSectionContent(section.data(), static_cast<int>(section.size()), keys);
    return keys;
}

// --- Keys of a section's text ---

TEST(TagFileSection, KeysAreWhatStandsBeforeTheFirstEqualsSign) {
    EXPECT_EQ(KeysOf("Places=String@Beach\0Moods=a=b\0Empty=\0"sv), (Texts{"Places", "Moods", "Empty"}));
}

TEST(TagFileSection, KeysAreAppended) {
    Texts keys{"before"};
    CLibTagsMgr::GetIniFileSectionContent("a=1", 4, keys);
    EXPECT_EQ(keys, (Texts{"before", "a"}));
}

TEST(TagFileSection, LengthBelowOneGivesNothing) {
    Texts keys;
    for (const int length : {0, -1, INT_MIN}) CLibTagsMgr::GetIniFileSectionContent("a=1", length, keys);
    CLibTagsMgr::GetIniFileSectionContent(nullptr, 10, keys);
    EXPECT_TRUE(keys.empty());
}

TEST(TagFileSection, NothingBehindTheLengthIsRead) {
    const std::string text = "a=1\0b=2\0"s;
    Texts keys;
    CLibTagsMgr::GetIniFileSectionContent(text.data(), 4, keys);
    EXPECT_EQ(keys, Texts{"a"});
    // Not even a NUL: the block ends with the text.
    const std::array<char, 3> bare{'c', '=', '1'};
    CLibTagsMgr::GetIniFileSectionContent(bare.data(), 3, keys);
    EXPECT_EQ(keys, (Texts{"a", "c"}));
}

TEST(TagFileSection, EntryWithoutEqualsSignGivesNoKey) {
    EXPECT_EQ(KeysOf("cut\0a=1\0"sv), Texts{"a"});
    EXPECT_EQ(KeysOf("a=1\0\0b=2\0"sv), (Texts{"a", "b"}));
}

TEST(TagFileSection, EntryWithoutNameGivesTheEmptyKey) { EXPECT_EQ(KeysOf("=1"sv), Texts{""}); }

TEST(TagFileSection, EntryPassesThroughABufferOf256Bytes) {
    EXPECT_EQ(KeysOf(std::string(254, 'k') + "=v"), Texts{std::string(254, 'k')});
    EXPECT_TRUE(KeysOf(std::string(255, 'k') + "=v").empty());
    EXPECT_EQ(KeysOf(std::string(255, 'k') + "=v\0a=1"s), Texts{"a"});
    EXPECT_EQ(KeysOf("k=" + std::string(5000, 'v')), Texts{"k"});
}

// Its second byte is '=' in this code page; it belongs to the character.
TEST(TagFileSection, EqualsSignInsideACharacterIsNone) {
    if (!qfc::SetAnsiCodePage("JOHAB")) GTEST_SKIP() << "this system does not know the code page";
    EXPECT_EQ(KeysOf("\xD9\x3Dk=v"sv), Texts{"\xD9\x3Dk"});
    qfc::SetAnsiCodePage("UTF-8");
}

// --- Template ---

using CategoryTemplate = HostFolderTest;

TEST_F(CategoryTemplate, HasAnEntryForEveryIdButSeven) {
    m_pStore->GenerateCategoryTemplate();
    const auto& entries = m_pStore->GetCategoryTemplate();
    ASSERT_EQ(entries.size(), 15U);
    for (const auto& [id, entry] : entries) {
        EXPECT_NE(id, 7U);
        EXPECT_TRUE(id >= 1 && id <= 16);
        EXPECT_EQ(CString(entry.first.c_str()), CLibTagsMgr::GetInifileSectionByLibID(static_cast<int>(id)));
        EXPECT_TRUE(entry.second.empty());
    }
}

TEST_F(CategoryTemplate, HoldsTheKeysInTheOrderOfTheFile) {
    WriteDefaults(
        "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nPlaces=String@Beach\r\n; no = key\r\nno key\r\nDate=Date@x\r\n"
        "[TW_DEFAULT_TAGS_FILTER_CATEGORY]\r\nLook=\r\n");
    m_pStore->GenerateCategoryTemplate();
    const auto& entries = m_pStore->GetCategoryTemplate();
    EXPECT_EQ(entries.at(1).second, (Texts{"Places", "Date"}));
    EXPECT_EQ(entries.at(6).second, Texts{"Look"});
    EXPECT_FALSE(entries.contains(7));
    EXPECT_TRUE(entries.at(2).second.empty());
}

TEST_F(CategoryTemplate, IsReplacedByTheNextReading) {
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nPlaces=\n");
    m_pStore->GenerateCategoryTemplate();
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nMoods=\nSeasons=\n");
    m_pStore->GenerateCategoryTemplate();
    EXPECT_EQ(m_pStore->GetCategoryTemplate().at(1).second, (Texts{"Moods", "Seasons"}));
}

TEST_F(CategoryTemplate, SectionIsCutAt1022Bytes) {
    // 7 whole entries of 128 bytes; of the next one 1022 - 896 = 126 bytes are left.
    std::string text = "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\n";
    for (int i = 0; i < 7; ++i) text += "key" + std::to_string(i) + "=" + std::string(122, 'v') + "\n";
    WriteDefaults(text + std::string(125, 'x') + "=v\nbehind=1\n");
    m_pStore->GenerateCategoryTemplate();
    const auto& keys = m_pStore->GetCategoryTemplate().at(1).second;
    ASSERT_EQ(keys.size(), 8U);
    EXPECT_EQ(keys.back(), std::string(125, 'x'));
    // One more, and the sign that makes it a key is cut off.
    WriteDefaults(text + std::string(126, 'x') + "=v\nbehind=1\n");
    m_pStore->GenerateCategoryTemplate();
    EXPECT_EQ(m_pStore->GetCategoryTemplate().at(1).second.size(), 7U);
}

TEST_F(CategoryTemplate, FileOfAHundredThousandLinesIsReadToTheLimit) {
    std::string text = "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\n";
    for (int i = 0; i < 100000; ++i) text += "k" + std::to_string(i) + "=v\n";
    WriteDefaults(text + "[TW_DEFAULT_TAGS_SPEED_CATEGORY]\nlast=\n");
    m_pStore->GenerateCategoryTemplate();
    const std::size_t count = m_pStore->GetCategoryTemplate().at(1).second.size();
    EXPECT_GT(count, 100U);
    EXPECT_LT(count, 200U);
    EXPECT_EQ(m_pStore->GetCategoryTemplate().at(15).second, Texts{"last"});
}

// --- Preset items ---

using PresetTags = HostFolderTest;

std::string TextOf(const CPresetItemTag& preset) {
    std::string text = std::string(preset.m_strItemName.View()) + "|" + std::string(preset.m_strFilePath.View()) + "|" +
                       std::string(preset.m_strGalleryId.View()) + "|";
    for (const CString& tag : preset.m_tagList) text += "<" + std::string(tag.View()) + ">";
    return text;
}

TEST_F(PresetTags, EverySectionGivesOneItem) {
    WritePresets(
        "[a.mp3@Rain]\r\nItemName=Rain\r\nFilePath=C:\\Sounds\\a.mp3\r\nGalleryID=2\r\nTagList=String@Calm;String@Wet"
        "\r\n[b.mp3@Sun]\r\nItemName=Sun\r\nFilePath=b.mp3\r\nGalleryID=2\r\nTagList=Static@Hot\r\n");
    m_pStore->GeneratePresetTagData();
    const auto& presets = m_pStore->GetPresetTagData();
    ASSERT_EQ(presets.size(), 2U);
    EXPECT_EQ(TextOf(presets.front()), "Rain|C:\\Sounds\\a.mp3|2|<String@Calm><String@Wet>");
    EXPECT_EQ(TextOf(presets.back()), "Sun|b.mp3|2|<Static@Hot>");
}

// Kept: entries are read by their places, not by their keys.
TEST_F(PresetTags, EntriesAreReadByPosition) {
    WritePresets("[s]\nGalleryID=2\nItemName=Rain\nFilePath=a.mp3\nTagList=String@Calm\n");
    m_pStore->GeneratePresetTagData();
    ASSERT_EQ(m_pStore->GetPresetTagData().size(), 1U);
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().front()), "2|Rain|a.mp3|<String@Calm>");
}

TEST_F(PresetTags, LineWithoutKeyCountsAsAnEntry) {
    WritePresets("[s]\nRain\nFilePath=a.mp3\n");
    m_pStore->GeneratePresetTagData();
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().front()), "Rain|a.mp3||");
}

TEST_F(PresetTags, ValueStandsBehindTheLastEqualsSign) {
    WritePresets("[s]\nItemName=1+1=2\nFilePath=a=b.mp3\nGalleryID=2\nTagList=String@x=y\n");
    m_pStore->GeneratePresetTagData();
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().front()), "2|b.mp3|2|<y>");
}

TEST_F(PresetTags, FifthEntryIsNotRead) {
    WritePresets("[s]\nItemName=a\nFilePath=b\nGalleryID=3\nTagList=String@c\nTagList=String@d\n");
    m_pStore->GeneratePresetTagData();
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().front()), "a|b|3|<String@c>");
}

TEST_F(PresetTags, SectionWithFewerEntriesIsAnItemAllTheSame) {
    WritePresets("[s]\nItemName=a\n[empty]\n");
    m_pStore->GeneratePresetTagData();
    ASSERT_EQ(m_pStore->GetPresetTagData().size(), 2U);
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().front()), "a|||");
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().back()), "|||");
}

TEST_F(PresetTags, EmptyPartsOfTheTagListStay) {
    WritePresets("[s]\nItemName=a\nFilePath=b\nGalleryID=3\nTagList=;String@c;;String@d;\n[t]\na=\nb=\nc=\nTagList=\n");
    m_pStore->GeneratePresetTagData();
    ASSERT_EQ(m_pStore->GetPresetTagData().size(), 2U);
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().front()), "a|b|3|<><String@c><><String@d><>");
    EXPECT_TRUE(m_pStore->GetPresetTagData().back().m_tagList.empty());
}

TEST_F(PresetTags, MissingFileGivesNone) {
    m_pStore->GeneratePresetTagData();
    EXPECT_TRUE(m_pStore->GetPresetTagData().empty());
}

TEST_F(PresetTags, EveryReadingAppends) {
    WritePresets("[s]\nItemName=a\n");
    m_pStore->GeneratePresetTagData();
    m_pStore->GeneratePresetTagData();
    EXPECT_EQ(m_pStore->GetPresetTagData().size(), 2U);
}

TEST_F(PresetTags, SectionIsCutAt1022Bytes) {
    std::string list = "TagList=";
    while (list.size() < 2000) list += "String@tag;";
    WritePresets("[s]\nItemName=a\nFilePath=b\nGalleryID=3\n" + list + "\n");
    m_pStore->GeneratePresetTagData();
    const CPresetItemTag& preset = m_pStore->GetPresetTagData().front();
    // Names, paths and ids before it, each with its NUL.
    const std::size_t before = strlen("ItemName=a") + strlen("FilePath=b") + strlen("GalleryID=3") + 3;
    std::size_t length = preset.m_tagList.size() - 1 + strlen("TagList=");
    for (const CString& tag : preset.m_tagList) length += static_cast<std::size_t>(tag.GetLength());
    EXPECT_EQ(before + length, 1022U);
}

TEST_F(PresetTags, CutBeforeTheTagListLeavesItOut) {
    WritePresets("[s]\nItemName=" + std::string(3000, 'n') + "\nFilePath=b\nGalleryID=3\nTagList=String@c\n");
    m_pStore->GeneratePresetTagData();
    const CPresetItemTag& preset = m_pStore->GetPresetTagData().front();
    EXPECT_EQ(preset.m_strItemName.GetLength(), 1022 - 9);
    EXPECT_TRUE(preset.m_strFilePath.IsEmpty());
    EXPECT_TRUE(preset.m_tagList.empty());
}

TEST_F(PresetTags, NamesOfSectionsAreCutAt10238Bytes) {
    std::string text;
    for (int i = 0; i < 2000; ++i) text += "[section" + std::to_string(1000 + i) + "]\nItemName=n\n";
    WritePresets(text);
    Texts sections;
    CLibTagsMgr::GetPresetTagInifileSections(sections);
    std::size_t length = 0;
    for (const std::string& name : sections) length += name.size() + 1;
    EXPECT_EQ(length, 10239U);  // The last one is cut and its NUL not counted.
    EXPECT_EQ(sections.front(), "section1000");
    EXPECT_LT(sections.back().size(), sections.front().size());
    // The cut name finds no section.
    m_pStore->GeneratePresetTagData();
    ASSERT_EQ(m_pStore->GetPresetTagData().size(), sections.size());
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().back()), "|||");
}

TEST_F(PresetTags, SectionOfManyLinesIsReadToItsFourthEntry) {
    std::string text = "[s]\nItemName=a\nFilePath=b\nGalleryID=3\nTagList=String@c\n";
    for (int i = 0; i < 100000; ++i) text += "TagList=String@more" + std::to_string(i) + "\n";
    WritePresets(text);
    m_pStore->GeneratePresetTagData();
    ASSERT_EQ(m_pStore->GetPresetTagData().size(), 1U);
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().front()), "a|b|3|<String@c>");
}

TEST_F(PresetTags, ReadWithoutMemory_AreAllOrNone) {
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nScene=String@Day\nPeople=\n");
    WritePresets("[s]\nItemName=a\nFilePath=b\n[t]\nItemName=c\nFilePath=d\nGalleryID=2\nTagList=String@x;String@y\n");
    for (int n = 1, failed = 1; failed != 0; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        const auto store = qfc::TagStorePeer::NewStore();
        bool bTemplate = false;
        bool bPresets = false;
        {
            const MemoryFaults faults(n, true);
            try {
                store->GenerateCategoryTemplate();
                bTemplate = true;
                store->GeneratePresetTagData();
                bPresets = true;
            } catch (const std::bad_alloc&) {
            }
            failed = faults.HasFailed() ? 1 : 0;
        }
        ASSERT_EQ(store->GetCategoryTemplate().size(), bTemplate ? 15U : 0U);
        ASSERT_TRUE(!bTemplate || store->GetCategoryTemplate().at(1).second == (Texts{"Scene", "People"}));
        ASSERT_EQ(store->GetPresetTagData().size(), bPresets ? 2U : 0U);
        ASSERT_TRUE(!bPresets || TextOf(store->GetPresetTagData().back()) == "c|d|2|<String@x><String@y>");
        ASSERT_TRUE(failed != 0 || n > 30) << "hardly any allocation was seen";
    }
}

TEST_F(PresetTags, SectionThatStandsTwiceIsReadTwiceAsTheFirst) {
    WritePresets("[s]\nItemName=a\n[s]\nItemName=b\n");
    m_pStore->GeneratePresetTagData();
    ASSERT_EQ(m_pStore->GetPresetTagData().size(), 2U);
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().back()), "a|||");
}

TEST_F(PresetTags, SeparatorsInsideCharactersAreNone) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    // Second bytes: a backslash, a bracket, '@' and '|'.
    WritePresets(
        "[s]\nItemName=\x83\x5C\x83\x5B\nFilePath=C:\\\x83\x5C.mp3\nGalleryID=3\n"
        "TagList=String@\x83\x40;String@\x83\x7C\n");
    m_pStore->GeneratePresetTagData();
    EXPECT_EQ(TextOf(m_pStore->GetPresetTagData().front()),
              "\x83\x5C\x83\x5B|C:\\\x83\x5C.mp3|3|<String@\x83\x40><String@\x83\x7C>");
}

TEST_F(PresetTags, TextGivenByHandIsReadToItsLength) {
    const std::string text = "a=1\0b=2\0c=3\0d=String@x;String@y\0e=5\0"s;
    m_pStore->GetPresetTagIniFileContent(text.data(), static_cast<int>(text.size()));
    m_pStore->GetPresetTagIniFileContent(text.data(), 6);
    for (const int length : {0, -1, INT_MIN}) m_pStore->GetPresetTagIniFileContent(text.data(), length);
    m_pStore->GetPresetTagIniFileContent(nullptr, 5);
    Texts seen;
    for (const CPresetItemTag& preset : m_pStore->GetPresetTagData()) seen.push_back(TextOf(preset));
    EXPECT_EQ(seen, (Texts{"1|2|3|<String@x><String@y>", "1|||", "|||", "|||", "|||", "|||"}));
}

}  // namespace
