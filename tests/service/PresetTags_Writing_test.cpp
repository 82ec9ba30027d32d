// What is written of the tags that an added item gets from presets, and when.
#include "service/operations/AddItem.h"
#include "service/operations/LoadGallery.h"
#include "service/operations/PresetTags.h"
#include "tests/service/PresetTagsTest.h"
#include "tests/support/FaultVfs.h"
#include "tests/support/GateOperation.h"
#include "tests/support/RawDb.h"
#include "tests/support/SqlTrace.h"

#include <atomic>
#include <list>
#include <memory>
#include <string>
#include <thread>

namespace {

using Manager = QFCLibraryManager;
using qfc::test::Gate;
using qfc::test::PresetTags;
using qfc::test::RawDb;

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

// Its folder is no folder of the gallery, though it holds it.
TEST_F(PresetTags, OfAnItemThatASessionHolds_AreNotWrittenThere) {
    const std::string other = (Scratch() / "foreign.db").string();
    CQItem* const pAway = Add("Away", "away.wav");
    ASSERT_EQ(Manager::fnExportDB(other.c_str()), 1);
    ASSERT_EQ(m_pClips->RemoveItemDB(pAway->GetUniqueID(), 1), 1);
    Preset(Section("Away", "away.wav", "String@Beach"));
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(other.c_str());
    const ULONGLONG hForeign = Manager::fnLoadGallery(kMedia, reinterpret_cast<DBTools*>(hSession));
    ASSERT_NE(hForeign, 0u);
    CQItem* const pGuest = qfc::AsGallery(hForeign)->GetFolderByName("Clips")->GetItemArray()->GetAt(0);
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Gone"}, pGuest), 1);
    EXPECT_EQ(TagsOf(*pGuest), "");
    EXPECT_EQ(RawDb(other).Rows("select * from TAG_ITEM_RELATION_TABLE").size(), 0u);
    EXPECT_EQ(CountRows("TAG_ITEM_RELATION_TABLE"), 0);
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

    // Adds an item while the n-th call of the disk fails, for n = 1, 2, ... until none is left that could.
    void FailEveryCall(bool bSticky, qfc::test::FaultVfs::Counted counted);

    qfc::test::FaultVfs m_disk;
    std::unique_ptr<DBTools> m_tools;
};

void PresetTagsOnABadDisk::FailEveryCall(bool bSticky, qfc::test::FaultVfs::Counted counted) {
    Preset(Section("Fragile", "fragile.wav", "String@Beach;String@Sunset"));
    int nWithoutTags = 0;
    int nRefused = 0;
    bool bFailed = true;
    for (int n = 1; bFailed; ++n) {
        SCOPED_TRACE("call " + std::to_string(n));
        auto item = std::make_unique<CQItem>("Fragile");
        item->SetFileName("fragile.wav");
        CQItem* const pItem = item.get();
        ForgetPages();
        m_disk.FailAt(n, bSticky, counted);
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

TEST_F(PresetTagsOnABadDisk, ItemAndDatabaseAgree_WhereverTheAddFails) {
    FailEveryCall(false, qfc::test::FaultVfs::Counted::kChanges);
}

TEST_F(PresetTagsOnABadDisk, ItemAndDatabaseAgree_WhereverReadingFailsToo) {
    FailEveryCall(false, qfc::test::FaultVfs::Counted::kEverything);
}

TEST_F(PresetTagsOnABadDisk, ItemAndDatabaseAgree_WhereverReadingFailsForGood) {
    FailEveryCall(true, qfc::test::FaultVfs::Counted::kEverything);
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
    Gate gate;
    for (int nItem = 0; nItem < kItems; ++nItem) {
        ASSERT_EQ(Manager::fnAddItemAsync(m_hMedia, {"Clips"}, new CQItem("Busy"), nItem % 3 == 0), 1);
    }
    EXPECT_EQ(nAdded, 0);
    do {
        std::list<CLibTag> tags;
        EXPECT_EQ(Store().GetAllTagList(tags), 3);
        gate.Open();  // Before the first look ends: all adds are still to come then.
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
