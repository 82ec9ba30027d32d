#include "api/names/FolderNames.h"
#include "folders/FolderDisplay.h"
#include "folders/FolderPath.h"
#include "folders/PathComponents.h"
#include "items/CQGalleryDoc.h"
#include "platform/text/CodePages.h"
#include "tests/folders/FolderBuilders.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace qfc::test {
namespace {

struct StoredPaths : testing::Test {
    CQGalleryDoc document;
    CQGallery* gallery = new CQGallery("key--Media", 0, 0, 0);
    CQFolder* a = AddSub(*gallery, "A");
    CQFolder* b = AddSub(*a, "key--B");

    StoredPaths() { document.AddGallery(gallery); }
};

TEST_F(StoredPaths, FoldersOfAnOpenGalleryGoByTheirNames) {
    EXPECT_STREQ(StoredPathOf("Media", "A\\B"), "\\A\\key--B");
    EXPECT_EQ(gallery->GetFolderByPath(StoredPathOf("Media", "A\\B")), b);
    EXPECT_STREQ(StoredPathOf("Media", ""), "");
}

TEST_F(StoredPaths, FromTheFirstUnknownPartOnNamesAreEncoded) {
    EXPECT_STREQ(StoredPathOf("Media", "A\\X\\B"), "\\A\\||5||Media||1||A||1||X\\||5||Media||1||A||1||X||1||B");
}

TEST_F(StoredPaths, WithoutTheGalleryAllNamesAreEncoded) {
    EXPECT_STREQ(StoredPathOf("Other", "A\\B"), "\\||5||Other||1||A\\||5||Other||1||A||1||B");
}

TEST_F(StoredPaths, FoldersThatLeadNowhereHideNoneOfTheSameName) {
    CQFolder* second = AddSub(*gallery, "key--A");
    CQFolder* only = AddSub(*second, "Only");
    EXPECT_EQ(StoredPathOf("Media", "A\\Only"), FolderPathText(only));
    EXPECT_EQ(StoredPathOf("Media", "A\\B"), FolderPathText(b));
    EXPECT_EQ(StoredPathOf("Media", "A"), FolderPathText(a));
    EXPECT_STREQ(StoredPathOf("Media", "A\\Only\\X"), "\\key--A\\Only\\||5||Media||1||A||4||Only||1||X");
    EXPECT_STREQ(StoredPathOf("Media", "A\\X"), "\\A\\||5||Media||1||A||1||X");
}

TEST_F(StoredPaths, EachOpenGalleryOfTheNameIsLookedInto) {
    auto* other = new CQGallery("Media", 0, 0, 0);
    document.AddGallery(other);
    AddSub(*AddSub(*other, "A"), "Other");
    EXPECT_STREQ(StoredPathOf("Media", "A\\Other"), "\\A\\Other");
    EXPECT_EQ(StoredPathOf("Media", "A\\B"), FolderPathText(b));
    AddSub(*other, "k--Second");
    EXPECT_STREQ(StoredPathOf("Media", "Second"), "\\k--Second");
}

TEST_F(StoredPaths, FoldersWithoutADisplayNameAreFound) {
    CQFolder* nameless = AddSub(*a, "key--");
    CQFolder* below = AddSub(*nameless, "Below");
    EXPECT_STREQ(FolderDisplayPath(below, nullptr), "A\\\\Below");
    EXPECT_EQ(StoredPathOf("Media", "A\\\\Below"), FolderPathText(below));
    EXPECT_EQ(StoredPathOf("Media", "A\\"), FolderPathText(nameless));
    // Where nobody is shown so, empty parts are none.
    EXPECT_EQ(StoredPathOf("Media", "\\A\\\\B\\"), FolderPathText(b));
    EXPECT_STREQ(StoredPathOf("Media", ""), "");
}

TEST_F(StoredPaths, LongPathsOfNobodyEnd) {
    std::string path = "A";
    for (int i = 0; i < 100000; ++i) path += "\\x";
    EXPECT_LT(StoredPathOf("Media", path.c_str()).GetLength(), 1000000);
}

TEST_F(StoredPaths, LookUpsLeaveTheListOfComponentsAlone) {
    SplitIntoComponents("X\\Y", true);
    gallery->GetFolderByPath("A\\key--B");
    StoredPathOf("Media", "A\\B");
    gallery->GetSubFolderByDisplayPath("A\\B", nullptr);
    FolderDisplayPath(b, nullptr);
    EXPECT_STREQ(TakeComponent(), "X");
    EXPECT_STREQ(TakeComponent(), "Y");
}

// Folders with names in all forms that show texts of `pieces`; some siblings are shown alike.
void ExpectAnyFormIsFound(CQGallery& gallery, const std::vector<std::string>& pieces) {
    std::mt19937 random(5);
    std::vector<CQFolder*> folders{&gallery};
    for (int i = 0; i < 300; ++i) {
        CQFolder* parent = folders[random() % folders.size()];
        CString shown = pieces[random() % pieces.size()].c_str();
        if (random() % 2 == 0) shown += pieces[random() % pieces.size()].c_str();
        const bool plain = DisplayNameOf(shown) == shown && random() % 2 == 0;
        const CString key(std::string_view("k" + std::to_string(i % 7) + "--"));
        const CString name = plain ? shown : random() % 2 == 0 ? key + shown : EncodedNameBelow(parent, shown);
        if (parent->GetSubFolderByName(name) == nullptr) folders.push_back(AddSub(*parent, name));
    }
    for (CQFolder* folder : folders) {
        if (folder == &gallery) continue;
        const CString shown = FolderDisplayPath(folder, nullptr);
        CQFolder* found = gallery.GetFolderByPath(StoredPathOf("Media", shown));
        ASSERT_NE(found, nullptr) << shown;
        EXPECT_EQ(FolderDisplayPath(found, nullptr), shown);
    }
}

TEST_F(StoredPaths, FoldersOfAnyNamesAreFound_Utf8) {
    ExpectAnyFormIsFound(*gallery, {"||", "--", "-", "12", "x", " ", "ä", "漢", "\xFF"});
}

TEST_F(StoredPaths, FoldersOfAnyNamesAreFound_Cp932) {
    ASSERT_TRUE(SetAnsiCodePage("CP932"));
    ExpectAnyFormIsFound(*gallery, {"||", "--", "-", "12", "x", "\x83\x5C", "\x83\x7C", "\x83\x5B", "\xB1"});
    SetAnsiCodePage("UTF-8");
}

TEST_F(StoredPaths, EveryFolderOfARandomTreeIsFoundAgain) {
    std::mt19937 random(3);
    const std::vector<CQFolder*> folders = GrowRandomTree(*gallery, 300, random);
    int number = 0;
    for (CQFolder* folder : folders) {
        if (folder == gallery) continue;
        const CString shown(std::string_view("F" + std::to_string(++number)));
        const CString encoded = EncodedNameBelow(folder->GetParent(), shown);
        const CString forms[] = {shown, "key--" + shown, encoded};
        folder->GetFolderName() = forms[random() % 3];
    }
    for (CQFolder* folder : folders) {
        const CString shown = FolderDisplayPath(folder, nullptr);
        if (folder == gallery) continue;
        CQFolder* found = gallery->GetFolderByPath(StoredPathOf("Media", shown));
        EXPECT_EQ(found, folder) << shown;
    }
}

}  // namespace
}  // namespace qfc::test
