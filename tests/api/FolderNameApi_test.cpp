#include "api/FolderNameApi.h"

#include "api/names/StringTables.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "platform/text/CodePages.h"
#include "tests/items/ItemBuilders.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using qfc::test::AddSub;

struct FolderNameApi : testing::Test {
    ~FolderNameApi() override { qfc::SetAnsiCodePage("UTF-8"); }

    CQGallery root{"Media", 0, 0, 0};
    CQFolder* a = AddSub(root, "A");
    CQFolder* b = AddSub(*a, "B");
};

TEST_F(FolderNameApi, Path_OfTheGalleryIsEmpty_OfAFolderBackslashesAndNames) {
    EXPECT_STREQ(GenerateFolderPath2(&root), "");
    EXPECT_STREQ(GenerateFolderPath2(a), "\\A");
    EXPECT_STREQ(GenerateFolderPath2(b), "\\A\\B");
    EXPECT_STREQ(GenerateFolderPath2(nullptr), "");
}

TEST_F(FolderNameApi, Name_HasASegmentForEachFolderAndOneForTheName) {
    EXPECT_STREQ(GenerateFolderName(b, "New"), "||5||Media||1||A||1||B||3||New");
    EXPECT_STREQ(GenerateFolderName(&root, "New"), "||5||Media||3||New");
    EXPECT_STREQ(GenerateFolderName(nullptr, "New"), "");
}

TEST_F(FolderNameApi, DisplayName_OfNamesAndFolders) {
    EXPECT_STREQ(GetFolderDisplayName("||3||Abc||5||Hello"), "Hello");
    EXPECT_STREQ(GetFolderDisplayName("key--Shown"), "Shown");
    EXPECT_STREQ(GetFolderDisplayName("--Shown"), "--Shown");
    EXPECT_STREQ(GetFolderDisplayName(a, nullptr), "A");
    EXPECT_STREQ(GetFolderDisplayName(nullptr, nullptr), "");
}

TEST_F(FolderNameApi, DisplayName_ComesFromTheModule) {
    int module = 0;
    const qfc::ModuleString strings[] = {{3, "Three"}};
    qfc::SetModuleStrings(&module, strings, 1);
    a->SetFolderID(3);
    EXPECT_STREQ(GetFolderDisplayName(a, &module), "Three");
    EXPECT_STREQ(GetFolderDisplayPath(b, &module), "Three\\B");
    EXPECT_STREQ(GenerateFolderDisplayPath(a, "New", &module), "Three\\New");
    // Encoded names are the same whatever language the host shows.
    EXPECT_STREQ(GenerateFolderName(a, "New"), "||5||Media||1||A||3||New");
}

TEST_F(FolderNameApi, DisplayPath_OfFoldersNamesAndPaths) {
    EXPECT_STREQ(GetFolderDisplayPath(b, nullptr), "A\\B");
    EXPECT_STREQ(GetFolderDisplayPath(&root, nullptr), "");
    EXPECT_STREQ(GetFolderDisplayPath(nullptr, nullptr), "");
    EXPECT_STREQ(GetFolderDisplayPath("\\A\\key--B"), "A\\B");
    EXPECT_STREQ(GetFolderDisplayPath("||5||Media||1||A||1||B"), "A\\B");
    EXPECT_STREQ(GenerateFolderDisplayPath(b, "New", nullptr), "A\\B\\New");
    EXPECT_STREQ(GenerateFolderDisplayPath(nullptr, "New", nullptr), "");
}

TEST_F(FolderNameApi, FromDisplayPath_GivesEncodedNamesAndPaths) {
    EXPECT_STREQ(GenerateFolderNameFromDispalyPath("Media", "A\\B"), "||5||Media||1||A||1||B");
    EXPECT_STREQ(GenerateFolderNameFromDispalyPath("Media", ""), "||5||Media");
    EXPECT_STREQ(GenerateFolderPathFromDispalyPath("Media", "A\\B"), "\\||5||Media||1||A\\||5||Media||1||A||1||B");
    EXPECT_STREQ(GenerateFolderPathFromDispalyPath("Media", ""), "");
    EXPECT_STREQ(GenerateFolderPathFromName("||5||Media||1||A||1||B"), "\\||5||Media||1||A\\||5||Media||1||A||1||B");
}

TEST_F(FolderNameApi, FromDisplayPath_FindsTheFoldersOfAnOpenGallery) {
    CQGalleryDoc document;
    auto* open = new CQGallery("Open", 0, 0, 0);
    CQFolder* found = AddSub(*AddSub(*open, "A"), "key--B");
    document.AddGallery(open);
    EXPECT_EQ(GenerateFolderPathFromDispalyPath("Open", "A\\B"), GenerateFolderPath2(found));
    EXPECT_STREQ(GenerateFolderNameFromDispalyPath("Open", "A\\B"), "||4||Open||1||A||1||B");
}

// A tree whose folders have the encoded names that the host would give them, with shown names made of `pieces`.
void ExpectEncodedTreesComeBack(const std::vector<std::string>& pieces) {
    std::mt19937 random(11);
    for (int round = 0; round < 200; ++round) {
        CQGallery gallery("M--x", 0, 0, 0);
        CQFolder* folder = &gallery;
        for (int depth = 0; depth < 4; ++depth) {
            CString shown = pieces[random() % pieces.size()].c_str();
            for (auto more = random() % 4; more > 0; --more) shown += pieces[random() % pieces.size()].c_str();
            const CString expected = GenerateFolderDisplayPath(folder, shown, nullptr);
            folder = AddSub(*folder, GenerateFolderName(folder, shown));
            ASSERT_EQ(GetFolderDisplayName(folder, nullptr), shown);
            ASSERT_EQ(GetFolderDisplayPath(folder, nullptr), expected);
            const CString path = GenerateFolderPath2(folder);
            ASSERT_EQ(GetFolderDisplayPath(path), expected);
            ASSERT_EQ(GenerateFolderPathFromName(folder->GetFolderName()), path);
            ASSERT_EQ(GetFolderDisplayPath(folder->GetFolderName()), expected);
            const CString root = GetFolderDisplayName(&gallery, nullptr);
            ASSERT_EQ(GenerateFolderNameFromDispalyPath(root, expected), folder->GetFolderName());
            ASSERT_EQ(GenerateFolderPathFromDispalyPath(root, expected), path);
            ASSERT_EQ(gallery.GetFolderByPath(path), folder);
            ASSERT_EQ(gallery.GetSubFolderByDisplayPath(expected, nullptr), folder);
        }
    }
}

TEST_F(FolderNameApi, EncodedTreesComeBack_Utf8) {
    ExpectEncodedTreesComeBack({"||", "|", "--", "-", "0", "12", "x", " ", "[", "@", "ä", "漢", "\xFF"});
}

TEST_F(FolderNameApi, EncodedTreesComeBack_Cp1252) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    ExpectEncodedTreesComeBack({"||", "|", "--", "7", "x", "\xE4", "\x81", "\xFF"});
}

TEST_F(FolderNameApi, EncodedTreesComeBack_Cp932) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    ExpectEncodedTreesComeBack({"||", "|", "--", "7", "x", "\x83\x5C", "\x83\x7C", "\x83\x5B", "\x83\x40", "\xB1"});
}

}  // namespace
