#include "items/CQGallery.h"

#include "folders/GalleryFile.h"
#include "items/CQGalleryDoc.h"
#include "items/GalleryDocument.h"
#include "items/GalleryUpdate.h"
#include "items/ItemTypes.h"
#include "tests/items/ItemBuilders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace qfc::test;

// A gallery whose sub-folder list exists and is empty.
class GalleryWithEmptyList : public CQGallery {
public:
    GalleryWithEmptyList() {
        CQFolder* const pFolder = AddSub(*this, "gone");
        pFolder->DetachParent(0);
        delete pFolder;
    }
};

TEST(CQGallery, NewGallery_IsAnEmptyRoot) {
    CQGallery gallery;
    EXPECT_TRUE(gallery.GetFolderName().IsEmpty());
    EXPECT_EQ(gallery.GetFolderList(), nullptr);
    EXPECT_TRUE(gallery.GetActiveFolderPath().IsEmpty());
    EXPECT_EQ(gallery.GetRoot(), &gallery);
    EXPECT_EQ(gallery.GetDBId(), -1);
}

TEST(CQGallery, NamedGallery_TakesTheMasksInTheFoldersOrder) {
    CQGallery gallery("Media", 5, 6, 7);
    EXPECT_EQ(gallery.GetFolderName(), "Media");
    EXPECT_EQ(gallery.GetTrusty(), 5u);
    EXPECT_EQ(gallery.GetAdopt(), 6u);
    EXPECT_EQ(gallery.GetExtra(), 7u);
}

TEST(CQGallery, RuntimeClass_MakesGalleriesThatAreFolders) {
    const std::unique_ptr<CObject> pMade(CQGallery::CreateObject());
    EXPECT_NE(DYNAMIC_DOWNCAST(CQGallery, pMade.get()), nullptr);
    EXPECT_NE(DYNAMIC_DOWNCAST(CQFolder, pMade.get()), nullptr);
    EXPECT_STREQ(CQGallery::GetThisClass()->m_lpszClassName, "CQGallery");
}

TEST(CQGallery, FunctionsThatDoNothing_AnswerOne) {
    CQGallery gallery;
    CQFolder folder;
    EXPECT_EQ(gallery.AddToCurrentFolder(&folder), 1);
    EXPECT_EQ(gallery.GetFolderList(), nullptr);
    EXPECT_EQ(CQGallery::LetGallerySleep(1), 1);
    EXPECT_EQ(CQGallery::WakeUpGallery(1), 1);
}

TEST(CQGallery_CurrentFolder, WithoutAList_ThereIsNone) {
    CQGallery gallery;
    EXPECT_EQ(gallery.GetCurrentFolder(), nullptr);
}

TEST(CQGallery_CurrentFolder, WithAnEmptyList_TheGalleryIsItsOwn) {
    GalleryWithEmptyList gallery;
    ASSERT_NE(gallery.GetFolderList(), nullptr);
    EXPECT_EQ(gallery.GetCurrentFolder(), &gallery);
}

TEST(CQGallery_CurrentFolder, NothingChosen_TheFirstSubFolderIs) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    AddSub(gallery, "second");
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST(CQGallery_CurrentFolder, ChosenFolder_StaysWhileItIsInTheTree) {
    CQGallery gallery;
    AddSub(gallery, "first");
    CQFolder* const pDeep = AddSub(*AddSub(gallery, "second"), "deep");
    EXPECT_EQ(gallery.SetCurrentFolder(pDeep, 0), 1);
    EXPECT_EQ(gallery.GetCurrentFolder(), pDeep);
}

TEST(CQGallery_CurrentFolder, DestroyedFolder_IsReplacedByTheFirst) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    CQFolder* const pSecond = AddSub(gallery, "second");
    gallery.SetCurrentFolder(pSecond, 0);
    pSecond->DetachParent(0);
    delete pSecond;
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST(CQGallery_CurrentFolder, DestroyedFolder_IsNotFlushed) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    CQFolder* const pSecond = AddSub(gallery, "second");
    gallery.SetCurrentFolder(pSecond, 0);
    pSecond->DetachParent(0);
    delete pSecond;
    EXPECT_EQ(gallery.SetCurrentFolder(pFirst, 1), 1);
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST(CQGallery_CurrentFolder, FolderOfAnotherTree_IsNotKept) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    CQFolder other;
    gallery.SetCurrentFolder(&other, 0);
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST(CQGallery_CurrentFolder, SetToNull_TheFirstIsTakenAgain) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    gallery.SetCurrentFolder(AddSub(gallery, "second"), 0);
    gallery.SetCurrentFolderNull();
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST(CQGallery_CurrentFolder, Setting_RebuildsTheActivePath) {
    CQGallery gallery;
    CQFolder* const pInner = AddSub(*AddSub(gallery, "A"), "B");
    gallery.SetCurrentFolder(pInner, 0);
    EXPECT_EQ(gallery.GetActiveFolderPath(), "\\A\\B");
}

TEST(CQGallery_CurrentFolder, ActivePathWithoutACurrentFolder_IsEmpty) {
    CQGallery gallery;
    EXPECT_EQ(gallery.GenerateActiveFolderPath(), 0);
    EXPECT_TRUE(gallery.GetActiveFolderPath().IsEmpty());
}

TEST(CQGallery_CurrentFolder, ActivePathOfTheGalleryItself_IsEmptyAndCounts) {
    GalleryWithEmptyList gallery;
    EXPECT_EQ(gallery.GenerateActiveFolderPath(), 1);
    EXPECT_TRUE(gallery.GetActiveFolderPath().IsEmpty());
}

TEST(CQGallery_CurrentFolder, SetByPath_FollowsTheComponents) {
    CQGallery gallery;
    CQFolder* const pOuter = AddSub(gallery, "A");
    CQFolder* const pInner = AddSub(*pOuter, "B");
    EXPECT_EQ(gallery.SetCurrentFolderByPath("\\A\\\\B\\"), 1);
    EXPECT_EQ(gallery.GetCurrentFolder(), pInner);
    EXPECT_EQ(gallery.SetCurrentFolderByPath("A"), 1);
    EXPECT_EQ(gallery.GetCurrentFolder(), pOuter);
}

TEST(CQGallery_CurrentFolder, SetByPath_LeavesTheActivePathAlone) {
    CQGallery gallery;
    AddSub(*AddSub(gallery, "A"), "B");
    gallery.GenerateActiveFolderPath();
    gallery.SetCurrentFolderByPath("A\\B");
    EXPECT_EQ(gallery.GetActiveFolderPath(), "\\A");
}

TEST(CQGallery_CurrentFolder, PathThatNamesNoFolder_KeepsTheCurrentOne) {
    CQGallery gallery;
    AddSub(gallery, "A");
    CQFolder* const pSecond = AddSub(gallery, "B");
    gallery.SetCurrentFolder(pSecond, 0);
    for (const char* pszPath : {"C", "A\\C", "b", "", "\\"}) {
        EXPECT_EQ(gallery.SetCurrentFolderByPath(pszPath), 0) << pszPath;
        EXPECT_EQ(gallery.GetCurrentFolder(), pSecond) << pszPath;
    }
    EXPECT_EQ(gallery.SetCurrentFolderByPath(nullptr), 0);
}

TEST(CQGallery_Tree, FolderForItems_IsTheFirstTrustedWithBothBits) {
    CQGallery gallery;
    AddSub(gallery, "no", 64);
    CQFolder* const pBoth = AddSub(gallery, "both", 2 | 64);
    AddSub(gallery, "later", 2 | 64);
    EXPECT_EQ(gallery.GetFirstCanAddItemFolder(), pBoth);
}

TEST(CQGallery_Tree, FolderForItemsWithoutTheSecondBit_IsItsFirstChildWithIt) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first", 2);
    AddSub(gallery, "both", 2 | 64);
    AddSub(*pFirst, "no", 2);
    CQFolder* const pChild = AddSub(*pFirst, "yes", 64 | 1);
    AddSub(*pFirst, "later", 64);
    EXPECT_EQ(gallery.GetFirstCanAddItemFolder(), pChild);
}

TEST(CQGallery_Tree, NoFolderForItems_IsNull) {
    CQGallery empty;
    EXPECT_EQ(empty.GetFirstCanAddItemFolder(), nullptr);
    CQGallery untrusted;
    AddSub(untrusted, "a", 64);
    EXPECT_EQ(untrusted.GetFirstCanAddItemFolder(), nullptr);
    CQGallery childless;
    AddSub(childless, "a", 2);
    AddSub(childless, "b", 2 | 64);
    EXPECT_EQ(childless.GetFirstCanAddItemFolder(), nullptr);
}

TEST(CQGallery_Tree, LeafCount_CountsFoldersWithoutSubFolders) {
    CQGallery gallery;
    CQFolder* const pA = AddSub(gallery, "A");
    AddSub(*pA, "A1");
    AddSub(*AddSub(*pA, "A2"), "A2x");
    AddSub(gallery, "B");
    EXPECT_EQ(gallery.GetFinalFolderCount(), 3);
}

TEST(CQGallery_Tree, LeafCountWithoutSubFolders_IsZero) {
    CQGallery gallery;
    EXPECT_EQ(gallery.GetFinalFolderCount(), 0);
    GalleryWithEmptyList emptied;
    EXPECT_EQ(emptied.GetFinalFolderCount(), 0);
}

// --- Folders with files of their own -------------------------------------------------------------------------------

class FolderWithFile : public CQFolder {
public:
    FolderWithFile(const char* pszPath, int& nDestroyed) : m_nDestroyed(nDestroyed) { m_strFilePath = pszPath; }
    ~FolderWithFile() override {
        ++m_nDestroyed;
        m_strFilePath.Empty();  // Nobody is to write the file of a test.
    }

private:
    int& m_nDestroyed;
};

class GalleryWithFile : public CQGallery {
public:
    explicit GalleryWithFile(const char* pszPath) { m_strFilePath = pszPath; }
    ~GalleryWithFile() override { m_strFilePath.Empty(); }
};

// Notes what it is asked.
class RecordingFile : public qfc::GalleryFile {
public:
    int OpenFolderStorage(CQFolder&) override { return 1; }
    int CloseFolderStorage(CQFolder&) override { return 1; }
    int DeleteFolderStorage(CQFolder&) override { return 1; }
    int FlushFolder(CQFolder& folder) override {
        flushed.push_back(&folder);
        return 1;
    }
    int SaveTreeAndClose(CQFolder& fileRoot) override {
        saved.push_back(&fileRoot);
        return nSaveResult;
    }
    int DeleteItemStreams(CQFolder&, CQItem&) override { return 1; }
    int LoadBlackBox(CQItem& item) override {
        GiveBlackBox(item, Pattern(8));
        GiveCache(item, Dib24(1, 1));
        return 1;
    }
    int LoadFilm(CQItem& item) override {
        GiveFilm(item, Pattern(40), 10);
        return 1;
    }

    std::vector<CQFolder*> flushed;
    std::vector<CQFolder*> saved;
    int nSaveResult = 1;
};

RecordingFile* g_pFile = nullptr;

class CQGallery_File : public testing::Test {
protected:
    CQGallery_File() {
        g_pFile = &m_file;
        qfc::SetGalleryFileSource([](const CQFolder&) -> qfc::GalleryFile* { return g_pFile; });
    }
    ~CQGallery_File() override {
        qfc::SetGalleryFileSource(nullptr);
        g_pFile = nullptr;
    }
    // After the galleries of a test are gone again.
    RecordingFile m_file;
    int m_nDestroyed = 0;
};

TEST_F(CQGallery_File, FileInUse_IsThatOfTheGalleryOrOfADirectSubFolder) {
    GalleryWithFile gallery("C:\\lib.gal");
    gallery.AddFolder(new FolderWithFile("C:\\linked.gal", m_nDestroyed), 0, 1);
    CQFolder* const pPlain = AddSub(gallery, "plain");
    pPlain->AddFolder(new FolderWithFile("C:\\deep.gal", m_nDestroyed), 0, 1);
    EXPECT_EQ(gallery.IsFileInUse("C:\\lib.gal"), 1);
    EXPECT_EQ(gallery.IsFileInUse("C:\\linked.gal"), 1);
    EXPECT_EQ(gallery.IsFileInUse("C:\\LINKED.gal"), 0);
    EXPECT_EQ(gallery.IsFileInUse("C:\\deep.gal"), 0);
    EXPECT_EQ(gallery.IsFileInUse("C:\\other.gal"), 0);
}

TEST_F(CQGallery_File, UnlinkAllWithoutLinkedFolders_ChangesNothing) {
    CQGallery gallery;
    EXPECT_EQ(gallery.UnlinkAll(), 1);
    CQFolder* const pFirst = AddSub(gallery, "first");
    CQFolder* const pSecond = AddSub(gallery, "second");
    gallery.SetCurrentFolder(pSecond, 0);
    EXPECT_EQ(gallery.UnlinkAll(), 1);
    EXPECT_EQ(gallery.GetFolderList()->GetCount(), 2);
    EXPECT_EQ(gallery.GetFolderList()->GetHead(), pFirst);
    EXPECT_EQ(gallery.GetCurrentFolder(), pSecond);
    EXPECT_TRUE(m_file.saved.empty());
}

TEST_F(CQGallery_File, UnlinkAll_DestroysTheLinkedFoldersAndKeepsTheOthers) {
    CQGallery gallery;
    gallery.AddFolder(new FolderWithFile("a.gal", m_nDestroyed), 0, 1);
    CQFolder* const pPlain = AddSub(gallery, "plain");
    gallery.AddFolder(new FolderWithFile("b.gal", m_nDestroyed), 0, 1);
    EXPECT_EQ(gallery.UnlinkAll(), 1);
    EXPECT_EQ(m_nDestroyed, 2);
    ASSERT_EQ(gallery.GetFolderList()->GetCount(), 1);
    EXPECT_EQ(gallery.GetFolderList()->GetHead(), pPlain);
}

TEST_F(CQGallery_File, UnlinkAllOfTheCurrentGallery_ClearsBothCurrentFolders) {
    CQGalleryDoc document;
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    CQFolder* const pSecond = AddSub(gallery, "second");
    gallery.AddFolder(new FolderWithFile("a.gal", m_nDestroyed), 0, 1);
    gallery.SetCurrentFolder(pSecond, 0);
    document.ChangeGallery(&gallery);
    document.NoteCurrentFolder(pSecond);
    EXPECT_EQ(gallery.UnlinkAll(), 1);
    EXPECT_EQ(document.GetNotedFolder(), nullptr);
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST_F(CQGallery_File, UnlinkAllOfAnotherGallery_LeavesTheCurrentFolders) {
    CQGalleryDoc document;
    CQGallery gallery;
    AddSub(gallery, "first");
    CQFolder* const pSecond = AddSub(gallery, "second");
    gallery.AddFolder(new FolderWithFile("a.gal", m_nDestroyed), 0, 1);
    gallery.SetCurrentFolder(pSecond, 0);
    document.NoteCurrentFolder(pSecond);
    EXPECT_EQ(gallery.UnlinkAll(), 1);
    EXPECT_EQ(document.GetNotedFolder(), pSecond);
    EXPECT_EQ(gallery.GetCurrentFolder(), pSecond);
}

TEST_F(CQGallery_File, UnlinkAll_WritesTheGalleryFileAndPassesItsResultOn) {
    GalleryWithFile gallery("lib.gal");
    for (const int nResult : {1, 0}) {
        gallery.AddFolder(new FolderWithFile("a.gal", m_nDestroyed), 0, 1);
        m_file.nSaveResult = nResult;
        m_file.saved.clear();
        EXPECT_EQ(gallery.UnlinkAll(), nResult);
        EXPECT_THAT(m_file.saved, testing::ElementsAre(&gallery));
    }
}

TEST_F(CQGallery_File, UpdateOfAGalleryWithoutFile_IsDoneAtOnce) {
    CQGallery gallery;
    AddSub(gallery, "a");
    EXPECT_EQ(qfc::UpdateGalleryFile(&gallery, nullptr), 1);
    EXPECT_TRUE(m_file.flushed.empty());
    EXPECT_TRUE(m_file.saved.empty());
}

TEST_F(CQGallery_File, UpdateOfTheWholeTree_FlushesEveryFolderInWalkOrder) {
    GalleryWithFile gallery("lib.gal");
    CQFolder* const pA = AddSub(gallery, "A");
    CQFolder* const pInner = AddSub(*pA, "inner");
    CQFolder* const pB = AddSub(gallery, "B");
    EXPECT_EQ(qfc::UpdateGalleryFile(&gallery, nullptr), 1);
    EXPECT_THAT(m_file.flushed, testing::ElementsAre(pA, pInner, pB));
    EXPECT_THAT(m_file.saved, testing::ElementsAre(&gallery));
}

TEST_F(CQGallery_File, UpdateOfOneFolder_FlushesOnlyIt) {
    GalleryWithFile gallery("lib.gal");
    AddSub(gallery, "A");
    CQFolder* const pB = AddSub(gallery, "B");
    EXPECT_EQ(qfc::UpdateGalleryFile(&gallery, pB), 1);
    EXPECT_THAT(m_file.flushed, testing::ElementsAre(pB));
}

TEST_F(CQGallery_File, UpdateOfNoGallery_Fails) { EXPECT_EQ(qfc::UpdateGalleryFile(nullptr, nullptr), 0); }

TEST_F(CQGallery_File, LeavingAFolderWithFlush_WritesItBack) {
    GalleryWithFile gallery("lib.gal");
    CQFolder* const pA = AddSub(gallery, "A");
    CQFolder* const pB = AddSub(gallery, "B");
    gallery.SetCurrentFolder(pA, 1);
    EXPECT_TRUE(m_file.flushed.empty());
    gallery.SetCurrentFolder(pB, 0);
    EXPECT_TRUE(m_file.flushed.empty());
    gallery.SetCurrentFolder(pA, 1);
    EXPECT_THAT(m_file.flushed, testing::ElementsAre(pB));
}

TEST_F(CQGallery_File, ItemsOffTheMap_AreLoadedFromTheFile) {
    GalleryWithFile gallery("lib.gal");
    CQFolder* const pFolder = AddSub(gallery, "A");
    auto* const pItem = new CQItem;
    pItem->GetAttrib() = 1;
    pFolder->AddItem(pItem, 1);
    EXPECT_EQ(pItem->TryLoadBB(), 1);
    EXPECT_EQ(InMemory(*pItem, qfc::kBlackBox), Pattern(8));
    EXPECT_EQ(pItem->GetTotalFilmFrame(), 4u);
}

}  // namespace
