#include "items/Handles.h"
#include "service/operations/CreateFolder.h"
#include "service/operations/CreateGallery.h"
#include "service/operations/DeleteFolder.h"
#include "service/operations/DeleteGallery.h"
#include "service/operations/LoadGallery.h"
#include "service/operations/UpdateFolder.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"
#include "tests/support/ServicePeer.h"

#include <gtest/gtest.h>

namespace {

using Manager = QFCLibraryManager;
using qfc::AsGallery;
using qfc::ServicePeer;
using qfc::ToHandle;

class EntriesGalleries : public qfc::test::LibraryFixture {
protected:
    static bool IsInDocument(ULONGLONG hGallery) {
        for (CQGallery* const pGallery : GetGalleryDoc()->GetGalleryList()) {
            if (ToHandle(pGallery) == hGallery) return true;
        }
        return false;
    }
    static std::string Cell(const std::string& sql) { return qfc::test::RawDb(DatabaseFile()).Cell(sql); }
    // From now on the table takes no new or changed row.
    static void RefuseWrites(const std::string& table) { qfc::test::RefuseWrites(DatabaseFile(), table); }
};

// --- Galleries ---------------------------------------------------------------------------------------------------

TEST_F(EntriesGalleries, CreateGallery_StoresItsRootAndJoinsTheDocument) {
    const ULONGLONG hGallery = Manager::fnCreateGallery(5, "Titles", 11, 12, 13);
    ASSERT_NE(hGallery, 0u);
    EXPECT_TRUE(IsInDocument(hGallery));
    CQGallery* const pGallery = AsGallery(hGallery);
    EXPECT_EQ(pGallery->GetFolderID(), 5u);
    EXPECT_EQ(pGallery->GetFolderName(), "Titles");
    EXPECT_EQ(pGallery->GetAdopt(), 11u);
    EXPECT_EQ(pGallery->GetTrusty(), 12u);
    EXPECT_EQ(pGallery->GetExtra(), 13u);
    EXPECT_EQ(Cell("select GALLERY_ID from GALLERY_TABLE where GALLERY_FOLDER_ID = 5"),
              std::to_string(pGallery->GetDBId()));
    EXPECT_EQ(CountRows("FOLDER_TABLE where PREDEFINED_ID = 5 and FOLDER_NAME = 'Titles' and ADOPT_TYPE = 11 and "
                        "TRUSTY_TYPE = 12 and TYPE_EXTRA = 13 and PARENT_ID = -1"),
              1);
}

TEST_F(EntriesGalleries, CreateGallery_ThatCannotBeStored_GivesNothing) {
    RefuseWrites("GALLERY_TABLE");
    const auto nOpen = GetGalleryDoc()->GetGalleryList().GetCount();
    EXPECT_EQ(Manager::fnCreateGallery(5, "Titles", 0, 0, 0), 0u);
    EXPECT_EQ(GetGalleryDoc()->GetGalleryList().GetCount(), nOpen);
    // Its root is a row of its own, written before.
    EXPECT_EQ(CountRows("FOLDER_TABLE where FOLDER_NAME = 'Titles'"), 1);
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 1);
}

TEST_F(EntriesGalleries, CreateGallery_WhoseRootCannotBeStored_GivesAndStoresNothing) {
    RefuseWrites("FOLDER_TABLE");
    const auto nOpen = GetGalleryDoc()->GetGalleryList().GetCount();
    EXPECT_EQ(Manager::fnCreateGallery(5, "Titles", 0, 0, 0), 0u);
    EXPECT_EQ(GetGalleryDoc()->GetGalleryList().GetCount(), nOpen);
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 1);
}

TEST_F(EntriesGalleries, CreateAndLoadGallery_WhileStoppedWithoutDatabase_FailAtOnceAndQueueNothing) {
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    EXPECT_EQ(Manager::fnCreateGallery(5, "Titles", 0, 0, 0), 0u);
    EXPECT_EQ(Manager::fnLoadGallery(kMedia), 0u);
    EXPECT_EQ(Manager::fnUpdateFolder(1, "Name", 0, 0, 0), 0);
    EXPECT_EQ(ServicePeer::IsSyncEmpty(), 1);
}

TEST_F(EntriesGalleries, LoadGallery_BringsTheStoredTreeAndJoinsTheDocument) {
    MakeFolder("Clips", "Rain");
    MakeFolder("", "Sounds");
    Restart();
    EXPECT_TRUE(IsInDocument(m_hMedia));
    EXPECT_EQ(AsGallery(m_hMedia)->GetFolderName(), "Media");
    ASSERT_NE(Folder("Clips\\Rain"), nullptr);
    EXPECT_NE(Folder("Sounds"), nullptr);
    EXPECT_EQ(Folder("Clips\\Rain")->GetRoot(), AsGallery(m_hMedia));
}

TEST_F(EntriesGalleries, LoadGallery_OfAnUnknownId_GivesNothing) {
    const auto nOpen = GetGalleryDoc()->GetGalleryList().GetCount();
    EXPECT_EQ(Manager::fnLoadGallery(77), 0u);
    EXPECT_EQ(Manager::fnLoadGallery(0), 0u);
    EXPECT_EQ(GetGalleryDoc()->GetGalleryList().GetCount(), nOpen);
}

TEST_F(EntriesGalleries, LoadGallery_Twice_MakesTwoTrees) {
    const ULONGLONG hSecond = Manager::fnLoadGallery(kMedia);
    ASSERT_NE(hSecond, 0u);
    EXPECT_NE(hSecond, m_hMedia);
    EXPECT_NE(AsGallery(hSecond)->GetFolderByName("Clips"), m_pClips);
}

TEST_F(EntriesGalleries, DeleteGallery_RemovesTheStoredTreeAndLeavesTheItems) {
    AddItem("Sunrise");
    MakeFolder("Clips", "Rain");
    qfc::test::CloseAllGalleries();
    EXPECT_EQ(Manager::fnDeleteGallery({kMedia}), 1);
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 0);
    EXPECT_EQ(CountRows("FOLDER_TABLE"), 0);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 0);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(Manager::fnLoadGallery(kMedia), 0u);
}

TEST_F(EntriesGalleries, DeleteGallery_OfAnUnknownId_RemovesNothing) {
    Manager::fnCreateGallery(5, "Titles", 0, 0, 0);
    EXPECT_EQ(Manager::fnDeleteGallery({77}), 0);
    EXPECT_EQ(Manager::fnDeleteGallery({kMedia, 77}), 0);
    EXPECT_EQ(Manager::fnDeleteGallery({77, 5}), 0);
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 2);
    EXPECT_EQ(CountRows("FOLDER_TABLE"), 3);
}

TEST_F(EntriesGalleries, DeleteGallery_TakesSeveral) {
    Manager::fnCreateGallery(5, "Titles", 0, 0, 0);
    Manager::fnCreateGallery(6, "Filters", 0, 0, 0);
    qfc::test::CloseAllGalleries();
    EXPECT_EQ(Manager::fnDeleteGallery({kMedia, 6}), 1);
    EXPECT_EQ(Cell("select group_concat(GALLERY_FOLDER_ID) from GALLERY_TABLE"), "'5'");
}

// --- Folders -----------------------------------------------------------------------------------------------------

TEST_F(EntriesGalleries, CreateFolder_TakesTheAttributesAsAdoptTrustyExtra) {
    CQFolder* const pFolder = Manager::fnCreateFolder(m_hMedia, "Clips", "Rain", 1, 2, 3, 4);
    ASSERT_NE(pFolder, nullptr);
    EXPECT_EQ(pFolder, Folder("Clips\\Rain"));
    EXPECT_EQ(pFolder->GetParentFolder(), m_pClips);
    EXPECT_EQ(pFolder->GetAdopt(), 1u);
    EXPECT_EQ(pFolder->GetTrusty(), 2u);
    EXPECT_EQ(pFolder->GetExtra(), 3u);
    EXPECT_EQ(pFolder->GetFolderID(), 4u);
    EXPECT_EQ(pFolder->GetDBTools(), m_pClips->GetDBTools());
    EXPECT_EQ(CountRows("FOLDER_TABLE where ID = " + std::to_string(pFolder->GetDBId()) +
                        " and FOLDER_NAME = 'Rain' and ADOPT_TYPE = 1 and TRUSTY_TYPE = 2 and TYPE_EXTRA = 3 and "
                        "PREDEFINED_ID = 4 and PARENT_ID = " +
                        std::to_string(m_pClips->GetDBId())),
              1);
}

TEST_F(EntriesGalleries, CreateFolder_GetsTheIndexBehindItsSiblings) {
    EXPECT_EQ(m_pClips->GetIndex(), 1);  // The first of a parent without a list.
    MakeFolder("", "B");
    MakeFolder("", "C");
    CQFolder* const pFourth = MakeFolder("", "D");
    ASSERT_NE(pFourth, nullptr);
    EXPECT_EQ(pFourth->GetIndex(), 4);
    EXPECT_EQ(AsGallery(m_hMedia)->GetFolderList()->GetTail(), pFourth);
    EXPECT_EQ(CountRows("FOLDER_TABLE where FOLDER_NAME = 'D' and ORDER_INDEX = 4"), 1);
}

TEST_F(EntriesGalleries, CreateFolder_WithATakenName_FailsWithoutTouchingTheDatabase) {
    const std::string before = qfc::test::DumpOf(DatabaseFile());
    EXPECT_EQ(MakeFolder("", "Clips"), nullptr);
    EXPECT_EQ(qfc::test::DumpOf(DatabaseFile()), before);
    EXPECT_EQ(AsGallery(m_hMedia)->GetFolderList()->GetCount(), 1);
    EXPECT_NE(MakeFolder("", "clips"), nullptr);  // Another name.
}

TEST_F(EntriesGalleries, CreateFolder_WithoutGalleryNameOrParent_Fails) {
    EXPECT_EQ(Manager::fnCreateFolder(0, "", "Rain", 0, 0, 0, 0), nullptr);
    EXPECT_EQ(MakeFolder("", ""), nullptr);
    EXPECT_EQ(MakeFolder("Nowhere", "Rain"), nullptr);
    EXPECT_EQ(MakeFolder("\\", "Rain"), nullptr);  // A path without a component names no folder.
    EXPECT_EQ(CountRows("FOLDER_TABLE"), 2);
}

TEST_F(EntriesGalleries, CreateFolder_ThatCannotBeStored_LeavesTheTreeAsItWas) {
    RefuseWrites("FOLDER_TABLE");
    EXPECT_EQ(MakeFolder("", "Rain"), nullptr);
    EXPECT_EQ(MakeFolder("Clips", "Rain"), nullptr);
    EXPECT_EQ(AsGallery(m_hMedia)->GetFolderList()->GetCount(), 1);
    EXPECT_EQ(Folder("Clips\\Rain"), nullptr);
    EXPECT_EQ(CountRows("FOLDER_TABLE"), 2);
}

TEST_F(EntriesGalleries, CreateFolder_WithAnIndexOfItsOwn_KeepsIt) {
    LibraryOperation_CreateFolder operation(m_hMedia, "", "Rain", 0, 0, 0, 0, 9);
    EXPECT_EQ(operation.execute(), 1);
    EXPECT_EQ(operation.Created()->GetIndex(), 9);
}

TEST_F(EntriesGalleries, UpdateFolder_StoresTheNewValues) {
    const int nRow = m_pClips->GetDBId();
    EXPECT_EQ(Manager::fnUpdateFolder(ToHandle(m_pClips), "Footage", 21, 22, 23), 1);
    EXPECT_EQ(CountRows("FOLDER_TABLE where ID = " + std::to_string(nRow) +
                        " and FOLDER_NAME = 'Footage' and ADOPT_TYPE = 21 and TRUSTY_TYPE = 22 and TYPE_EXTRA = 23"),
              1);
    Restart();
    EXPECT_EQ(m_pClips, nullptr);
    ASSERT_NE(Folder("Footage"), nullptr);
    EXPECT_EQ(Folder("Footage")->GetDBId(), nRow);
}

TEST_F(EntriesGalleries, UpdateFolder_ThatCannotBeStored_ReportsIt) {
    RefuseWrites("FOLDER_TABLE");
    EXPECT_EQ(Manager::fnUpdateFolder(ToHandle(m_pClips), "Footage", 0, 0, 0), 0);
    EXPECT_EQ(m_pClips->GetFolderName(), "Footage");
    EXPECT_EQ(CountRows("FOLDER_TABLE where FOLDER_NAME = 'Clips'"), 1);
}

TEST_F(EntriesGalleries, UpdateFolder_WithoutAFolder_Fails) {
    EXPECT_EQ(Manager::fnUpdateFolder(0, "Name", 0, 0, 0), 0);
}

TEST_F(EntriesGalleries, DeleteFolder_TakesWhatIsBelowIt) {
    MakeFolder("Clips", "Rain");
    AddItem("Sunrise");
    AddItem("Drops", {"Clips\\Rain"});
    CQItem* const pShared = AddItem("Both", {"Clips"});
    CQFolder* const pOther = MakeFolder("", "Other");
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Other"}, pShared), 1);

    EXPECT_EQ(Manager::fnDeleteFolder(ToHandle(m_pClips)), 1);
    EXPECT_EQ(Folder("Clips"), nullptr);
    EXPECT_EQ(CountRows("FOLDER_TABLE"), 2);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 1);
    EXPECT_EQ(pOther->HasItem(pShared->GetUniqueID(), 0), 1);
}

TEST_F(EntriesGalleries, DeleteFolder_FindsItsFolderByRowAndNotByFolderId) {
    // The folder id of the first is the row number of the second.
    CQFolder* const pSecond = MakeFolder("", "Second");
    m_pClips->SetFolderID(static_cast<DWORD>(pSecond->GetDBId()));
    EXPECT_EQ(Manager::fnDeleteFolder(ToHandle(m_pClips)), 1);
    EXPECT_EQ(Folder("Clips"), nullptr);
    EXPECT_EQ(Folder("Second"), pSecond);
    EXPECT_EQ(CountRows("FOLDER_TABLE where FOLDER_NAME = 'Second'"), 1);
}

TEST_F(EntriesGalleries, DeleteFolder_IsOneAlsoWhenTheDatabaseRefusesIt) {
    MakeFolder("Clips", "Rain");
    const GUID guid = AddItem("Sunrise")->GetUniqueID();
    for (const std::string table : {"FOLDER_TABLE", "RELATION_TABLE"}) {
        qfc::test::RawDb(DatabaseFile())
            .Exec("create trigger REFUSE_DELETION_" + table + " before delete on " + table +
                  " begin select raise(fail, 'refused'); end");
    }
    EXPECT_EQ(Manager::fnDeleteFolder(ToHandle(m_pClips)), 1);
    EXPECT_EQ(Folder("Clips"), nullptr);
    EXPECT_EQ(CountRows("FOLDER_TABLE"), 3);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 1);
    Restart();
    ASSERT_NE(Folder("Clips\\Rain"), nullptr);
    EXPECT_EQ(Folder("Clips")->HasItem(guid, 0), 1);
}

TEST_F(EntriesGalleries, DeleteFolder_WithoutFolderOrParent_Fails) {
    EXPECT_EQ(Manager::fnDeleteFolder(0), 0);
    EXPECT_EQ(Manager::fnDeleteFolder(m_hMedia), 0);
    EXPECT_EQ(CountRows("FOLDER_TABLE"), 2);
}

// --- Operations without a database --------------------------------------------------------------------------------

TEST_F(EntriesGalleries, OperationsWithoutADatabase_FailAndChangeNothing) {
    LibraryOperation_CreateGallery create(5, "Titles", 0, 0, 0, nullptr);
    EXPECT_EQ(create.execute(), 0);
    EXPECT_EQ(create.Created(), 0u);
    LibraryOperation_LoadGallery load(kMedia, nullptr);
    EXPECT_EQ(load.execute(), 0);
    EXPECT_EQ(load.Loaded(), 0u);
    LibraryOperation_DeleteGallery remove({kMedia}, nullptr);
    EXPECT_EQ(remove.execute(), 0);
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 1);
}

}  // namespace
