// Tags through the exported interface, as a host uses them: loaded once at the start, changed through the service,
// looked at in the store and at the items.
#include "tests/support/RawDb.h"
#include "tests/support/TagFixture.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Manager = QFCLibraryManager;
using qfc::AsGallery;
using qfc::test::RawDb;

class TagStory : public qfc::test::TagFixture {
protected:
    static constexpr int kSounds = 2;

    // Store and items as they are in memory.
    std::string Seen() const {
        std::string text = StoreText() + "|" + StoreText(kSounds) + "|";
        for (const CQItem* const pItem : *m_pClips->GetItemArray()) {
            text += " " + std::string(pItem->GetItemName()) + ": " + std::string(pItem->GetTagTooltip());
        }
        return text;
    }
    // What a host does when it starts again.
    void StartAgain() {
        EmptyStore();
        Restart();
        ASSERT_EQ(Manager::fnLoadLibTag(), 1);
    }
    // What was seen is what is stored.
    void ExpectAfterRestart(const std::string& text) {
        EXPECT_EQ(Seen(), text);
        StartAgain();
        EXPECT_EQ(Seen(), text);
    }
};

TEST_F(TagStory, EveryChangeIsThereTheNextMorning) {
    CQItem* pRain = AddItem("Rain");
    ASSERT_EQ(Manager::fnUpdateTagCategory(kMedia, {Category(10, "Weather", {{1, "Wet"}, {2, "Dry"}})}), 1);
    ASSERT_EQ(Manager::fnInsertLibTag2Item({pRain}, {TagGuid(1)}), 1);
    ExpectAfterRestart("Weather(Wet Dry) || Rain: Wet");

    ASSERT_EQ(Manager::fnUpdateTag(kMedia, {Tag(1, "Damp", 10)}), 1);
    ASSERT_EQ(Manager::fnUpdateTagCategory(kSounds, {Category(20, "Mood", {{3, "Calm"}}, kSounds)}), 1);
    EXPECT_EQ(Seen(), "Weather(Damp Dry) |Mood(Calm) | Rain: Damp");
    StartAgain();
    EXPECT_EQ(Seen(), "Weather(Dry Damp) |Mood(Calm) | Rain: Damp");  // What was rewritten stands last.

    pRain = m_pClips->GetItemArray()->GetAt(0);
    ASSERT_EQ(Manager::fnInsertLibTag2Item({pRain}, {TagGuid(3)}), 1);
    ASSERT_EQ(Manager::fnDeleteLibTagFromItem({pRain}, {TagGuid(1)}), 1);
    ExpectAfterRestart("Weather(Dry Damp) |Mood(Calm) | Rain: Calm");
}

TEST_F(TagStory, DeletedAndMergedTags_AreTakenFromItemsInMemoryByTheHost) {
    CQItem* const pRain = AddItem("Rain");
    CQItem* const pSnow = AddItem("Snow");
    ASSERT_EQ(Manager::fnUpdateTagCategory(
                  kMedia, {Category(10, "Weather", {{1, "Wet"}, {2, "Damp"}, {3, "Cold"}, {4, "Loud"}})}),
              1);
    ASSERT_EQ(Manager::fnInsertLibTag2Item({pRain}, {TagGuid(2), TagGuid(4)}), 1);
    ASSERT_EQ(Manager::fnInsertLibTag2Item({pSnow}, {TagGuid(3), TagGuid(4)}), 1);

    ASSERT_EQ(Manager::fnDeleteTag(kMedia, {Tag(4, "Loud", 10)}), 1);
    for (CQItem* const pItem : {pRain, pSnow}) pItem->RemoveLibTag(TagGuid(4));
    ASSERT_EQ(Manager::fnMergeFaceTag(kMedia, TagGuid(1), {TagGuid(2), TagGuid(3), TagGuid(1)}), 1);
    for (CQItem* const pItem : {pRain, pSnow}) {
        for (const int nSource : {2, 3}) pItem->RemoveLibTag(TagGuid(nSource));
        pItem->AddLibTag(TagGuid(1));
    }
    EXPECT_EQ(TagsOf(*pRain), "1 ");
    ExpectAfterRestart("Weather(Wet) || Rain: Wet Snow: Wet");
    EXPECT_EQ(TagsOf(*m_pClips->GetItemArray()->GetAt(0)), "1 ");
}

TEST_F(TagStory, ACategoryGoesAfterItsTags) {
    CQItem* const pRain = AddItem("Rain");
    const CTagCategory weather = Category(10, "Weather", {{1, "Wet"}, {2, "Dry"}});
    ASSERT_EQ(Manager::fnUpdateTagCategory(kMedia, {weather}), 1);
    ASSERT_EQ(Manager::fnInsertLibTag2Item({pRain}, {TagGuid(1)}), 1);
    ASSERT_EQ(Manager::fnDeleteTag(kMedia, weather.m_tags), 1);
    ASSERT_EQ(Manager::fnDeleteTagCategory(kMedia, {weather}), 1);
    for (const char* table : {"LIB_TAG_CATEGORY_TABLE", "LIB_TAG_TABLE", "TAG_ITEM_RELATION_TABLE"}) {
        EXPECT_EQ(CountRows(table), 0) << table;
    }
}

TEST_F(TagStory, TheTagsOfAnItemAreUnlinkedBeforeItIsRemoved) {
    CQItem* const pRain = AddItem("Rain");
    ASSERT_EQ(Manager::fnUpdateTagCategory(kMedia, {Category(10, "Weather", {{1, "Wet"}})}), 1);
    ASSERT_EQ(Manager::fnInsertLibTag2Item({pRain}, {TagGuid(1)}), 1);
    std::list<GUID> tags;
    pRain->CopyTagVec(tags);
    ASSERT_EQ(Manager::fnDeleteLibTagFromItem({pRain}, tags), 1);
    Manager::fnDeleteItem(qfc::ToHandle(m_pClips), {pRain->GetUniqueID()}, 0);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 0);
}

TEST_F(TagStory, SeveralThreadsMayChangeTags_AndOneLooksAtThemBehind) {
    constexpr int kThreads = 4;
    constexpr int kCalls = 5;
    std::vector<std::thread> threads;
    for (int nThread = 0; nThread < kThreads; ++nThread) {
        threads.emplace_back([nThread] {
            const int nCategory = 1000 * (nThread + 1);
            const DWORD dwGallery = nThread % 2 == 0 ? kMedia : kSounds;
            EXPECT_EQ(Manager::fnUpdateTagCategory(dwGallery, {Category(nCategory, "Category", {})}), 1);
            for (int nTag = 1; nTag <= kCalls; ++nTag) {
                EXPECT_EQ(Manager::fnUpdateTag(dwGallery, {Tag(nCategory + nTag, "tag", nCategory)}), 1);
            }
            EXPECT_EQ(Manager::fnDeleteTag(dwGallery, {Tag(nCategory + 1, "", nCategory)}), 1);
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::list<CLibTag> tags;
    EXPECT_EQ(Store().GetAllTagList(tags), kThreads * (kCalls - 1));
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), kThreads * (kCalls - 1));
}

// As docs/host-guide.md has it.
bool HasNoTags(const CString& strPath) {
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(strPath);
    if (hSession == 0) return false;
    std::vector<CTagCategory> stored;
    const bool bRead = reinterpret_cast<DBTools*>(hSession)->LoadTags(stored);
    Manager::EndDbSession4ImportLib(hSession);
    return bRead && stored.empty();
}

// Its own answer, and the store, are the same for a library without tags and for one that cannot be read.
TEST_F(TagStory, ALoadThatFails_IsToldFromALibraryWithoutTags) {
    const CString strPath = Manager::GetDatabasePath();
    EXPECT_EQ(Manager::fnLoadLibTag(), 1);
    EXPECT_TRUE(Store().IsEmpty());
    EXPECT_TRUE(HasNoTags(strPath));
    ASSERT_EQ(Manager::fnUpdateTagCategory(kMedia, {Category(10, "Weather", {{1, "Wet"}})}), 1);
    EXPECT_FALSE(HasNoTags(strPath));
    EmptyStore();
    RawDb(DatabaseFile())
        .Exec(
            "alter table LIB_TAG_TABLE rename to KEPT; create view LIB_TAG_TABLE as select "
            "abs(-9223372036854775807 - (select count(*) from KEPT)) as TAG_GUID");
    EXPECT_EQ(Manager::fnLoadLibTag(), 1);
    EXPECT_TRUE(Store().IsEmpty());
    EXPECT_FALSE(HasNoTags(strPath));
}

TEST_F(TagStory, AnotherLibrary_IsLoadedIntoAnEmptiedStore) {
    ASSERT_EQ(Manager::fnUpdateTagCategory(kMedia, {Category(10, "Weather", {{1, "Wet"}})}), 1);
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    fs::rename(DatabaseFile(), Scratch() / "first.db");
    ASSERT_EQ(Manager::fnStartService(), 1);
    EmptyStore();
    EXPECT_EQ(Manager::fnLoadLibTag(), 1);
    EXPECT_TRUE(Store().IsEmpty());
}

// --- A library that was seeded, in a fresh process -------------------------------------------------------------------

constexpr const char* kTranslation = "[TW_TAG_TRANSLATE]\nWeather=Wetter\nWet=Nass\nLoud=Laut\n";

class SeededLibrary : public qfc::test::StoppedServiceFixture {
protected:
    static constexpr int kMedia = 1;

    static fs::path Data() { return HostFolder() / "Orvel.dat"; }
    static void Write(const char* pszName, const std::string& text) {
        fs::create_directories(Data());
        std::ofstream(Data() / pszName, std::ios::binary) << text;
    }
    void SetUp() override {
        StoppedServiceFixture::SetUp();
        Write("Default_Libtag.ini", "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nWeather=String@Wet;String@Loud\n");
        Write(
            "PresetItemTag.ini",
            "[rain.wav@Rain]\nItemName=Rain\nFilePath=sounds\\rain.wav\nGalleryID=1\nTagList=String@Wet;String@Loud\n");
    }
    // Runs in a process of its own, which sees nothing of this one and leaves nothing to it but files.
    static void InAnotherProcess(const std::function<bool()>& work) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) _exit(work() ? 0 : 1);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    // The library with the default tags that new hosts start from.
    static bool MakeTemplate() {
        if (!Manager::fnStartService() || Manager::fnCreateGallery(kMedia, "Media", 0, 0, 0) == 0) return false;
        const ULONGLONG hMedia = Manager::fnLoadGallery(kMedia);
        if (Manager::fnCreateFolder(hMedia, "", "Clips", 0, 0, 0, 0) == nullptr) return false;
        if (!Manager::fnCreateDefaultTag()) return false;
        qfc::test::CloseAllGalleries();
        if (!Manager::fnStopService()) return false;
        fs::rename(DatabaseFile(), TemplateFile());
        return true;
    }
    // By name, since the order of links is not stored: "Loud Wet ".
    static std::string TagNames(const CQItem& item) {
        std::list<CLibTag> known;
        CLibTagsMgr::GetLibTagMgr()->GetAllTagList(known);
        std::set<std::string> names;
        for (const CLibTag& tag : known) {
            if (item.IsTagExist(tag.m_guid) != 0) names.insert(tag.m_strName.GetString());
        }
        std::string text;
        for (const std::string& name : names) text += name + " ";
        return text;
    }
    // The tags that the known sound has after it was imported by a host that has just started, in memory / in the
    // database.
    static std::string ImportInAFreshHost() {
        if (!Manager::fnStartService() || !Manager::fnLoadLibTag()) return "no service";
        CLibTagsMgr::GetLibTagMgr()->GeneratePresetTagData();
        const ULONGLONG hMedia = Manager::fnLoadGallery(kMedia);
        auto* const pItem = new CQItem("Rain");
        pItem->SetFileName("/usr/share/media/rain.wav");
        Manager::fnAddItem(hMedia, {"Clips"}, pItem);
        const GUID guid = pItem->GetUniqueID();
        const std::string given = TagNames(*pItem);
        qfc::test::CloseAllGalleries();
        const CQItem* const pStored = AsGallery(Manager::fnLoadGallery(kMedia))->GetItemByGUID(guid);
        if (pStored == nullptr) return "not stored";
        const std::string stored = TagNames(*pStored);
        qfc::test::CloseAllGalleries();
        Manager::fnStopService();
        return given + "/ " + stored;
    }
    static void ExpectImportGives(const std::string& tags) {
        InAnotherProcess([&] {
            const std::string seen = ImportInAFreshHost();
            if (seen != tags) std::fprintf(stderr, "the import gave: %s\n", seen.c_str());
            return seen == tags;
        });
    }
};

TEST_F(SeededLibrary, AnImportInAFreshProcess_GetsItsPresetTags) {
    InAnotherProcess(&MakeTemplate);
    ExpectImportGives("Loud Wet / Loud Wet ");
}

TEST_F(SeededLibrary, TagsThatWereStoredTranslated_AreFoundWithTheTranslation) {
    Write("qvTWTranslateData.dat", kTranslation);
    InAnotherProcess(&MakeTemplate);
    ExpectImportGives("Laut Nass / Laut Nass ");
}

TEST_F(SeededLibrary, TagsThatWereStoredUntranslated_AreFoundAsWritten) {
    InAnotherProcess(&MakeTemplate);
    Write("qvTWTranslateData.dat", kTranslation);
    ExpectImportGives("Loud Wet / Loud Wet ");
}

TEST_F(SeededLibrary, WithoutPresetsTheImportGetsNoTags) {
    InAnotherProcess(&MakeTemplate);
    fs::remove(Data() / "PresetItemTag.ini");
    ExpectImportGives("/ ");
}

TEST_F(SeededLibrary, DefaultsMadeAgainInAnotherProcess_AreTheSameRows) {
    InAnotherProcess(&MakeTemplate);
    InAnotherProcess([] {
        return Manager::fnStartService() && Manager::fnLoadLibTag() && Manager::fnCreateDefaultTag() &&
               Manager::fnStopService();
    });
    EXPECT_EQ(CountRows("LIB_TAG_CATEGORY_TABLE"), 1);
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), 2);
}

}  // namespace
