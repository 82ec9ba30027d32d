#include "folders/GlobalProc.h"
#include "items/CQGalleryDoc.h"
#include "items/GalleryUpdate.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/support/MemoryFaults.h"

#include <gtest/gtest.h>
#include <memory>

// How far the operations of galleries and their document reach, and in which order they do their steps.
namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

constexpr DWORD kTakesFolders = 2;
constexpr DWORD kTakesItems = 64;

TEST(GallerySteps, FolderThatTakesItems_IsLookedForAmongDirectSubFoldersAlone) {
    CQGallery gallery;
    CQFolder* first = AddSub(gallery, "first");
    CQFolder* below = AddSub(*first, "below", kTakesFolders | kTakesItems);
    EXPECT_EQ(gallery.GetFirstCanAddItemFolder(), nullptr);
    first->SetTrusty(kTakesFolders);
    EXPECT_EQ(gallery.GetFirstCanAddItemFolder(), below);
    below->SetTrusty(0);
    AddSub(*below, "deeper", kTakesItems);
    EXPECT_EQ(gallery.GetFirstCanAddItemFolder(), nullptr);
}

class GalleryWithPath : public CQGallery {
public:
    GalleryWithPath() {
        m_strFilePath = "lib.gal";
        m_strFolderName = "g";
    }
    ~GalleryWithPath() override { m_strFilePath.Empty(); }
};

TEST(GallerySteps, UnlinkAll_LeavesLinkedFoldersFurtherDown) {
    RecordedFile file;
    GalleryWithPath gallery;
    CQFolder* linked = AddSub(*AddSub(gallery, "A"), "linked");
    FolderInside::FilePath(*linked) = "other.gal";
    EXPECT_EQ(gallery.UnlinkAll(), 1);
    EXPECT_EQ(gallery.GetFolderByPath("A\\linked"), linked);
    EXPECT_EQ(file.calls, Texts{});
    FolderInside::FilePath(*linked).Empty();
}

TEST(GallerySteps, UpdateGalleryFile_FlushesBeforeItSaves) {
    RecordedFile file;
    GalleryWithPath gallery;
    CQFolder* a = AddSub(gallery, "A");
    AddSub(*a, "below");
    EXPECT_EQ(UpdateGalleryFile(&gallery, nullptr), 1);
    EXPECT_EQ(file.calls, (Texts{"flush A", "flush below", "save g"}));
    file.calls.clear();
    EXPECT_EQ(UpdateGalleryFile(&gallery, a), 1);
    EXPECT_EQ(file.calls, (Texts{"flush A", "save g"}));
}

TEST(GallerySteps, AddGalleryWithoutMemory_GivesZeroAndLeavesTheGalleryToTheCaller) {
    CQGalleryDoc document;
    const auto gallery = std::make_unique<CQGallery>();
    int added = -1;
    {
        const MemoryFaults faults(1, true);
        added = document.AddGallery(gallery.get());
        ASSERT_TRUE(faults.HasFailed());
    }
    EXPECT_EQ(added, 0);
    EXPECT_TRUE(document.GetGalleryList().IsEmpty());
}

TEST(GallerySteps, ClosingAGalleryThatIsNotCurrent_KeepsTheNotedFolder) {
    CQGalleryDoc document;
    auto* current = new CQGallery;
    auto* other = new CQGallery;
    document.AddGallery(current);
    document.AddGallery(other);
    document.ChangeGallery(current);
    document.NoteCurrentFolder(current);
    document.CloseGallery(other);
    EXPECT_EQ(document.GetNotedFolder(), current);
    document.CloseGallery(current);
    EXPECT_EQ(document.GetNotedFolder(), nullptr);
}

int One(DWORD, ULONGLONG, std::int64_t, void*) { return 1; }
int Two(DWORD, ULONGLONG, std::int64_t, void*) { return 2; }

TEST(GallerySteps, GlobalProcedure_IsReplacedByALaterOne) {
    SetGlobalProc(One);
    SetGlobalProc(Two);
    ASSERT_NE(CurrentGlobalProc(), nullptr);
    EXPECT_EQ(CurrentGlobalProc()(0, 0, 0, nullptr), 2);
    SetGlobalProc(nullptr);
    EXPECT_EQ(CurrentGlobalProc(), nullptr);
}

}  // namespace
}  // namespace qfc::test
