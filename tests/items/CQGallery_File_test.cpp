#include "folders/GalleryFile.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/GalleryUpdate.h"
#include "items/ItemTypes.h"
#include "tests/items/ItemBuilders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace qfc::test;

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

// Writes down what is so when it is destroyed.
class WitnessFolder : public CQFolder {
public:
    WitnessFolder(std::vector<std::string>& notes, CQGallery& gallery, CQGalleryDoc& document)
        : m_notes(notes), m_gallery(gallery), m_document(document) {
        m_strFilePath = "linked.gal";
    }
    ~WitnessFolder() override {
        m_strFilePath.Empty();
        const bool bListed = m_gallery.GetFolderList()->Find(static_cast<CObject*>(this)) != nullptr;
        m_notes.emplace_back(m_document.GetNotedFolder() != nullptr ? "folder still current"
                             : bListed                              ? "still listed"
                                                                    : "destroyed");
        m_notes.emplace_back(g_pFile->saved.empty() ? "not written yet" : "written");
    }

private:
    std::vector<std::string>& m_notes;
    CQGallery& m_gallery;
    CQGalleryDoc& m_document;
};

TEST_F(CQGallery_File, UnlinkAll_ClearsThenUnlistsAndDestroysThenWrites) {
    CQGalleryDoc document;
    GalleryWithFile gallery("lib.gal");
    std::vector<std::string> notes;
    gallery.AddFolder(new WitnessFolder(notes, gallery, document), 0, 1);
    gallery.AddFolder(new WitnessFolder(notes, gallery, document), 0, 1);
    CQFolder* const pKept = AddSub(gallery, "kept");
    gallery.SetCurrentFolder(pKept, 0);
    document.ChangeGallery(&gallery);
    document.NoteCurrentFolder(pKept);
    EXPECT_EQ(gallery.UnlinkAll(), 1);
    EXPECT_THAT(notes, testing::ElementsAre("destroyed", "not written yet", "destroyed", "not written yet"));
    EXPECT_THAT(m_file.flushed, testing::ElementsAre(pKept));
    EXPECT_THAT(m_file.saved, testing::ElementsAre(&gallery));
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
