#include "items/Handles.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>

namespace {

namespace fs = std::filesystem;
using Manager = QFCLibraryManager;
using qfc::AsGallery;
using qfc::ToHandle;
using qfc::test::DumpOf;
using qfc::test::IdsOf;
using qfc::test::RawDb;

class EntriesSessions : public qfc::test::LibraryFixture {
protected:
    // A copy of the library of this moment, to be used as a foreign one.
    static CString ForeignLibrary(const char* pszName = "foreign.db") {
        const CString strPath((Scratch() / pszName).c_str());
        EXPECT_EQ(Manager::fnExportDB(strPath), 1);
        return strPath;
    }
    static DBTools* AsTools(ULONGLONG hSession) {
        return reinterpret_cast<DBTools*>(static_cast<std::uintptr_t>(hSession));
    }
    static bool IsInDocument(ULONGLONG hGallery) {
        const auto& galleries = GetGalleryDoc()->GetGalleryList();
        // The handle may be of a gallery that has ended, so it is not made a pointer.
        return std::ranges::any_of(galleries, [&](CQGallery* pGallery) { return ToHandle(pGallery) == hGallery; });
    }
};

// --- Sessions on other libraries ----------------------------------------------------------------------------------

TEST_F(EntriesSessions, Session_OnAMissingFile_IsRefusedAndMakesNone) {
    const fs::path missing = Scratch() / "missing.db";
    EXPECT_EQ(Manager::StartDbSession4ImportLib(missing.c_str()), 0u);
    EXPECT_FALSE(fs::exists(missing));
}

TEST_F(EntriesSessions, Session_OnAFileThatIsNoDatabase_IsRefused) {
    const fs::path garbage = Scratch() / "garbage.db";
    std::ofstream(garbage, std::ios::binary) << std::string(4096, 'x');
    EXPECT_EQ(Manager::StartDbSession4ImportLib(garbage.c_str()), 0u);
}

TEST_F(EntriesSessions, EndSession_OfZero_IsRefused) { EXPECT_EQ(Manager::EndDbSession4ImportLib(0), 0); }

TEST_F(EntriesSessions, Session_IsNeverTheCurrentDatabase) {
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(ForeignLibrary());
    ASSERT_NE(hSession, 0u);
    EXPECT_EQ(Manager::IsCurrentDBTools(AsTools(hSession)), 0);
    EXPECT_EQ(Manager::IsCurrentDBTools(m_pClips->GetDBTools()), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
    EXPECT_EQ(Manager::IsCurrentDBTools(m_pClips->GetDBTools()), 1);
}

TEST_F(EntriesSessions, Session_LoadsItsGalleriesOutsideTheDocument) {
    const GUID guid = AddItem("Sunrise")->GetUniqueID();
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(ForeignLibrary());
    const auto nOpen = GetGalleryDoc()->GetGalleryList().GetCount();
    const ULONGLONG hForeign = Manager::fnLoadGallery(kMedia, AsTools(hSession));
    ASSERT_NE(hForeign, 0u);
    EXPECT_EQ(GetGalleryDoc()->GetGalleryList().GetCount(), nOpen);
    EXPECT_EQ(AsGallery(hForeign)->GetFolderByName("Clips")->HasItem(guid, 0), 1);
    EXPECT_EQ(Manager::fnCloseSessionGallery(hForeign), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
    EXPECT_EQ(m_pClips->HasItem(guid, 0), 1);
}

TEST_F(EntriesSessions, TwoSessions_AreIndependentOfEachOtherAndOfTheService) {
    const ULONGLONG hFirst = Manager::StartDbSession4ImportLib(ForeignLibrary("first.db"));
    const ULONGLONG hSecond = Manager::StartDbSession4ImportLib(ForeignLibrary("second.db"));
    ASSERT_NE(hFirst, 0u);
    ASSERT_NE(hSecond, 0u);
    const ULONGLONG hGallery = Manager::fnCreateGallery(9, "Nine", 0, 0, 0, AsTools(hFirst));
    ASSERT_NE(hGallery, 0u);
    std::vector<qfc::StoredGallery> galleries;
    ASSERT_EQ(Manager::fnListGalleries(galleries, AsTools(hFirst)), 1);
    EXPECT_EQ(IdsOf(galleries), (std::vector<int>{1, 9}));
    ASSERT_EQ(Manager::fnListGalleries(galleries, AsTools(hSecond)), 1);
    EXPECT_EQ(IdsOf(galleries), (std::vector<int>{1}));
    ASSERT_EQ(Manager::fnListGalleries(galleries), 1);
    EXPECT_EQ(IdsOf(galleries), (std::vector<int>{1}));
    EXPECT_EQ(Manager::fnCloseSessionGallery(hGallery), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hFirst), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSecond), 1);
}

// Kept: whatever database it was made on.
TEST_F(EntriesSessions, AGalleryMadeOnASession_JoinsTheDocumentUntilItIsClosed) {
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(ForeignLibrary());
    const ULONGLONG hGallery = Manager::fnCreateGallery(9, "Nine", 0, 0, 0, AsTools(hSession));
    ASSERT_NE(hGallery, 0u);
    EXPECT_TRUE(IsInDocument(hGallery));
    EXPECT_EQ(Manager::fnCloseSessionGallery(hGallery), 1);
    EXPECT_FALSE(IsInDocument(hGallery));
    EXPECT_TRUE(IsInDocument(m_hMedia));
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
}

TEST_F(EntriesSessions, Session_OutlivesTheService) {
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(ForeignLibrary());
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    std::vector<qfc::StoredGallery> galleries;
    EXPECT_EQ(Manager::fnListGalleries(galleries, AsTools(hSession)), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
}

TEST_F(EntriesSessions, AnOlderLibraryOpenedAsASession_IsLoadedAndNotMigrated) {
    AddItem("Sunrise");
    const CString strPath = ForeignLibrary();
    RawDb(strPath.GetString()).Exec("alter table FOLDER_TABLE drop column ORDER_INDEX");
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(strPath);
    const ULONGLONG hForeign = Manager::fnLoadGallery(kMedia, AsTools(hSession));
    ASSERT_NE(hForeign, 0u);
    CQFolder* const pForeignClips = AsGallery(hForeign)->GetFolderByName("Clips");
    ASSERT_NE(pForeignClips, nullptr);
    EXPECT_EQ(pForeignClips->GetIndex(), -1);
    EXPECT_EQ(Manager::fnCloseSessionGallery(hForeign), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
    EXPECT_EQ(RawDb(strPath.GetString())
                  .Cell("select count(*) from sqlite_master where name = 'FOLDER_TABLE' and sql like '%ORDER_INDEX%'"),
              "0");
}

TEST_F(EntriesSessions, UpdateFolder_OfASession_WritesToItsLibraryAlone) {
    const CString strPath = ForeignLibrary();
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(strPath);
    const ULONGLONG hForeign = Manager::fnLoadGallery(kMedia, AsTools(hSession));
    ASSERT_NE(hForeign, 0u);
    CQFolder* const pForeign = AsGallery(hForeign)->GetFolderByName("Clips");
    EXPECT_EQ(Manager::fnUpdateFolder(ToHandle(pForeign), "Renamed", 1, 2, 3, AsTools(hSession)), 1);
    EXPECT_EQ(pForeign->GetFolderName(), "Renamed");
    EXPECT_EQ(pForeign->GetDBTools(), AsTools(hSession));
    EXPECT_EQ(Manager::fnCloseSessionGallery(hForeign), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
    EXPECT_EQ(RawDb(strPath.GetString())
                  .Cell("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'Renamed' and ADOPT_TYPE = 1 and "
                        "TRUSTY_TYPE = 2 and TYPE_EXTRA = 3"),
              "1");
    EXPECT_EQ(CountRows("FOLDER_TABLE where FOLDER_NAME = 'Clips'"), 1);
    EXPECT_EQ(CountRows("FOLDER_TABLE where FOLDER_NAME = 'Renamed'"), 0);
}

// --- Taking items from another library ------------------------------------------------------------------------------

class ImportFromSession : public EntriesSessions {
protected:
    // The foreign library holds one item with payloads; the own one does not.
    void SetUp() override {
        LibraryFixture::SetUp();
        CQItem* const pItem = NewItem("Sunrise");
        qfc::test::GiveBlackBox(*pItem, 700);
        qfc::test::GiveBitmapCache(*pItem, 12, 8);
        qfc::test::GiveFilm(*pItem, 3, 90);
        m_guid = pItem->GetUniqueID();
        ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, pItem), 1);
        const CString strForeign = ForeignLibrary();
        Manager::fnDeleteItem(ToHandle(m_pClips), {m_guid}, 0);

        m_hSession = Manager::StartDbSession4ImportLib(strForeign);
        m_hForeign = Manager::fnLoadGallery(kMedia, AsTools(m_hSession));
        ASSERT_NE(m_hForeign, 0u);
        m_pForeign = AsGallery(m_hForeign)->GetItemByGUID(m_guid);
        ASSERT_NE(m_pForeign, nullptr);
    }
    void EndSession() {
        EXPECT_EQ(Manager::fnCloseSessionGallery(m_hForeign), 1);
        EXPECT_EQ(Manager::EndDbSession4ImportLib(m_hSession), 1);
        m_hForeign = m_hSession = 0;
    }
    void TearDown() override {
        if (m_hSession != 0) EndSession();
        LibraryFixture::TearDown();
    }

    GUID m_guid{};
    ULONGLONG m_hSession = 0;
    ULONGLONG m_hForeign = 0;
    CQItem* m_pForeign = nullptr;
};

TEST_F(ImportFromSession, AnItem_IsCopiedWithIdentityAndPayloads) {
    EXPECT_EQ(m_pClips->AddItemFromImportLib(m_pForeign), 1);
    EndSession();
    Restart();
    CQItem* const pItem = m_pClips->GetItemByGUID(m_guid);
    ASSERT_NE(pItem, nullptr);
    EXPECT_EQ(pItem->GetItemName(), "Sunrise");
    EXPECT_TRUE(qfc::test::HoldsPattern(pItem->GetBlackBox(), 700));
    EXPECT_EQ(pItem->GetBitmapCacheSize().cx, 12);
    EXPECT_EQ(pItem->GetTotalFilmFrame(), 3u);
    EXPECT_TRUE(qfc::test::HoldsPattern(pItem->GetFilmFrame(0), 270));
}

TEST_F(ImportFromSession, AnItemThatIsThereAlready_IsPlacedInTheOtherFolder) {
    ASSERT_EQ(m_pClips->AddItemFromImportLib(m_pForeign), 1);
    CQFolder* const pOther = MakeFolder("", "Other");
    EXPECT_EQ(m_pClips->AddItemFromImportLib(m_pForeign), 0);
    EXPECT_EQ(pOther->AddItemFromImportLib(m_pForeign), 1);
    EXPECT_EQ(pOther->GetItemByGUID(m_guid), m_pClips->GetItemByGUID(m_guid));
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 2);
}

TEST_F(ImportFromSession, TheForeignLibrary_IsNotChanged) {
    const std::string before = DumpOf(Scratch() / "foreign.db");
    ASSERT_EQ(m_pClips->AddItemFromImportLib(m_pForeign), 1);
    EndSession();
    EXPECT_EQ(DumpOf(Scratch() / "foreign.db"), before);
}

// The worker cannot wait for itself; the copy that was made for the folder goes again.
TEST_F(ImportFromSession, InsideACallback_IsRefused) {
    int imported = -1;
    Listen("callback", [&](QFCLibCallbackParam*) {
        imported = m_pClips->AddItemFromImportLib(m_pForeign);
        return 1;
    });
    Settle();
    EXPECT_EQ(imported, 0);
    EXPECT_EQ(m_pClips->HasItem(m_guid, 0), 0);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
}

// --- Closing galleries of sessions ----------------------------------------------------------------------------------

TEST_F(ImportFromSession, CloseSessionGallery_RefusesTheServicesOwnAndZero) {
    EXPECT_EQ(Manager::fnCloseSessionGallery(0), 0);
    EXPECT_EQ(Manager::fnCloseSessionGallery(m_hMedia), 0);
    EXPECT_EQ(AsGallery(m_hMedia)->GetFolderByName("Clips"), m_pClips);
}

// What the leak and address sanitizers look at: every object once, in whatever way it came into the tree.
TEST_F(ImportFromSession, CloseSessionGallery_DestroysEveryItemOnce) {
    RawDb foreign((Scratch() / "foreign.db"));
    // The stored item a second time in another folder, then an item added through the service to two folders.
    ASSERT_NE(Manager::fnCreateFolder(m_hForeign, "Clips", "Deep", 0, 0, 0, 0), nullptr);
    foreign.Exec(
        "insert into RELATION_TABLE select (select ID from FOLDER_TABLE where FOLDER_NAME = 'Deep'), ITEM_ID, 0 "
        "from ITEM_TABLE");
    EXPECT_EQ(Manager::fnCloseSessionGallery(m_hForeign), 1);
    m_hForeign = Manager::fnLoadGallery(kMedia, AsTools(m_hSession));
    ASSERT_NE(m_hForeign, 0u);
    CQItem* const pAdded = NewItem("Added");
    ASSERT_EQ(Manager::fnAddItem(m_hForeign, {"Clips", "Clips\\Deep"}, pAdded), 1);
    EXPECT_EQ(AsGallery(m_hForeign)->GetFolderByPath("Clips\\Deep")->GetItemArray()->GetSize(), 2);
    EndSession();
}

// A gallery without a database is nobody's, whether or not the service has one.
TEST_F(EntriesSessions, CloseSessionGallery_OfAGalleryWithoutDatabase_WorksWhileStoppedToo) {
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    EXPECT_EQ(Manager::fnCloseSessionGallery(ToHandle(new CQGallery)), 1);
}

// Folders without a database end their items themselves, as they do in a tree that was never stored.
TEST_F(EntriesSessions, CloseSessionGallery_OfAGalleryWithoutDatabase_DestroysEveryItemOnce) {
    auto gallery = std::make_unique<CQGallery>();
    auto folder = std::make_unique<CQFolder>("Loose", 0, 0, 0);
    ASSERT_EQ(folder->AddItem(NewItem("Sunrise"), 1), 1);
    ASSERT_EQ(gallery->AddFolder(folder.get(), 0, 1), 1);
    static_cast<void>(folder.release());
    EXPECT_EQ(Manager::fnCloseSessionGallery(ToHandle(gallery.release())), 1);
}

// A tree that was attached as a whole knows no database below its top. An item that it shares with a folder of the
// session goes with it.
TEST_F(ImportFromSession, CloseSessionGallery_WithALooseTreeAttached_DestroysEveryItemOnce) {
    auto top = std::make_unique<CQFolder>("Top", 0, 0, 0);
    auto below = std::make_unique<CQFolder>("Below", 0, 0, 0);
    ASSERT_EQ(below->AddItem(NewItem("Own"), 1), 1);
    ASSERT_EQ(below->AddItem(m_pForeign, 0), 1);
    ASSERT_EQ(top->AddItem(NewItem("At the top"), 1), 1);
    ASSERT_EQ(top->AddFolder(below.get(), 0, 1), 1);
    static_cast<void>(below.release());
    ASSERT_EQ(AsGallery(m_hForeign)->AddFolder(top.get(), 0, 1), 1);
    static_cast<void>(top.release());
    EndSession();
}

}  // namespace
