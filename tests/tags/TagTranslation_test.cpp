#include "tags/TagTranslation.h"

#include "tests/tags/TagTestSupport.h"

namespace {

using namespace qfc::test;

using TagTranslation = HostFolderTest;

TEST_F(TagTranslation, NameIsWhatTheDataSay) {
    WriteTranslation("[TW_TAG_TRANSLATE]\nBeach=Strand\n[TW_FOLDER_1]\nLake=See\n");
    EXPECT_EQ(g_GetTagTranslateName("Beach"), CString("Strand"));
    EXPECT_EQ(g_GetTagTranslateName("beach"), CString("Strand"));
    EXPECT_EQ(g_GetTagTranslateName("Lake"), CString("Lake"));
}

TEST_F(TagTranslation, WithoutTextTheNameStands) {
    EXPECT_EQ(g_GetTagTranslateName("Beach"), CString("Beach"));
    WriteTranslation("[TW_TAG_TRANSLATE]\nBeach=\n");
    EXPECT_EQ(g_GetTagTranslateName("Beach"), CString("Beach"));
    WriteTranslation("[TW_TAG_TRANSLATE]\n=x\n");
    EXPECT_EQ(g_GetTagTranslateName(""), CString(""));
    EXPECT_EQ(g_GetTagTranslateName(" "), CString(" "));
}

TEST_F(TagTranslation, TextComesInTheCodePage) {
    WriteTranslation("[TW_TAG_TRANSLATE]\nTown=Städtchen\n");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_EQ(g_GetTagTranslateName("Town"), CString("St\xE4"
                                                     "dtchen"));
}

TEST_F(TagTranslation, TextIsCutTo259Bytes) {
    WriteTranslation("[TW_TAG_TRANSLATE]\nlong=" + std::string(1000, 'x') + "\n");
    EXPECT_EQ(g_GetTagTranslateName("long"), CString(std::string(259, 'x').c_str()));
}

// Kept: without a file nothing is looked up, and the text of the look-up before is still in the buffer.
TEST_F(TagTranslation, WithoutAFileTheTextBeforeComesBack) {
    WriteTranslation("[TW_TAG_TRANSLATE]\nBeach=Strand\n");
    const CString file((Folder() / "Orvel.dat/qvTWTranslateData.dat").c_str());
    qfc::TranslationBuffer buffer;
    EXPECT_EQ(qfc::TranslateTagName(buffer, "", "Lake"), CString("Lake"));
    EXPECT_EQ(qfc::TranslateTagName(buffer, file, "Beach"), CString("Strand"));
    EXPECT_EQ(qfc::TranslateTagName(buffer, "", "Lake"), CString("Strand"));
    EXPECT_EQ(qfc::TranslateTagName(buffer, file, "Lake"), CString("Lake"));
    EXPECT_EQ(qfc::TranslateTagName(buffer, "", "Beach"), CString("Beach"));
}

}  // namespace
