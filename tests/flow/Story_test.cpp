// Whole stories of a host, through the exported interface only.
#include "tests/support/LibraryFixture.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Manager = QFCLibraryManager;
using qfc::AsGallery;
using qfc::ToHandle;

class Story : public qfc::test::LibraryFixture {
protected:
    // What a person would see: folders in order, the items in them by name.
    static std::string Tree(CQFolder& folder) {
        std::string text;
        if (auto* const pItems = folder.GetItemArray()) {
            for (const CQItem* const pItem : *pItems) text += std::string(pItem->GetItemName()) + " ";
        }
        if (auto* const pFolders = folder.GetFolderList()) {
            for (CQFolder* const pChild : *pFolders) {
                text += std::string(pChild->GetFolderName()) + "( " + Tree(*pChild) + ") ";
            }
        }
        return text;
    }
    std::string Tree() const { return Tree(*AsGallery(m_hMedia)); }

    void TearDown() override {
        qfc::test::CloseAllGalleries();
        Manager::fnStopService();
        std::vector<qfc::LibraryFinding> findings;
        EXPECT_EQ(fnCheckLibrary(Manager::GetDatabasePath(), findings), 1);
        for (const auto& finding : findings) ADD_FAILURE() << finding.sentence;
        LibraryFixture::TearDown();
    }
};

TEST_F(Story, AWorkingDay_IsThereTheNextMorning) {
    MakeFolder("Clips", "Rain");
    MakeFolder("", "Sounds");
    AddItem("Drops", {"Clips\\Rain"});
    AddItem("Storm", {"Clips\\Rain", "Sounds"});
    CQItem* const pSunrise = NewItem("Sunrise");
    qfc::test::GiveBlackBox(*pSunrise, 112 * 1024);
    qfc::test::GiveBitmapCache(*pSunrise, 160, 90);
    qfc::test::GiveFilm(*pSunrise, 10, 43240);
    const GUID sunrise = pSunrise->GetUniqueID();
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, pSunrise), 1);
    EXPECT_EQ(Tree(), "Clips( Sunrise Rain( Drops Storm ) ) Sounds( Storm ) ");
    Restart();
    EXPECT_EQ(Tree(), "Clips( Sunrise Rain( Drops Storm ) ) Sounds( Storm ) ");

    // Rename an item and a folder, take one placement away, delete another item everywhere.
    CQItem renamed("Dawn");
    renamed.GetAttrib() = 1;
    renamed.SetFileName("C:\\media\\Dawn.avi");
    ASSERT_EQ(Manager::fnUpdateItem(m_hMedia, &renamed, sunrise, 1), 1);
    ASSERT_EQ(Manager::fnUpdateFolder(ToHandle(Folder("Sounds")), "Audio", 0, 0, 0), 1);
    const GUID storm = Folder("Audio")->GetItemArray()->GetAt(0)->GetUniqueID();
    Manager::fnDeleteItem(ToHandle(Folder("Audio")), {storm}, 1);
    const GUID drops = Folder("Clips\\Rain")->GetItemArray()->GetAt(0)->GetUniqueID();
    Manager::fnDeleteItem(ToHandle(Folder("Clips\\Rain")), {drops}, 0);
    EXPECT_EQ(Tree(), "Clips( Dawn Rain( Storm ) ) Audio( ) ");
    Restart();
    EXPECT_EQ(Tree(), "Clips( Dawn Rain( Storm ) ) Audio( ) ");

    CQItem* const pDawn = m_pClips->GetItemByGUID(sunrise);
    ASSERT_NE(pDawn, nullptr);
    EXPECT_TRUE(qfc::test::HoldsPattern(pDawn->GetBlackBox(), 112 * 1024));
    EXPECT_EQ(pDawn->GetBitmapCacheSize().cx, 160);
    EXPECT_EQ(pDawn->GetTotalFilmFrame(), 0u);  // The frame size travelled with the other fields, and was 0.
}

TEST_F(Story, FoldersKeepTheOrderTheyWereGiven) {
    for (const char* name : {"A", "B", "C"}) ASSERT_NE(MakeFolder("", name), nullptr);
    CQGallery* const pMedia = AsGallery(m_hMedia);
    int nIndex = 10;
    for (CQFolder* const pFolder : *pMedia->GetFolderList()) pFolder->SetIndex(nIndex--);
    ASSERT_EQ(pMedia->SortSubFolder(), 1);
    ASSERT_EQ(pMedia->UpdateSubFolderIndexDB(), 1);
    Restart();
    EXPECT_EQ(Tree(), "C( ) B( ) A( ) Clips( ) ");
}

TEST_F(Story, ItemsKeepTheOrderTheyWereGiven) {
    for (const char* name : {"c", "a", "b"}) AddItem(name);
    ASSERT_EQ(m_pClips->SortingAllItem(0, 1), 1);
    ASSERT_EQ(m_pClips->ReOrderItemsDb(0, -1), 1);
    Restart();
    EXPECT_EQ(Tree(), "Clips( a b c ) ");
}

// Kept: new ones are numbered by how many there are, and removals leave the numbers of the others.
TEST_F(Story, WhatIsAddedAfterARemovalMayStandFurtherAheadAfterTheNextLoad) {
    for (const char* name : {"A", "B", "C"}) ASSERT_NE(MakeFolder("Clips", name), nullptr);
    const GUID first = AddItem("a")->GetUniqueID(), second = AddItem("b")->GetUniqueID();
    AddItem("c");
    for (const char* name : {"Clips\\A", "Clips\\B"}) ASSERT_EQ(Manager::fnDeleteFolder(ToHandle(Folder(name))), 1);
    Manager::fnDeleteItem(ToHandle(m_pClips), {first, second}, 1);
    ASSERT_NE(MakeFolder("Clips", "D"), nullptr);
    AddItem("d");
    EXPECT_EQ(Tree(), "Clips( c d C( ) D( ) ) ");
    Restart();
    EXPECT_EQ(Tree(), "Clips( d c D( ) C( ) ) ");
}

TEST_F(Story, AFolderMovesToAnotherParentWithEverythingInIt) {
    CQFolder* const pRain = MakeFolder("Clips", "Rain");
    CQFolder* const pWeather = MakeFolder("", "Weather");
    AddItem("Drops", {"Clips\\Rain"});
    ASSERT_EQ(pRain->DetachParent(0), 1);
    ASSERT_EQ(pWeather->AddFolder(pRain, 1, 1), 1);
    pRain->SetIndex(1);
    ASSERT_EQ(Manager::fnUpdateFolder(ToHandle(pRain), "Rain", 0, 0, 0), 1);
    Restart();
    EXPECT_EQ(Tree(), "Clips( ) Weather( Rain( Drops ) ) ");
}

TEST_F(Story, AnEmptiedGallery_LeavesNothingBehind) {
    MakeFolder("Clips", "Rain");
    CQItem* const pDrops = NewItem("Drops");
    qfc::test::GiveBlackBox(*pDrops, 500);
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips\\Rain", "Clips"}, pDrops), 1);
    AddItem("Sunrise");
    CQGallery* const pMedia = AsGallery(m_hMedia);
    while (!pMedia->GetFolderList()->IsEmpty()) {
        ASSERT_EQ(Manager::fnDeleteFolder(ToHandle(pMedia->GetFolderList()->GetHead())), 1);
    }
    ASSERT_EQ(Manager::fnDeleteGallery({kMedia}), 1);
    qfc::test::CloseAllGalleries();
    for (const char* table : {"GALLERY_TABLE", "FOLDER_TABLE", "RELATION_TABLE", "ITEM_TABLE", "CACHE_DATA_TABLE"}) {
        EXPECT_EQ(CountRows(table), 0) << table;
    }
}

TEST_F(Story, ALibraryTravels_ThroughAnExportIntoAnotherOne) {
    AddItem("Sunrise");
    AddItem("Sunset");
    const CString strExport((Scratch() / "export.db").c_str());
    ASSERT_EQ(Manager::fnExportDB(strExport), 1);
    for (const char* name : {"Sunrise", "Sunset"}) {
        const GUID guid = m_pClips->GetItemArray()->GetAt(0)->GetUniqueID();
        Manager::fnDeleteItem(ToHandle(m_pClips), {guid}, 0);
        static_cast<void>(name);
    }
    ASSERT_EQ(Tree(), "Clips( ) ");
    AddItem("Noon");

    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(strExport);
    const ULONGLONG hForeign = Manager::fnLoadGallery(kMedia, reinterpret_cast<DBTools*>(hSession));
    ASSERT_NE(hForeign, 0u);
    for (CQItem* const pItem : *AsGallery(hForeign)->GetFolderByName("Clips")->GetItemArray()) {
        EXPECT_EQ(m_pClips->AddItemFromImportLib(pItem), 1);
    }
    EXPECT_EQ(Manager::fnCloseSessionGallery(hForeign), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
    Restart();
    EXPECT_EQ(Tree(), "Clips( Noon Sunrise Sunset ) ");
}

}  // namespace
