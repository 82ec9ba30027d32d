#include "items/CQGalleryDoc.h"

#include "items/CQGallery.h"
#include "items/GalleryDocument.h"
#include "tests/items/ItemBuilders.h"
#include "tests/support/TempFolder.h"

#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {

using namespace qfc::test;

class CountedGallery : public CQGallery {
public:
    explicit CountedGallery(int& nDestroyed) : m_nDestroyed(nDestroyed) {}
    ~CountedGallery() override { ++m_nDestroyed; }

private:
    int& m_nDestroyed;
};

TEST(CQGalleryDoc, NewDocument_IsEmptyAndHasNothingCurrent) {
    CQGalleryDoc document;
    EXPECT_TRUE(document.GetGalleryList().IsEmpty());
    EXPECT_EQ(document.GetCurrentGallery(), nullptr);
    EXPECT_EQ(document.GetCurrentFolder(), nullptr);
}

TEST(CQGalleryDoc, RuntimeClass_MakesDocuments) {
    const std::unique_ptr<CObject> pMade(CQGalleryDoc::CreateObject());
    EXPECT_NE(DYNAMIC_DOWNCAST(CQGalleryDoc, pMade.get()), nullptr);
    EXPECT_NE(DYNAMIC_DOWNCAST(CDocument, pMade.get()), nullptr);
}

TEST(CQGalleryDoc, AddedGallery_IsListedButNotCurrent) {
    CQGalleryDoc document;
    auto* const pFirst = new CQGallery;
    auto* const pSecond = new CQGallery;
    EXPECT_EQ(document.AddGallery(pFirst), 1);
    EXPECT_EQ(document.AddGallery(pSecond), 1);
    EXPECT_EQ(document.GetCurrentGallery(), nullptr);
    const std::vector<CQGallery*> listed(document.GetGalleryList().begin(), document.GetGalleryList().end());
    EXPECT_THAT(listed, testing::ElementsAre(pFirst, pSecond));
}

TEST(CQGalleryDoc, ChangedGallery_IsCurrentListedOrNot) {
    CQGalleryDoc document;
    CQGallery gallery;
    CQFolder* const pFolder = AddSub(gallery, "a");
    EXPECT_EQ(document.ChangeGallery(&gallery), 1);
    EXPECT_EQ(document.GetCurrentGallery(), &gallery);
    EXPECT_EQ(document.GetCurrentFolder(), pFolder);
}

TEST(CQGalleryDoc, ClosingAGalleryThatIsNotListed_LeavesItAlone) {
    CQGalleryDoc document;
    int nDestroyed = 0;
    CountedGallery gallery(nDestroyed);
    document.ChangeGallery(&gallery);
    EXPECT_EQ(document.CloseGallery(&gallery), 1);
    EXPECT_EQ(document.CloseGallery(nullptr), 1);
    EXPECT_EQ(nDestroyed, 0);
    EXPECT_EQ(document.GetCurrentGallery(), &gallery);
}

TEST(CQGalleryDoc, ClosedGallery_IsDestroyedWithItsItemsAndUnlisted) {
    CQGalleryDoc document;
    int nDestroyed = 0;
    int nItemsDestroyed = 0;
    auto* const pGallery = new CountedGallery(nDestroyed);
    AddSub(*pGallery, "a")->AddItem(new CountedItem(nItemsDestroyed), 1);
    document.AddGallery(pGallery);
    EXPECT_EQ(document.CloseGallery(pGallery), 1);
    EXPECT_EQ(nDestroyed, 1);
    EXPECT_EQ(nItemsDestroyed, 1);
    EXPECT_TRUE(document.GetGalleryList().IsEmpty());
}

TEST(CQGalleryDoc, GalleryAddedTwice_IsClosedOnceAndUnlistedAltogether) {
    CQGalleryDoc document;
    int nDestroyed = 0;
    auto* const pGallery = new CountedGallery(nDestroyed);
    document.AddGallery(pGallery);
    document.AddGallery(pGallery);
    EXPECT_EQ(document.CloseGallery(pGallery), 1);
    EXPECT_EQ(nDestroyed, 1);
    EXPECT_TRUE(document.GetGalleryList().IsEmpty());
}

TEST(CQGalleryDoc, ClosingTheCurrentGallery_LeavesNoneCurrent) {
    CQGalleryDoc document;
    auto* const pGallery = new CQGallery;
    document.AddGallery(pGallery);
    document.ChangeGallery(pGallery);
    document.NoteCurrentFolder(AddSub(*pGallery, "a"));
    document.CloseGallery(pGallery);
    EXPECT_EQ(document.GetCurrentGallery(), nullptr);
    EXPECT_EQ(document.GetCurrentFolder(), nullptr);
    EXPECT_EQ(document.GetNotedFolder(), nullptr);
}

TEST(CQGalleryDoc, ClosingAnotherGallery_KeepsTheCurrentOne) {
    CQGalleryDoc document;
    auto* const pCurrent = new CQGallery;
    auto* const pOther = new CQGallery;
    document.AddGallery(pCurrent);
    document.AddGallery(pOther);
    document.ChangeGallery(pCurrent);
    document.CloseGallery(pOther);
    EXPECT_EQ(document.GetCurrentGallery(), pCurrent);
}

TEST(CQGalleryDoc, EndingDocument_DestroysItsGalleries) {
    int nDestroyed = 0;
    {
        CQGalleryDoc document;
        document.AddGallery(new CountedGallery(nDestroyed));
        document.AddGallery(new CountedGallery(nDestroyed));
    }
    EXPECT_EQ(nDestroyed, 2);
}

TEST(CQGalleryDoc, EndingDocument_DestroysAGalleryThatWasAddedTwiceOnce) {
    int nDestroyed = 0;
    {
        CQGalleryDoc document;
        auto* const pGallery = new CountedGallery(nDestroyed);
        document.AddGallery(pGallery);
        document.AddGallery(new CountedGallery(nDestroyed));
        document.AddGallery(pGallery);
    }
    EXPECT_EQ(nDestroyed, 2);
}

TEST(CQGalleryDoc, GeneratedPath_IsAFreshEmptyFile) {
    CQGalleryDoc document;
    const CString strFirst = document.GeneratePath();
    const CString strSecond = document.GeneratePath();
    ASSERT_FALSE(strFirst.IsEmpty());
    EXPECT_NE(strFirst, strSecond);
    for (const CString& strPath : {strFirst, strSecond}) {
        struct stat info {};
        EXPECT_EQ(stat(strPath, &info), 0) << strPath.GetString();
        EXPECT_EQ(info.st_size, 0);
        EXPECT_THAT(strPath.GetString(), testing::MatchesRegex(".*GAL[0-9A-Fa-f]+\\.(tmp|TMP)"));
        std::remove(strPath);
    }
}

// Sets a variable of the environment while it lives.
class Environment {
public:
    Environment(const char* pszName, const std::string& value) : m_name(pszName) {
        if (const char* const pszFormer = std::getenv(pszName)) m_former = pszFormer;
        setenv(pszName, value.c_str(), 1);
    }
    ~Environment() {
        if (m_former) {
            setenv(m_name, m_former->c_str(), 1);
        } else {
            unsetenv(m_name);
        }
    }

private:
    const char* m_name;
    std::optional<std::string> m_former;
};

TEST(CQGalleryDoc, GeneratedPathWithoutAPlaceForIt_IsEmpty) {
    CQGalleryDoc document;
    const TempFolder folder;
    for (const std::string& place : {folder / "missing", folder.Write("file", ""), "/" + std::string(300, 'x')}) {
        const Environment environment("TMPDIR", place);
        EXPECT_STREQ(document.GeneratePath(), "") << place;
    }
    EXPECT_EQ(folder.Entries(), std::vector<std::string>{"file"});
}

class NotingView : public CView {
public:
    std::vector<std::pair<LPARAM, CObject*>> hints;

protected:
    void OnUpdate(CView*, LPARAM hint, CObject* object) override { hints.emplace_back(hint, object); }
};

TEST(CQGalleryDoc, UpdateAllViews_ReachesItsViews) {
    CQGalleryDoc document;
    NotingView view;
    CQGallery gallery;
    document.AddView(&view);
    document.UpdateAllViews(nullptr, 0x8000, &gallery);
    EXPECT_THAT(view.hints, testing::ElementsAre(testing::Pair(0x8000, &gallery)));
}

TEST(GalleryDocument, ConstructedDocument_IsTheOneOfTheProcess) {
    EXPECT_EQ(qfc::ExistingGalleryDocument(), nullptr);
    {
        CQGalleryDoc document;
        EXPECT_EQ(qfc::ExistingGalleryDocument(), &document);
        EXPECT_EQ(qfc::GalleryDocument(), &document);
        EXPECT_TRUE(qfc::CreateGalleryDocument());
        EXPECT_EQ(qfc::GalleryDocument(), &document);
    }
    EXPECT_EQ(qfc::ExistingGalleryDocument(), nullptr);
}

TEST(GalleryDocument, FirstCall_MakesTheDocumentAndLaterOnesKeepIt) {
    CQGalleryDoc* const pDocument = qfc::GalleryDocument();
    ASSERT_NE(pDocument, nullptr);
    EXPECT_TRUE(qfc::CreateGalleryDocument());
    EXPECT_EQ(qfc::GalleryDocument(), pDocument);
    delete pDocument;
    EXPECT_EQ(qfc::ExistingGalleryDocument(), nullptr);
}

TEST(GalleryDocument, ThreadsThatAskFirst_GetOneDocument) {
    std::vector<CQGalleryDoc*> seen(8);
    std::vector<std::thread> threads;
    for (auto& pSeen : seen) threads.emplace_back([&pSeen] { pSeen = qfc::GalleryDocument(); });
    for (auto& thread : threads) thread.join();
    EXPECT_THAT(seen, testing::Each(qfc::GalleryDocument()));
    delete qfc::GalleryDocument();
}

TEST(GalleryDocument, OlderDocumentThatEnds_DoesNotTakeTheNewerOneWithIt) {
    auto pOlder = std::make_unique<CQGalleryDoc>();
    CQGalleryDoc newer;
    pOlder.reset();
    EXPECT_EQ(qfc::ExistingGalleryDocument(), &newer);
}

}  // namespace
