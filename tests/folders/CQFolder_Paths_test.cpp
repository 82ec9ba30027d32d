#include "folders/FolderPath.h"
#include "folders/PathComponents.h"
#include "tests/folders/FolderBuilders.h"

#include <gtest/gtest.h>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

TEST(PathComponents, HoldTheComponentsAndThePositionOfTheNext) {
    EXPECT_TRUE(SplitIntoComponents("\\A\\\\B\\", true));
    EXPECT_EQ(PathComponents().GetCount(), 2);
    EXPECT_STREQ(TakeComponent(), "A");
    EXPECT_STREQ(TakeComponent(), "B");
    EXPECT_EQ(PathPosition(), nullptr);
    EXPECT_STREQ(TakeComponent(), "");
}

TEST(PathComponents, StandReversedWithoutTheOrderFlag) {
    SplitIntoComponents("A\\B\\C", false);
    EXPECT_STREQ(TakeComponent(), "C");
    EXPECT_STREQ(TakeComponent(), "B");
    EXPECT_STREQ(TakeComponent(), "A");
}

TEST(PathComponents, OfAPathWithoutAnyAreNone) {
    SplitIntoComponents("A", true);
    EXPECT_FALSE(SplitIntoComponents("\\\\", true));
    EXPECT_EQ(PathPosition(), nullptr);
    EXPECT_TRUE(PathComponents().IsEmpty());
    EXPECT_FALSE(SplitIntoComponents(CString(), true));
}

TEST(FolderPath, IsABackslashAndTheNamePerLevel) {
    CQGallery gallery("Gallery", 0, 0, 0);
    CQFolder* a = AddSub(gallery, "A");
    CQFolder* b = AddSub(*a, "B");
    EXPECT_STREQ(FolderPathText(&gallery), "");
    EXPECT_STREQ(FolderPathText(a), "\\A");
    EXPECT_STREQ(FolderPathText(b), "\\A\\B");
    EXPECT_STREQ(FolderPathText(nullptr), "");
}

class Paths : public testing::Test {
protected:
    // Splits the path and hands its first component and the rest to the call.
    template <class Call>
    int At(const char* path, Call&& call) {
        SplitIntoComponents(path, true);
        const CString first = TakeComponent();
        return call(first, PathPosition());
    }

    CQFolder root;
};

std::vector<std::string> g_created;

TEST_F(Paths, WithMasks_MakesEachMissingFolderAndTellsOfIt) {
    AddSub(root, "A", 99);
    g_created.clear();
    const auto created = [](CQFolder* folder) { g_created.emplace_back(folder->GetFolderName().View()); };
    const auto open = [&](const CString& first, POSITION& pos) {
        return root.OpenOrCreateSubFolder(first, pos, 1u, 2u, 3u, 1, created);
    };
    EXPECT_EQ(At("A\\B\\C", open), 1);
    EXPECT_EQ(g_created, (Texts{"B", "C"}));
    CQFolder* made = root.GetFolderByPath("A\\B\\C");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetAdopt(), 1u);
    EXPECT_EQ(made->GetTrusty(), 2u);
    EXPECT_EQ(made->GetExtra(), 3u);
    EXPECT_EQ(root.GetFolderByName("A")->GetTrusty(), 99u);
    EXPECT_EQ(PathPosition(), nullptr);
}

TEST_F(Paths, WithMasks_AddsAtHeadOrTailAsAsked) {
    AddSub(root, "first");
    const auto open = [&](const CString& first, POSITION& pos) {
        return root.OpenOrCreateSubFolder(first, pos, 0u, 0u, 0u, 0, nullptr);
    };
    At("head", open);
    EXPECT_EQ(Names(root.GetFolderList()), (Texts{"head", "first"}));
}

TEST_F(Paths, MadeFolders_GetStorageNumbers) {
    const auto open = [&](const CString& first, POSITION& pos) {
        return root.OpenOrCreateSubFolder(first, pos, 0u, 0u, 0u, 1, nullptr);
    };
    At("A\\B", open);
    EXPECT_TRUE(root.SearchFolderNumRecursive(1));
    EXPECT_TRUE(root.SearchFolderNumRecursive(2));
}

TEST_F(Paths, WithMasksAndItem_AddsTheItemToTheLeaf) {
    CQItem* item = NewItem(1, "clip", 8);
    const auto open = [&](const CString& first, POSITION& pos) {
        return root.OpenOrCreateSubFolder(first, pos, 1u, 2u, static_cast<const CQItem*>(item));
    };
    EXPECT_EQ(At("A\\B", open), 1);
    CQFolder* leaf = root.GetFolderByPath("A\\B");
    EXPECT_EQ(ItemNames(leaf->GetItemArray()), Texts{"clip"});
    EXPECT_EQ(leaf->GetAdopt(), 9u);
    EXPECT_EQ(leaf->GetTrusty(), 2u);
    EXPECT_EQ(leaf->GetExtra(), 0u);
    EXPECT_EQ(item->GetParentFolder(), leaf);
}

TEST_F(Paths, WithItemOnly_MakesPlainFoldersAndNullAddsNothing) {
    const CQItem* item = nullptr;
    const auto open = [&](const CString& first, POSITION& pos) { return root.OpenOrCreateSubFolder(first, pos, item); };
    EXPECT_EQ(At("A\\B", open), 1);
    EXPECT_EQ(root.GetFolderByPath("A\\B")->GetItemArray(), nullptr);
    item = NewItem(1, "clip");
    EXPECT_EQ(At("A\\B", open), 1);
    EXPECT_EQ(ItemNames(root.GetFolderByPath("A\\B")->GetItemArray()), Texts{"clip"});
    EXPECT_EQ(Names(root.GetFolderList()), Texts{"A"});
}

// The forms that take no place: missing folders come last.
TEST_F(Paths, WithItemIdItemOrMasksAndItem_MakesMissingFoldersAtTheTail) {
    AddSub(root, "first");
    const CQItem* none = nullptr;
    At("by id", [&](const CString& first, POSITION& pos) { return root.OpenOrCreateSubFolder(first, pos, DWORD{7}); });
    At("by masks",
       [&](const CString& first, POSITION& pos) { return root.OpenOrCreateSubFolder(first, pos, 1u, 2u, none); });
    At("by item", [&](const CString& first, POSITION& pos) { return root.OpenOrCreateSubFolder(first, pos, none); });
    At("emptied", [&](const CString& first, POSITION& pos) { return root.RemoveSubFolderContents(first, pos); });
    EXPECT_EQ(Names(root.GetFolderList()), (Texts{"first", "by id", "by masks", "by item", "emptied"}));
}

TEST_F(Paths, WithMasksAndNoItem_MakesTheFoldersAndAddsNothing) {
    const CQItem* none = nullptr;
    const auto open = [&](const CString& first, POSITION& pos) {
        return root.OpenOrCreateSubFolder(first, pos, 1u, 2u, none);
    };
    EXPECT_EQ(At("A\\B", open), 1);
    CQFolder* leaf = root.GetFolderByPath("A\\B");
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(leaf->GetItemArray(), nullptr);
    EXPECT_EQ(leaf->GetAdopt(), 1u);
    EXPECT_EQ(leaf->GetTrusty(), 2u);
    EXPECT_EQ(leaf->GetParent()->GetAdopt(), 1u);
}

TEST_F(Paths, WithItemId_MakesPlainFolders) {
    At("A", [&](const CString& first, POSITION& pos) { return root.OpenOrCreateSubFolder(first, pos, DWORD{7}); });
    const CQFolder* made = root.GetFolderByName("A");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(const_cast<CQFolder*>(made)->GetAdopt(), 0u);
    EXPECT_EQ(const_cast<CQFolder*>(made)->GetTrusty(), 0u);
    EXPECT_EQ(const_cast<CQFolder*>(made)->GetExtra(), 0u);
}

// What is done to the folder in the call is part of making it: it stands nowhere yet.
TEST_F(Paths, TheCallForANewFolder_ComesBeforeItIsAdded) {
    g_created.clear();
    const auto created = [](CQFolder* folder) {
        g_created.emplace_back(folder->GetParent() == nullptr ? "loose" : "added");
        folder->GetFolderName() = "renamed " + folder->GetFolderName();
    };
    EXPECT_EQ(At("A\\B", [&](const CString& first,
                             POSITION& pos) { return root.OpenOrCreateSubFolder(first, pos, 1u, 2u, 3u, 1, created); }),
              1);
    EXPECT_EQ(g_created, (Texts{"loose", "loose"}));
    EXPECT_NE(root.GetFolderByPath("renamed A\\renamed B"), nullptr);
}

TEST_F(Paths, WithItemId_RemovesTheItemFromTheLeafAndFailsWithoutIt) {
    CQFolder* leaf = AddSub(*AddSub(root, "A"), "B");
    AddNew(*leaf, 1)->SetDBID(7);
    const auto open = [&](const CString& first, POSITION& pos) {
        return root.OpenOrCreateSubFolder(first, pos, DWORD{7});
    };
    EXPECT_EQ(At("A\\B", open), 1);
    EXPECT_EQ(leaf->GetItemsCount(), 0);
    EXPECT_EQ(At("A\\B", open), 0);
    EXPECT_EQ(At("A\\new", open), 0);
    EXPECT_NE(root.GetFolderByPath("A\\new"), nullptr);
}

TEST_F(Paths, RemoveContents_EmptiesTheLeafAndFailsWithoutItems) {
    CQFolder* leaf = AddSub(*AddSub(root, "A"), "B");
    AddNew(*leaf, 1);
    AddNew(*leaf->GetParent(), 2);
    const auto remove = [&](const CString& first, POSITION& pos) { return root.RemoveSubFolderContents(first, pos); };
    EXPECT_EQ(At("A\\B", remove), 1);
    EXPECT_EQ(leaf->GetItemsCount(), 0);
    EXPECT_EQ(leaf->GetParent()->GetItemsCount(), 1);
    EXPECT_EQ(At("C\\D", remove), 0);
    EXPECT_NE(root.GetFolderByPath("C\\D"), nullptr);
}

TEST_F(Paths, VeryLongPaths_DoNotOverflowTheStack) {
    std::string path;
    for (int i = 0; i < 3000; ++i) path += "\\x";
    const auto open = [&](const CString& first, POSITION& pos) {
        return root.OpenOrCreateSubFolder(first, pos, 0u, 0u, 0u, 1, nullptr);
    };
    EXPECT_EQ(At(path.c_str(), open), 1);
    EXPECT_NE(root.GetFolderByPath(path.c_str()), nullptr);
}

TEST_F(Paths, CanCreateAndCloseFolder_AlwaysAgree) {
    EXPECT_EQ(root.CanCreate(""), 1);
    EXPECT_EQ(root.CloseFolder(), 1);
}

}  // namespace
}  // namespace qfc::test
