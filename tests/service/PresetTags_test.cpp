// Items that come into a gallery get the tags of the presets that name them.
#include "service/operations/PresetTags.h"

#include "platform/text/CodePages.h"
#include "service/operations/AddItem.h"
#include "service/operations/LoadGallery.h"
#include "tests/support/FaultVfs.h"
#include "tests/support/RawDb.h"
#include "tests/support/SqlTrace.h"
#include "tests/support/TagFixture.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>

namespace {

using Manager = QFCLibraryManager;
using qfc::test::RawDb;

class PresetTags : public qfc::test::TagFixture {
protected:
    static constexpr int kSounds = 2;
    static constexpr int kArStickers = 16;

    void SetUp() override {
        TagFixture::SetUp();
        ASSERT_EQ(Manager::fnUpdateTagCategory(kMedia, {Category(10, "Places", {{1, "Beach"}, {2, "Sunset"}}),
                                                        Category(20, "Sky", {{3, "Rain"}})}),
                  1);
    }
    void TearDown() override {
        TagFixture::TearDown();
        qfc::SetAnsiCodePage("UTF-8");
    }

    static std::string Section(const std::string& name, const std::string& path, const std::string& tags,
                               const std::string& gallery = "1") {
        return "[" + path + "@" + name + "]\nItemName=" + name + "\nFilePath=" + path + "\nGalleryID=" + gallery +
               "\nTagList=" + tags + "\n";
    }
    static void Preset(const std::string& text) {
        WritePresets(text);
        Store().GeneratePresetTagData();
    }
    CQItem* Add(const char* pszName, const char* pszPath, ULONGLONG hGallery = 0) const {
        auto* const pItem = new CQItem(pszName);
        pItem->SetFileName(pszPath);
        EXPECT_EQ(Manager::fnAddItem(hGallery != 0 ? hGallery : m_hMedia, {"Clips"}, pItem), 1);
        return pItem;
    }
    // The tags that an item of this name and path gets, told by memory and database alike.
    std::string TagsGiven(const char* pszName, const char* pszPath, ULONGLONG hGallery = 0) const {
        const CQItem* const pItem = Add(pszName, pszPath, hGallery);
        std::list<GUID> tags;
        pItem->CopyTagVec(tags);
        EXPECT_EQ(CountLinks(*pItem), static_cast<int>(tags.size()));
        for (const GUID& tag : tags) EXPECT_TRUE(IsLinked(*pItem, static_cast<int>(tag.Data1)));
        return TagsOf(*pItem);
    }
    static ULONGLONG MakeGallery(int nId) {
        const ULONGLONG hGallery = Manager::fnCreateGallery(nId, "Other", 0, 0, 0);
        EXPECT_NE(Manager::fnCreateFolder(hGallery, "", "Clips", 0, 0, 0, 0), nullptr);
        return hGallery;
    }
};

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

// --- What is written ------------------------------------------------------------------------------------------------

TEST_F(PresetTags, ThatCannotBeWritten_AreNotInMemoryEither_AndTheAddIsASuccess) {
    Preset(Section("Refused", "refused.wav", "String@Beach;String@Sunset"));
    RawDb(DatabaseFile())
        .Exec("create trigger REFUSE before insert on TAG_ITEM_RELATION_TABLE when new.TAGS_GUID = " +
              Literal(TagGuid(2)) + " begin select raise(fail, 'refused'); end");
    CQItem* const pItem = Add("Refused", "refused.wav");
    EXPECT_EQ(m_pClips->HasItem(pItem->GetUniqueID(), 0), 1);
    EXPECT_EQ(TagsOf(*pItem), "");
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 0);
}

TEST_F(PresetTags, OfAnItemThatNoFolderTook_AreNotWritten) {
    Preset(Section("Homeless", "homeless.wav", "String@Beach"));
    CQItem item("Homeless");
    EXPECT_EQ(Manager::fnAddItem(m_hMedia, {"Nowhere"}, &item), 1);
    EXPECT_EQ(TagsOf(item), "");
    RawDb(DatabaseFile())
        .Exec("create trigger REFUSE before insert on RELATION_TABLE begin select raise(fail, 'refused'); end");
    EXPECT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, &item), 1);
    EXPECT_EQ(TagsOf(item), "");
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 0);
}

// The folder keeps the object that it has.
TEST_F(PresetTags, OfAnotherObjectOfAnItemThatIsHeld_AreNotWritten) {
    CQItem* const pHeld = Add("Twin", "twin.wav");
    Preset(Section("Twin", "twin.wav", "String@Beach"));
    CQItem twin("Twin");
    twin.SetFileName("twin.wav");
    twin.SetUniqueID(std::as_const(*pHeld).GetUniqueID());
    twin.fnSetDbTools(pHeld->fnGetDbTools());
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, &twin), 1);
    EXPECT_EQ(TagsOf(twin) + TagsOf(*pHeld), "");
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 0);
}

TEST_F(PresetTags, OfAnItemOfAnotherLibraryThatIsHeldAlready_AreNotWrittenThere) {
    CQItem* const pHeld = Add("Guest", "guest.wav");
    Preset(Section("Guest", "guest.wav", "String@Beach"));
    const std::string other = (Scratch() / "other.db").string();
    bool bOpened = false;
    DBTools session(other.c_str(), bOpened);
    ASSERT_TRUE(bOpened);
    CQItem guest("Guest");
    guest.SetFileName("guest.wav");
    guest.SetUniqueID(std::as_const(*pHeld).GetUniqueID());
    guest.fnSetDbTools(&session);
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, &guest), 1);
    EXPECT_EQ(TagsOf(guest), "");
    EXPECT_EQ(RawDb(other).Rows("select * from TAG_ITEM_RELATION_TABLE").size(), 0u);
}

TEST_F(PresetTags, OfASecondObjectThatAnotherFolderTakes_AreGiven) {
    ASSERT_NE(MakeFolder("", "More"), nullptr);
    CQItem* const pHeld = Add("Second", "second.wav");
    Preset(Section("Second", "second.wav", "String@Beach"));
    auto* const pSecond = new CQItem("Second");
    pSecond->SetFileName("second.wav");
    pSecond->SetUniqueID(std::as_const(*pHeld).GetUniqueID());
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"More"}, pSecond), 1);
    EXPECT_EQ(TagsOf(*pSecond), "1 ");
    ASSERT_EQ(Manager::fnDeleteLibTagFromItem({pSecond}, {TagGuid(1)}), 1);
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"More"}, pSecond), 1);
    EXPECT_EQ(TagsOf(*pSecond), "1 ");
}

TEST_F(PresetTags, OfAnItemThatIsHeldElsewhere_AreGivenWhateverTheFoldersNamed) {
    CQItem* const pItem = Add("Elsewhere", "elsewhere.wav");
    Preset(Section("Elsewhere", "elsewhere.wav", "String@Beach"));
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Gone"}, pItem), 1);
    EXPECT_EQ(TagsOf(*pItem), "1 ");
    EXPECT_TRUE(IsLinked(*pItem, 1));
}

TEST_F(PresetTags, OfASecondObjectThatIsHeldElsewhere_AreGiven) {
    ASSERT_NE(MakeFolder("", "More"), nullptr);
    CQItem* const pHeld = Add("Second", "second.wav");
    auto* const pSecond = new CQItem("Second");
    pSecond->SetFileName("second.wav");
    pSecond->SetUniqueID(std::as_const(*pHeld).GetUniqueID());
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"More"}, pSecond), 1);
    Preset(Section("Second", "second.wav", "String@Beach"));
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Gone"}, pSecond), 1);
    EXPECT_EQ(TagsOf(*pSecond), "1 ");
}

TEST_F(PresetTags, OfAnItemThatASessionLoaded_AreGivenWhateverTheFoldersNamed) {
    Add("Loaded", "loaded.wav");
    const CString strForeign((Scratch() / "foreign.db").c_str());
    ASSERT_EQ(Manager::fnExportDB(strForeign), 1);
    Preset(Section("Loaded", "loaded.wav", "String@Beach"));
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(strForeign);
    const ULONGLONG hForeign = Manager::fnLoadGallery(kMedia, reinterpret_cast<DBTools*>(hSession));
    ASSERT_NE(hForeign, 0u);
    CQItem* const pLoaded = qfc::AsGallery(hForeign)->GetFolderByName("Clips")->GetItemArray()->GetAt(0);
    ASSERT_EQ(Manager::fnAddItem(hForeign, {"Gone"}, pLoaded), 1);
    EXPECT_EQ(TagsOf(*pLoaded), "1 ");
    EXPECT_EQ(Manager::fnCloseSessionGallery(hForeign), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
}

TEST_F(PresetTags, OfAnItemAddedAgain_AreGivenAgain) {
    Preset(Section("Twice", "twice.wav", "String@Beach"));
    CQItem* const pItem = Add("Twice", "twice.wav");
    ASSERT_EQ(Manager::fnDeleteLibTagFromItem({pItem}, {TagGuid(1)}), 1);
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, pItem), 1);
    EXPECT_EQ(TagsOf(*pItem), "1 ");
    EXPECT_TRUE(IsLinked(*pItem, 1));
}

TEST_F(PresetTags, OfAnItemWithoutDatabase_AreNotApplied) {
    Preset(Section("Loose", "loose.wav", "String@Beach"));
    CQItem item("Loose");
    qfc::ApplyPresetTags(Store(), *qfc::AsGallery(m_hMedia), item);
    EXPECT_EQ(TagsOf(item), "");
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 0);
}

TEST_F(PresetTags, AreOneTransaction_AndNoneWhenNoPresetNamesTheItem) {
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    Preset(Section("Counted", "counted.wav", "String@Beach;String@Sunset") +
           "[again]\nItemName=Counted\nFilePath=counted.wav\nGalleryID=1\nTagList=String@Rain\n");
    const qfc::test::SqlTrace trace;
    ASSERT_EQ(Manager::fnStartService(), 1);
    m_hMedia = Manager::fnLoadGallery(kMedia);
    const auto transactionsOfAnAdd = [&](const char* pszName) {
        const int nBefore = trace.CountStartingWith("BEGIN");
        Add(pszName, "counted.wav");
        return trace.CountStartingWith("BEGIN") - nBefore;
    };
    const int nPlain = transactionsOfAnAdd("Not counted");
    EXPECT_EQ(transactionsOfAnAdd("Counted"), nPlain + 1);
    EXPECT_EQ(trace.CountStartingWith("INSERT OR REPLACE into TAG_ITEM_RELATION_TABLE"), 3);
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
}

// The service is stopped: the adds run here, on a database of their own.
class PresetTagsOnABadDisk : public PresetTags {
protected:
    void SetUp() override {
        PresetTags::SetUp();
        qfc::test::CloseAllGalleries();
        ASSERT_EQ(Manager::fnStopService(), 1);
        bool bOpened = true;
        m_tools = std::make_unique<DBTools>(DatabaseFile().c_str(), bOpened);
        ASSERT_TRUE(bOpened);
        LibraryOperation_LoadGallery load(kMedia, m_tools.get());
        ASSERT_EQ(load.execute(), 1);
        m_hMedia = load.Loaded();
        m_pClips = Folder("Clips");
    }
    void TearDown() override {
        EXPECT_EQ(Manager::fnCloseSessionGallery(m_hMedia), 1);
        m_tools.reset();
        PresetTags::TearDown();
    }

    qfc::test::FaultVfs m_disk;
    std::unique_ptr<DBTools> m_tools;
};

TEST_F(PresetTagsOnABadDisk, ItemAndDatabaseAgree_WhereverTheAddFails) {
    Preset(Section("Fragile", "fragile.wav", "String@Beach;String@Sunset"));
    int nWithoutTags = 0;
    int nRefused = 0;
    bool bFailed = true;
    for (int n = 1; bFailed; ++n) {
        SCOPED_TRACE("call " + std::to_string(n));
        auto item = std::make_unique<CQItem>("Fragile");
        item->SetFileName("fragile.wav");
        CQItem* const pItem = item.get();
        m_disk.FailAt(n, false);
        EXPECT_EQ(LibraryOperation_AddItem(m_hMedia, {"Clips"}, pItem).execute(), 1);
        bFailed = m_disk.HasFailed();
        m_disk.Heal();
        const bool bHeld = m_pClips->HasItem(pItem->GetUniqueID(), 0) != 0;
        if (bHeld) static_cast<void>(item.release());
        const std::string tags = TagsOf(*pItem);
        ASSERT_TRUE(tags == "1 2 " || tags.empty()) << tags;
        ASSERT_EQ(CountLinks(*pItem), tags.empty() ? 0 : 2);
        ASSERT_TRUE(bHeld || tags.empty());
        ASSERT_TRUE(bFailed || !tags.empty());
        nRefused += bHeld ? 0 : 1;
        nWithoutTags += bHeld && tags.empty() ? 1 : 0;
    }
    EXPECT_GT(nRefused, 2);
    EXPECT_GT(nWithoutTags, 2);
}

// --- While adds are under way ---------------------------------------------------------------------------------------

TEST_F(PresetTags, ACallbackSeesTheTags) {
    Preset(Section("Called", "called.wav", "String@Sunset"));
    CQItem* const pItem = new CQItem("Called");
    std::string seen;
    Listen("tags", [&](QFCLibCallbackParam* pParam) {
        if (pParam->guidItem == std::as_const(*pItem).GetUniqueID()) seen = TagsOf(*pItem);
        return 1;
    });
    ASSERT_EQ(Manager::fnAddItemAsync(m_hMedia, {"Clips"}, pItem, 0), 1);
    Settle();
    EXPECT_EQ(seen, "2 ");
}

TEST_F(PresetTags, TheHostMayReadTheStoreWhileItemsAreAdded) {
    Preset(Section("Busy", "busy.wav", "String@Sunset;String@Rain"));
    constexpr int kItems = 50;
    std::atomic<int> nAdded = 0;
    std::atomic<int> nTagged = 0;
    Listen("tags", [&](QFCLibCallbackParam* pParam) {
        const CQItem* const pItem = m_pClips->GetItemByGUID(pParam->guidItem);
        if (pItem != nullptr && pItem->IsTagExist(TagGuid(3)) != 0) ++nTagged;
        return ++nAdded;
    });
    for (int nItem = 0; nItem < kItems; ++nItem) {
        ASSERT_EQ(Manager::fnAddItemAsync(m_hMedia, {"Clips"}, new CQItem("Busy"), nItem % 3 == 0), 1);
    }
    do {
        std::list<CLibTag> tags;
        EXPECT_EQ(Store().GetAllTagList(tags), 3);
        EXPECT_EQ(Store().GetCurGalleryAllTag(kMedia, tags), 3);
        EXPECT_EQ(Store().GetCurGalleryAllTag(99, tags), 0);
        CLibTag tag;
        EXPECT_EQ(Store().GetTagByName(kMedia, "sunset", tag), 1);
        EXPECT_TRUE(Store().IsTagExisted(kMedia, TagGuid(1)));
        EXPECT_TRUE(Store().IsTagCategoryExisted(kMedia, TagGuid(10)));
        EXPECT_FALSE(Store().GetPresetTagData().empty());
        EXPECT_EQ(Store().GetTagsData(kMedia).size(), 2u);
        EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(TagGuid(1), 1), 0);
    } while (nAdded < kItems);
    EXPECT_EQ(nTagged, kItems);
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 2 * kItems);
}

}  // namespace
