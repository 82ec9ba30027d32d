// Links the shared library alone and includes the umbrella alone, as a host does.
#include "api/QFCLib.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

class HostView : public testing::Test {
protected:
    void SetUp() override {
        // One library per process: further tests of a process that runs several find it emptied.
        static const qfc::test::TempFolder folder;
        if (!qfc::SetDataFolder(folder.Path().c_str())) QFCLibraryManager::fnClearDBContent();
        ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
        m_hMedia = QFCLibraryManager::fnCreateGallery(1, "Media", 0, 0, 0);
        ASSERT_NE(m_hMedia, 0u);
        m_pClips = QFCLibraryManager::fnCreateFolder(m_hMedia, "", "Clips", 0, 0, 0, 0);
        ASSERT_NE(m_pClips, nullptr);
    }
    void TearDown() override {
        GetGalleryDoc()->CloseGallery(qfc::AsGallery(m_hMedia));
        EXPECT_EQ(QFCLibraryManager::fnStopService(), 1);
        RegisterGlobalProc(nullptr);
    }

    ULONGLONG m_hMedia = 0;
    CQFolder* m_pClips = nullptr;
};

TEST_F(HostView, AddsAnItemWithPayloadsAndReadsItBack) {
    auto* const pItem = new CQItem("Sunrise");
    constexpr unsigned kSize = 1000;
    pItem->ChangeBlackBox(qfc::AllocPlainBlock(kSize), kSize);
    ASSERT_EQ(QFCLibraryManager::fnAddItem(m_hMedia, {"Clips"}, pItem), 1);
    ASSERT_EQ(m_pClips->HasItem(pItem->GetUniqueID(), 0), 1);

    CQItem fresh;
    fresh.SetUniqueID(pItem->GetUniqueID());
    fresh.fnSetDbTools(m_pClips->GetDBTools());
    ASSERT_EQ(fresh.fnLoadItemFromDb(), 1);
    EXPECT_EQ(fresh.GetItemName(), "Sunrise");
    EXPECT_EQ(fresh.LoadCacheDataFromDb(1), 1);
    EXPECT_EQ(fresh.GetBlackBoxSize(), kSize);
}

TEST_F(HostView, SeesTheRunTimeClassesOfTheLibrary) {
    CObject* const pRoot = m_pClips->GetRoot();
    EXPECT_TRUE(pRoot->IsKindOf(RUNTIME_CLASS(CQGallery)));
    EXPECT_TRUE(pRoot->IsKindOf(RUNTIME_CLASS(CQFolder)));
    EXPECT_EQ(DYNAMIC_DOWNCAST(CQGallery, static_cast<CObject*>(m_pClips)), nullptr);
    EXPECT_NE(dynamic_cast<CQGallery*>(pRoot), nullptr);
}

TEST_F(HostView, CatchesTheExceptionsOfTheLibrary) {
    try {
        CString("abc").GetAt(17);
        FAIL() << "an index outside";
    } catch (CInvalidArgException* pException) {
        pException->Delete();
    }
    CppSQLite3DB database;
    EXPECT_THROW(database.execQuery("select 1"), CppSQLite3Exception);
}

std::vector<DWORD> g_messages;

int NoteMessage(DWORD dwMessage, ULONGLONG, std::int64_t, void*) {
    g_messages.push_back(dwMessage);
    return 0;
}

TEST_F(HostView, TheRegisteredGlobalProcedureIsAskedByTheFolders) {
    for (const char* name : {"b", "a"}) QFCLibraryManager::fnAddItem(m_hMedia, {"Clips"}, new CQItem(name));
    g_messages.clear();
    RegisterGlobalProc(&NoteMessage);
    int keys[] = {3};
    EXPECT_EQ(m_pClips->Sorting(keys, 1, 0, 1), 1);
    ASSERT_FALSE(g_messages.empty());
    EXPECT_EQ(g_messages.front(), 512u);
    g_messages.clear();
    RegisterGlobalProc(nullptr);
    m_pClips->Sorting(keys, 1, 0, 1);
    EXPECT_TRUE(g_messages.empty());
}

TEST_F(HostView, ThereIsOneGalleryDocument) {
    EXPECT_EQ(CreateGalleryDoc(), 1);
    CQGalleryDoc* const pDocument = GetGalleryDoc();
    ASSERT_NE(pDocument, nullptr);
    EXPECT_EQ(CreateGalleryDoc(), 1);
    EXPECT_EQ(GetGalleryDoc(), pDocument);
}

TEST_F(HostView, TheFolderPathNamesEveryFolderBelowTheGallery) {
    CQFolder* const pRain = QFCLibraryManager::fnCreateFolder(m_hMedia, "Clips", "Rain", 0, 0, 0, 0);
    EXPECT_EQ(GenerateFolderPath2(nullptr), "");
    EXPECT_EQ(GenerateFolderPath2(qfc::AsGallery(m_hMedia)), "");
    EXPECT_EQ(GenerateFolderPath2(m_pClips), "\\Clips");
    EXPECT_EQ(GenerateFolderPath2(pRain), "\\Clips\\Rain");
}

TEST_F(HostView, MayLockAMutexOfItsOwn) {
    const HANDLE hMutex = CreateMutexA(nullptr, 0, nullptr);
    {
        const MutexLocker lock(hMutex);
        EXPECT_EQ(ReleaseMutex(hMutex), 1);
    }
    EXPECT_EQ(ReleaseMutex(hMutex), 0);
    CloseHandle(hMutex);
}

TEST_F(HostView, ChecksAndCopiesLibraryFiles) {
    const CString strCopy = QFCLibraryManager::GetDatabasePath() + ".copy";
    ASSERT_EQ(fnSnapshotLibrary(QFCLibraryManager::GetDatabasePath(), strCopy), 1);
    std::vector<qfc::LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(strCopy, findings), 1);
    EXPECT_TRUE(findings.empty());
}

}  // namespace
