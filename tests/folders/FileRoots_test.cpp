#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

// When the root of a gallery file saves its tree: once, and never an emptied one in place of what was saved.
namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

class GalleryWithPath : public CQGallery {
public:
    GalleryWithPath() { m_strFilePath = "lib.gal"; }
};

TEST(FileRoots, GalleryWithAFile_SavesItsTreeOnceWhenItEnds) {
    RecordedFile file;
    {
        GalleryWithPath gallery;
        gallery.GetFolderName() = "g";
        AddSub(gallery, "A");
    }
    EXPECT_EQ(file.calls, (Texts{"flush A", "save g"}));
}

TEST(FileRoots, ClearedFolder_DoesNotSaveItsEmptiedTreeAgain) {
    RecordedFile file;
    {
        CQFolder root("r", 0, 0, 0);
        FolderInside::FilePath(root) = "lib.gal";
        AddSub(root, "A");
        root.Clear();
    }
    EXPECT_EQ(file.calls, (Texts{"flush A", "save r"}));
}

TEST(FileRoots, FolderFilledAgainAfterClearing_IsSavedAgain) {
    RecordedFile file;
    {
        CQFolder root("r", 0, 0, 0);
        FolderInside::FilePath(root) = "lib.gal";
        root.Clear();
        AddSub(root, "B");
    }
    EXPECT_EQ(file.calls, (Texts{"save r", "flush B", "save r"}));
}

TEST(FileRoots, FolderEmptiedAfterItWasFilledAgain_IsSavedEmpty) {
    RecordedFile file;
    {
        CQFolder root("r", 0, 0, 0);
        FolderInside::FilePath(root) = "lib.gal";
        root.Clear();
        AddSub(root, "B");
        root.RemoveSubFolder();
        file.calls.clear();
    }
    EXPECT_EQ(file.calls, Texts{"save r"});
}

TEST(FileRoots, FolderThatHadAnItemAfterItWasCleared_IsSavedEmpty) {
    RecordedFile file;
    {
        CQFolder root("r", 0, 0, 0);
        FolderInside::FilePath(root) = "lib.gal";
        root.Clear();
        AddNew(root, 1);
        root.RemoveAllItems(1);
        file.calls.clear();
    }
    EXPECT_EQ(file.calls, Texts{"save r"});
}

TEST(FileRoots, CopiedOrAssignedFolderThatBecomesARoot_IsSavedAlsoWhenEmpty) {
    const CQFolder source("r", 0, 0, 0);
    RecordedFile file;
    {
        CQFolder copied(source);
        FolderInside::FilePath(copied) = "lib.gal";
        CQFolder assigned;
        assigned = source;
        FolderInside::FilePath(assigned) = "other.gal";
    }
    EXPECT_EQ(file.calls, (Texts{"save r", "save r"}));
}

TEST(FileRoots, RootThatIsAssignedTo_IsSavedBeforeAndNotOnceMoreWhileItIsEmpty) {
    const CQFolder source("s", 0, 0, 0);
    RecordedFile file;
    {
        CQFolder root("r", 0, 0, 0);
        FolderInside::FilePath(root) = "lib.gal";
        AddSub(root, "A");
        root = source;
    }
    EXPECT_EQ(file.calls, (Texts{"flush A", "save r"}));
}

TEST(FileRoots, DeletedRootThatIsAssignedTo_IsNotSavedWhileItIsEmpty) {
    const CQFolder source("s", 0, 0, 0);
    RecordedFile file;
    {
        CQFolder root("r", 0, 0, 0);
        FolderInside::FilePath(root) = "lib.gal";
        AddSub(root, "A");
        root.SetDeleteFlag();
        root = source;
    }
    EXPECT_EQ(file.calls, Texts{});
}

TEST(FileRoots, DeletedRootThatIsAssignedToAndFilled_IsSaved) {
    const CQFolder source("s", 0, 0, 0);
    RecordedFile file;
    {
        CQFolder root("r", 0, 0, 0);
        FolderInside::FilePath(root) = "lib.gal";
        root.SetDeleteFlag();
        root = source;
        AddSub(root, "B");
    }
    EXPECT_EQ(file.calls, (Texts{"flush B", "save s"}));
}

TEST(FileRoots, ClearingWithoutAFileToSaveTo_DoesNotSaveTheEmptiedTreeOnceThereIsOne) {
    CQFolder root("r", 0, 0, 0);
    FolderInside::FilePath(root) = "lib.gal";
    AddSub(root, "A");
    root.Clear();
    RecordedFile file;
    root.Clear();
    EXPECT_EQ(file.calls, Texts{});
}

TEST(FileRoots, ClearingThatCouldNotSave_DoesNotSaveTheEmptiedTreeInstead) {
    RecordedFile file;
    {
        CQFolder root("r", 0, 0, 0);
        FolderInside::FilePath(root) = "lib.gal";
        file.result = 0;
        root.Clear();
        file.calls.clear();
    }
    EXPECT_EQ(file.calls, Texts{});
}

}  // namespace
}  // namespace qfc::test
