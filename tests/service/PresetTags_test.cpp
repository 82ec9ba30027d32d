// Items that come into a gallery get the tags of the presets that name them: which presets, which tags.
#include "tests/service/PresetTagsTest.h"

#include <list>
#include <string>

namespace {

using Manager = QFCLibraryManager;
using qfc::test::PresetTags;

TEST_F(PresetTags, TheNamedItem_GetsTheTagsInTheOrderOfTheList) {
    Preset(Section("Shore", "shore.wav", "String@Sunset;String@Beach"));
    EXPECT_EQ(TagsGiven("Shore", "C:\\media\\shore.wav"), "2 1 ");
}

TEST_F(PresetTags, AreThereAfterARestart) {
    Preset(Section("Stays", "stays.wav", "String@Sunset"));
    const GUID guid = Add("Stays", "C:\\media\\stays.wav")->GetUniqueID();
    Restart();
    CQItem* const pItem = m_pClips->GetItemByGUID(guid);
    ASSERT_NE(pItem, nullptr);
    EXPECT_EQ(TagsOf(*pItem), "2 ");
}

// --- Which preset names an item -------------------------------------------------------------------------------------

TEST_F(PresetTags, TheNameMustBeTheSame) {
    Preset(Section("Exact", "exact.wav", "String@Beach"));
    EXPECT_EQ(TagsGiven("exact", "exact.wav"), "");
    EXPECT_EQ(TagsGiven("Exact ", "exact.wav"), "");
    EXPECT_EQ(TagsGiven("Exac", "exact.wav"), "");
    EXPECT_EQ(TagsGiven("Exact", "exact.wav"), "1 ");
}

TEST_F(PresetTags, ThePathMustContainTheFileName) {
    Preset(Section("Path", "content\\sounds\\path.wav.bak", "String@Beach"));
    EXPECT_EQ(TagsGiven("Path", "D:\\elsewhere\\path.wav"), "1 ");
    EXPECT_EQ(TagsGiven("Path", "D:\\elsewhere\\other.wav"), "");
    EXPECT_EQ(TagsGiven("Path", "D:\\elsewhere\\Path.wav"), "");
    EXPECT_EQ(TagsGiven("Path", "D:\\elsewhere\\my path.wav"), "");
}

TEST_F(PresetTags, TheFileNameStandsBehindTheLastBackslash) {
    Preset(Section("Cut", "cut.wav", "String@Beach"));
    EXPECT_EQ(TagsGiven("Cut", "a\\b/cut.wav"), "");
    EXPECT_EQ(TagsGiven("Cut", "a/b\\cut.wav"), "1 ");
    EXPECT_EQ(TagsGiven("Cut", "/usr/share/media/cut.wav"), "1 ");
    EXPECT_EQ(TagsGiven("Cut", "cut.wav"), "1 ");
}

TEST_F(PresetTags, AnItemWithoutPath_IsKnownByItsNameAlone) {
    Preset(Section("Nameonly", "nameonly.wav", "String@Beach"));
    EXPECT_EQ(TagsGiven("Nameonly", ""), "1 ");
}

TEST_F(PresetTags, AnItemWhosePathEndsInASeparator_IsKnownByItsNameAlone) {
    Preset(Section("Ends", "ends.wav", "String@Beach"));
    EXPECT_EQ(TagsGiven("Ends", "C:\\media\\"), "1 ");
    EXPECT_EQ(TagsGiven("Ends", "/media/"), "1 ");
}

TEST_F(PresetTags, APresetWithoutPath_NamesItemsWithoutPathOnly) {
    Preset("[x]\nItemName=Pathless\nFilePath=\nGalleryID=1\nTagList=String@Beach\n");
    EXPECT_EQ(TagsGiven("Pathless", "C:\\media\\pathless.wav"), "");
    EXPECT_EQ(TagsGiven("Pathless", ""), "1 ");
}

TEST_F(PresetTags, EveryPresetOfTheItemCounts) {
    Preset(Section("Both", "a.wav", "String@Rain;String@Beach") + Section("Other", "a.wav", "String@Sunset") +
           "[again]\nItemName=Both\nFilePath=a.wav b.wav\nGalleryID=1\nTagList=String@Beach;String@Sunset\n");
    EXPECT_EQ(TagsGiven("Both", "a.wav"), "3 1 2 ");
    EXPECT_EQ(TagsGiven("Both", "b.wav"), "1 2 ");
}

TEST_F(PresetTags, ReadInAnotherOrder_AreReadByPosition) {
    Preset("[x]\nGalleryID=Swapped\nFilePath=swapped.wav\nItemName=1\nTagList=String@Beach\n");
    EXPECT_EQ(TagsGiven("Swapped", "swapped.wav"), "1 ");
    EXPECT_EQ(TagsGiven("1", "swapped.wav"), "");
}

// --- Which tags it gets ---------------------------------------------------------------------------------------------

TEST_F(PresetTags, TheTagIsNamedBehindTheLastAtSign) {
    Preset(Section("At", "at.wav", "String@x@Sunset;Rain;String@;Beach@"));
    EXPECT_EQ(TagsGiven("At", "at.wav"), "2 3 ");
}

TEST_F(PresetTags, ASpecifierWithoutName_GivesTheTagWithoutName) {
    ASSERT_EQ(Manager::fnUpdateTagCategory(kMedia, {Category(30, "Odd", {{7, ""}})}), 1);
    Preset(Section("Trailing", "nameless.wav", "String@Beach;") + Section("At", "nameless.wav", "String@") +
           Section("Listless", "nameless.wav", ""));
    EXPECT_EQ(TagsGiven("Trailing", "nameless.wav"), "1 7 ");
    EXPECT_EQ(TagsGiven("At", "nameless.wav"), "7 ");
    EXPECT_EQ(TagsGiven("Listless", "nameless.wav"), "");
}

TEST_F(PresetTags, TagsAreFoundInAnyCase_AndUnknownOnesPassedOver) {
    Preset(Section("Unknown", "unknown.wav", "String@Nowhere;String@BEACH;String@Beac"));
    EXPECT_EQ(TagsGiven("Unknown", "unknown.wav"), "1 ");
}

TEST_F(PresetTags, TheGalleryOfThePresetDecides_NotThatOfTheItem) {
    ASSERT_EQ(Manager::fnUpdateTagCategory(kSounds, {Category(30, "Mood", {{7, "Calm"}, {8, "Beach"}}, kSounds)}), 1);
    Preset(Section("Foreign", "foreign.wav", "String@Beach;String@Calm", "2") +
           Section("Odd", "foreign.wav", "String@Calm", " 2nd") + Section("None", "foreign.wav", "String@Beach", "x") +
           Section("Huge", "foreign.wav", "String@Beach", "99999999999999999999") +
           Section("Wrapped", "foreign.wav", "String@Beach", "4294967298") +
           Section("Negative", "foreign.wav", "String@Beach", "-4294967294"));
    EXPECT_EQ(TagsGiven("Foreign", "foreign.wav"), "8 7 ");
    EXPECT_EQ(TagsGiven("Odd", "foreign.wav"), "7 ");
    EXPECT_EQ(TagsGiven("None", "foreign.wav"), "");
    for (const char* const pszName : {"Huge", "Wrapped", "Negative"}) {
        EXPECT_EQ(TagsGiven(pszName, "foreign.wav"), "") << pszName;
    }
}

TEST_F(PresetTags, TagsTheItemHasAlready_AreNotWrittenAgain) {
    Preset(Section("Tagged", "tagged.wav", "String@Beach;String@Sunset"));
    auto* const pItem = new CQItem("Tagged");
    pItem->SetFileName("tagged.wav");
    pItem->AddLibTag(TagGuid(1));
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, pItem), 1);
    EXPECT_EQ(TagsOf(*pItem), "1 2 ");
    EXPECT_FALSE(IsLinked(*pItem, 1));
    EXPECT_TRUE(IsLinked(*pItem, 2));
}

TEST_F(PresetTags, ATagIsLookedUpByItsTranslatedNameFirst_ThenAsWritten) {
    WriteData("qvTWTranslateData.dat", "[TW_TAG_TRANSLATE]\nBeach=Strand\nSunset=Abendrot\n");
    ASSERT_EQ(Manager::fnUpdateTagCategory(kMedia, {Category(30, "German", {{7, "Strand"}})}), 1);
    Preset(Section("Translated", "translated.wav", "String@Beach;String@Sunset;String@Rain"));
    EXPECT_EQ(TagsGiven("Translated", "translated.wav"), "7 2 3 ");
}

// --- Stickers -------------------------------------------------------------------------------------------------------

TEST_F(PresetTags, Stickers_AreKnownByTheirDisplayNames) {
    WriteData("ARFilter.ini", "[Hat]\ndisplayname=Top hat\n[Cap]\ndisplayname=\n");
    Preset(Section("Hat", "hat.ar", "String@Beach") + Section("Cap", "cap.ar", "String@Sunset") +
           Section("Scarf", "scarf.ar", "String@Rain"));
    const ULONGLONG hStickers = MakeGallery(kArStickers);
    EXPECT_EQ(TagsGiven("Top hat", "hat.ar", hStickers), "1 ");
    EXPECT_EQ(TagsGiven("Hat", "hat.ar", hStickers), "");
    EXPECT_EQ(TagsGiven("Cap", "cap.ar", hStickers), "2 ");
    EXPECT_EQ(TagsGiven("Scarf", "scarf.ar", hStickers), "3 ");
}

TEST_F(PresetTags, Stickers_WithoutTheFileOfDisplayNames_AreKnownByTheirNames) {
    Preset(Section("Glove", "glove.ar", "String@Beach"));
    EXPECT_EQ(TagsGiven("Glove", "glove.ar", MakeGallery(kArStickers)), "1 ");
}

TEST_F(PresetTags, ItemsOfOtherGalleries_AreNotKnownByDisplayNames) {
    WriteData("ARFilter.ini", "[Boot]\ndisplayname=High boot\n");
    Preset(Section("Boot", "boot.ar", "String@Beach"));
    EXPECT_EQ(TagsGiven("High boot", "boot.ar"), "");
    EXPECT_EQ(TagsGiven("Boot", "boot.ar"), "1 ");
}

TEST_F(PresetTags, DisplayNames_AreUtf8InTheirFile) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    WriteData("ARFilter.ini", "[Angel]\ndisplayname=\xC3\x84ngel\n");  // Umlaut
    Preset(Section("Angel", "angel.ar", "String@Beach"));
    EXPECT_EQ(TagsGiven("\xC4ngel", "angel.ar", MakeGallery(kArStickers)), "1 ");
}

TEST_F(PresetTags, NamesOfStickers_AreUtf8InTheirFile) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    WriteData("ARFilter.ini", "[\xC3\x84ngel]\ndisplayname=Angel\n[\xD6l]\ndisplayname=Oil\n");
    Preset(Section("\xC4ngel", "umlaut.ar", "String@Beach") + Section("\xD6l", "umlaut.ar", "String@Sunset"));
    const ULONGLONG hStickers = MakeGallery(kArStickers);
    EXPECT_EQ(TagsGiven("Angel", "umlaut.ar", hStickers), "1 ");
    EXPECT_EQ(TagsGiven("\xC4ngel", "umlaut.ar", hStickers), "");
    EXPECT_EQ(TagsGiven("Oil", "umlaut.ar", hStickers), "");
    EXPECT_EQ(TagsGiven("\xD6l", "umlaut.ar", hStickers), "2 ");
}

// In the code page the last byte of the name would take the bracket, or the line's end, for its second one.
TEST_F(PresetTags, TheFileOfStickers_IsNotReadInTheCodePage) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    WriteData("ARFilter.ini", "[\xE3\x83\x9D]\ndisplayname=\xE3\x83\x9D\xE3\x83\x9D\n");  // Katakana PO
    Preset(Section("\x83\x7C", "po.ar", "String@Beach"));
    EXPECT_EQ(TagsGiven("\x83\x7C\x83\x7C", "po.ar", MakeGallery(kArStickers)), "1 ");
}

// --- Two-byte characters --------------------------------------------------------------------------------------------

TEST_F(PresetTags, TrailBytesThatLookLikeSeparators_AreNone) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    // Katakana: SO ends in a backslash, a small A in an at-sign, A in the letter A.
    ASSERT_EQ(Manager::fnUpdateTagCategory(kMedia, {Category(30, "Kana", {{7, "\x83\x40"}, {8, ""}})}), 1);
    Preset(Section("So", ".wav", "String@Beach") + Section("Small", "small.wav", "String@\x83\x40") +
           Section("Letter", "\x83\x41.wav", "String@Beach") + Section("Whole", "\x83\x5C.wav", "String@Sunset"));
    EXPECT_EQ(TagsGiven("So", "C:\\media\\\x83\x5C.wav"), "");
    EXPECT_EQ(TagsGiven("Whole", "C:\\media\\\x83\x5C.wav"), "2 ");
    EXPECT_EQ(TagsGiven("Small", "small.wav"), "7 ");
    EXPECT_EQ(TagsGiven("Letter", "A.wav"), "");
}

}  // namespace
