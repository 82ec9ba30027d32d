#include "api/names/StringTables.h"
#include "folders/FolderDisplay.h"
#include "items/CQGalleryDoc.h"
#include "platform/text/CodePages.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/support/HostPlaces.h"

#include <gtest/gtest.h>

namespace qfc::test {
namespace {

struct CQFolderTranslation : testing::Test {
    std::string Written() const { return ReadFile(places.TranslationFile()); }

    HostPlaces places;
    CQFolder folder{"Name", 0, 5, 0};
};

TEST_F(CQFolderTranslation, IsEmptyWhileTranslationIsOff) {
    places.Translations("[TW_FOLDER_5]\nName=Translated\n");
    EXPECT_STREQ(folder.GetTranslateFolderName(), "");
    EXPECT_STREQ(FolderDisplayName(&folder, nullptr), "Name");
}

TEST_F(CQFolderTranslation, IsLookedUpUnderTheAdoptMask) {
    places.TurnTranslationOn();
    places.Translations("[TW_FOLDER_5]\nName=Translated\n[TW_FOLDER_6]\nName=Other\n");
    EXPECT_STREQ(folder.GetTranslateFolderName(), "Translated");
    EXPECT_STREQ(folder.GetFolderName(), "Name");
}

TEST_F(CQFolderTranslation, IsKeptOnceFound) {
    places.TurnTranslationOn();
    places.Translations("[TW_FOLDER_5]\nName=First\n");
    const CString& name = folder.GetTranslateFolderName();
    EXPECT_STREQ(name, "First");
    places.Translations("[TW_FOLDER_5]\nName=Second\n");
    folder.GetFolderName() = "Renamed";
    EXPECT_EQ(&folder.GetTranslateFolderName(), &name);
    EXPECT_STREQ(name, "First");
}

TEST_F(CQFolderTranslation, IsLookedForAgainWhileThereIsNone) {
    places.TurnTranslationOn();
    EXPECT_STREQ(folder.GetTranslateFolderName(), "");
    places.Translations("[TW_FOLDER_5]\nName=Later\n");
    EXPECT_STREQ(folder.GetTranslateFolderName(), "Later");
}

TEST_F(CQFolderTranslation, OfPredefinedFoldersIsThenLookedUpByDisplayName) {
    places.TurnTranslationOn();
    places.Translations("[TW_FOLDER_6]\nkey--Shown=By mask\n[Predefined_Folder]\nShown=Predefined\n");
    CQFolder predefined("key--Shown", 0, 5, 0);
    EXPECT_STREQ(predefined.GetTranslateFolderName(), "");
    predefined.SetFolderID(1);
    EXPECT_STREQ(predefined.GetTranslateFolderName(), "Predefined");
    CQFolder byMask("key--Shown", 0, 6, 0);
    byMask.SetFolderID(1);
    EXPECT_STREQ(byMask.GetTranslateFolderName(), "By mask");
}

TEST_F(CQFolderTranslation, IsConvertedToTheCodePage) {
    places.TurnTranslationOn();
    places.Translations("[TW_FOLDER_5]\nName=Größe\n");
    ASSERT_TRUE(SetAnsiCodePage("CP1252"));
    EXPECT_STREQ(folder.GetTranslateFolderName(),
                 "Gr\xF6\xDF"
                 "e");
}

TEST_F(CQFolderTranslation, IsWhatIsShown_ThroughTheRulesOfDisplayNames) {
    places.TurnTranslationOn();
    places.Translations("[TW_FOLDER_5]\nName=key--Shown\n");
    EXPECT_STREQ(FolderDisplayName(&folder, nullptr), "Shown");
}

TEST_F(CQFolderTranslation, Collecting_WritesTheNameUnderTheAdoptMaskAndStaysEmpty) {
    places.TurnCollectingOn();
    places.Translations("[TW_FOLDER_5]\nName=Translated\n");
    EXPECT_STREQ(folder.GetTranslateFolderName(), "");
    EXPECT_EQ(Written(), "[TW_FOLDER_5]\nName=Name\n");
    EXPECT_STREQ(FolderDisplayName(&folder, nullptr), "Name");
}

TEST_F(CQFolderTranslation, Collecting_WritesOnce) {
    places.TurnCollectingOn();
    folder.GetTranslateFolderName();
    places.Translations("");
    EXPECT_STREQ(folder.GetTranslateFolderName(), "");
    EXPECT_EQ(Written(), "");
}

TEST_F(CQFolderTranslation, Collecting_MeansNothingWhileTranslationIsOff) {
    places.ApplicationIni("[USERMODE]\nCreateTWTranslateData=1\n");
    folder.GetTranslateFolderName();
    EXPECT_FALSE(std::filesystem::exists(places.TranslationFile()));
}

TEST_F(CQFolderTranslation, CopiesDoNotTakeItAlong) {
    places.TurnTranslationOn();
    places.Translations("[TW_FOLDER_5]\nName=Translated\n");
    folder.GetTranslateFolderName();
    const CQFolder copy(folder);
    places.Translations("");
    EXPECT_STREQ(CQFolder(copy).GetTranslateFolderName(), "");
}

TEST_F(CQFolderTranslation, OfAFolderThatBecomesAnotherIsForgotten) {
    places.TurnTranslationOn();
    places.Translations("[TW_FOLDER_5]\nName=Translated\nOther=Andere\n");
    EXPECT_STREQ(folder.GetTranslateFolderName(), "Translated");
    folder = CQFolder("Other", 0, 5, 0);
    EXPECT_STREQ(folder.GetTranslateFolderName(), "Andere");
    folder = CQFolder("Unknown", 0, 5, 0);
    EXPECT_STREQ(FolderDisplayName(&folder, nullptr), "Unknown");
}

TEST_F(CQFolderTranslation, OfFoldersInTheTemplatesGalleriesIsThenLookedUpByDisplayName) {
    places.TurnTranslationOn();
    places.Translations("[Predefined_Folder]\nName=Predefined\n");
    for (const DWORD id : {3u, 12u, 1u}) {
        CQGallery gallery("Gallery", 0, 0, 0);
        gallery.SetFolderID(id);
        EXPECT_STREQ(AddSub(gallery, "Name")->GetTranslateFolderName(), id == 1 ? "" : "Predefined") << id;
    }
}

// Translated: the gallery, a folder in it, one below.
struct TranslatedTree : CQFolderTranslation {
    TranslatedTree() {
        places.TurnTranslationOn();
        places.Translations("[TW_FOLDER_0]\nMedia=Medien\nMusic=Musik\nkey--Loud=x--Laut\n");
        document.AddGallery(gallery);
        const ModuleString strings[] = {{7, "From the module"}};
        SetModuleStrings(module, strings, 1);
    }

    CQGalleryDoc document;
    CQGallery* gallery = new CQGallery("Media", 0, 0, 0);
    CQFolder* music = AddSub(*gallery, "Music");
    CQFolder* loud = AddSub(*music, "key--Loud");
    CQFolder* plain = AddSub(*music, "Plain");
    int moduleAddress = 0;
    const HINSTANCE module = &moduleAddress;
};

TEST_F(TranslatedTree, NameOfTheModuleComesFirst_OneThatItDoesNotHaveIsTranslated) {
    music->SetFolderID(7);
    loud->SetFolderID(8);
    EXPECT_STREQ(FolderDisplayName(music, module), "From the module");
    EXPECT_STREQ(FolderDisplayName(loud, module), "Laut");
    EXPECT_STREQ(FolderDisplayName(music, nullptr), "Musik");
}

TEST_F(TranslatedTree, PathsAndEncodedNamesHoldTranslatedNames) {
    EXPECT_STREQ(FolderDisplayPath(loud, nullptr), "Musik\\Laut");
    EXPECT_STREQ(DisplayPathBelow(loud, "New", nullptr), "Musik\\Laut\\New");
    EXPECT_STREQ(EncodedNameBelow(loud, "New"), "||6||Medien||5||Musik||4||Laut||3||New");
}

TEST_F(TranslatedTree, FoldersAreFoundByTranslatedNames) {
    EXPECT_EQ(gallery->GetSubFolderByDisplayPath("Musik\\Laut", nullptr), loud);
    EXPECT_EQ(gallery->GetSubFolderByDisplayPath("Music\\Loud", nullptr), nullptr);
    EXPECT_STREQ(StoredPathOf("Medien", "Musik\\Laut"), "\\Music\\key--Loud");
    EXPECT_STREQ(StoredPathOf("Media", "Music"), "\\||5||Media||5||Music");
}

TEST_F(TranslatedTree, TranslatedNameOfASiblingIsTaken) {
    CQFolder* other = AddSub(*gallery, "Other");
    EXPECT_EQ(other->IsFolderNameValid("Musik", nullptr), 0);
    EXPECT_EQ(other->IsFolderNameValid("Music", nullptr), 1);
    EXPECT_EQ(plain->IsFolderNameValid("Musik\\Laut", nullptr), 0);
}

TEST(CQFolderNames, ImportedName_StepsOverTrailBytesThatLookLikeABar) {
    ASSERT_TRUE(SetAnsiCodePage("CP932"));
    EXPECT_STREQ(CQFolder::GetNameFormImportFolder("a || \x83\x7C\x83\x7C ||"), "\x83\x7C\x83\x7C");
    SetAnsiCodePage("UTF-8");
}

struct CQFolderDisplay : testing::Test {
    CQGallery root{"Media", 0, 0, 0};
    CQFolder* a = AddSub(root, "A");
    CQFolder* b = AddSub(*a, "key--B");
    CQFolder* c = AddSub(*b, "||5||Media||1||A||1||B||1||C");
    int moduleAddress = 0;
    const HINSTANCE module = &moduleAddress;

    CQFolderDisplay() {
        const ModuleString strings[] = {{7, "From the module"}, {8, "key--text"}, {9, ""}};
        SetModuleStrings(module, strings, 3);
    }
};

TEST_F(CQFolderDisplay, NameIsWhatTheStoredNameShows) {
    EXPECT_STREQ(FolderDisplayName(&root, nullptr), "Media");
    EXPECT_STREQ(FolderDisplayName(b, nullptr), "B");
    EXPECT_STREQ(FolderDisplayName(c, nullptr), "C");
    EXPECT_STREQ(FolderDisplayName(nullptr, module), "");
}

TEST_F(CQFolderDisplay, NameOfAnIdComesFromTheModuleAsItIs) {
    a->SetFolderID(7);
    b->SetFolderID(8);
    EXPECT_STREQ(FolderDisplayName(a, module), "From the module");
    EXPECT_STREQ(FolderDisplayName(b, module), "key--text");
    EXPECT_STREQ(FolderDisplayName(a, nullptr), "A");
}

TEST_F(CQFolderDisplay, NameOfAnIdThatTheModuleDoesNotHaveIsTheOwn) {
    a->SetFolderID(9);
    b->SetFolderID(10);
    EXPECT_STREQ(FolderDisplayName(a, module), "A");
    EXPECT_STREQ(FolderDisplayName(b, module), "B");
    EXPECT_STREQ(FolderDisplayName(&root, module), "Media");
}

TEST_F(CQFolderDisplay, NameOfAFolderWithoutIdIsTheOwn) {
    const ModuleString strings[] = {{0, "Nobody"}};
    SetModuleStrings(module, strings, 1);
    EXPECT_STREQ(FolderDisplayName(&root, module), "Media");
}

TEST_F(CQFolderDisplay, PathLeavesTheGalleryOut) {
    EXPECT_STREQ(FolderDisplayPath(&root, nullptr), "");
    EXPECT_STREQ(FolderDisplayPath(nullptr, nullptr), "");
    EXPECT_STREQ(FolderDisplayPath(a, nullptr), "A");
    EXPECT_STREQ(FolderDisplayPath(c, nullptr), "A\\B\\C");
    a->SetFolderID(7);
    EXPECT_STREQ(FolderDisplayPath(c, module), "From the module\\B\\C");
}

TEST_F(CQFolderDisplay, PathBelowAParentEndsWithTheNameAsItIs) {
    EXPECT_STREQ(DisplayPathBelow(&root, "New", nullptr), "New");
    EXPECT_STREQ(DisplayPathBelow(b, "k--New", nullptr), "A\\B\\k--New");
    EXPECT_STREQ(DisplayPathBelow(nullptr, "New", nullptr), "");
}

TEST_F(CQFolderDisplay, EncodedNameHoldsTheDisplayNamesFromTheGalleryDown) {
    EXPECT_STREQ(EncodedNameBelow(&root, "New"), "||5||Media||3||New");
    EXPECT_STREQ(EncodedNameBelow(c, "ä"), "||5||Media||1||A||1||B||1||C||2||ä");
    EXPECT_STREQ(EncodedNameBelow(nullptr, "New"), "");
}

TEST_F(CQFolderDisplay, SubFolderIsFoundByDisplayPath) {
    EXPECT_EQ(root.GetSubFolderByDisplayPath("A", nullptr), a);
    EXPECT_EQ(root.GetSubFolderByDisplayPath("A\\B\\C", nullptr), c);
    EXPECT_EQ(root.GetSubFolderByDisplayPath("B", nullptr), nullptr);
    EXPECT_EQ(root.GetSubFolderByDisplayPath("\\A", nullptr), nullptr);
    EXPECT_EQ(root.GetSubFolderByDisplayPath("", nullptr), nullptr);
    a->SetFolderID(7);
    EXPECT_EQ(root.GetSubFolderByDisplayPath("From the module", module), a);
    EXPECT_EQ(root.GetSubFolderByDisplayPath("A", module), nullptr);
}

TEST_F(CQFolderDisplay, SubFolderByDisplayPath_IsTheFirstInPreOrderOfTheSubtree) {
    CQFolder* same = AddSub(*a, "B");
    EXPECT_EQ(root.GetSubFolderByDisplayPath("A\\B", nullptr), b);
    EXPECT_EQ(same->GetSubFolderByDisplayPath("A\\B", nullptr), nullptr);
    EXPECT_EQ(a->GetSubFolderByDisplayPath("A\\B\\C", nullptr), c);
    EXPECT_EQ(b->GetSubFolderByDisplayPath("A", nullptr), nullptr);
}

TEST_F(CQFolderDisplay, NameIsValid_RootTakesAny) {
    EXPECT_EQ(root.IsFolderNameValid("", nullptr), 1);
    EXPECT_EQ(root.IsFolderNameValid("A", nullptr), 1);
}

TEST_F(CQFolderDisplay, NameIsValid_OthersTakeNoEmptyOne) {
    EXPECT_EQ(a->IsFolderNameValid("", nullptr), 0);
    EXPECT_EQ(a->IsFolderNameValid("x", nullptr), 1);
}

TEST_F(CQFolderDisplay, NameIsValid_UnlessASiblingIsShownSo) {
    CQFolder* sibling = AddSub(root, "key--Taken");
    EXPECT_EQ(a->IsFolderNameValid("Taken", nullptr), 0);
    EXPECT_EQ(a->IsFolderNameValid("key--Taken", nullptr), 1);
    EXPECT_EQ(a->IsFolderNameValid("taken", nullptr), 1);
    EXPECT_EQ(sibling->IsFolderNameValid("Taken", nullptr), 1);
    sibling->SetFolderID(7);
    EXPECT_EQ(a->IsFolderNameValid("From the module", module), 0);
    EXPECT_EQ(a->IsFolderNameValid("Taken", module), 1);
}

TEST_F(CQFolderDisplay, NameIsValid_BelowTheFirstLevelOnlyWholePathsAreTaken) {
    CQFolder* sibling = AddSub(*a, "S");
    EXPECT_EQ(b->IsFolderNameValid("S", nullptr), 1);
    EXPECT_EQ(b->IsFolderNameValid("A\\S", nullptr), 0);
    EXPECT_EQ(sibling->IsFolderNameValid("A\\S", nullptr), 1);
}

}  // namespace
}  // namespace qfc::test
