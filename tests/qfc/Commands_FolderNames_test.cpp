#include "TagCommandsTest.h"

#include <algorithm>

namespace qfc::test {
namespace {

// The names that folders are stored under and those they are shown as: paths use both, so no neighbours share one.
class CommandsFolderNames : public TagCommandsTest {
protected:
    // A directory whose name the library would take for a key and a name; stored encoded.
    void ImportDirectory(const std::string& name, const Args& more = {}) const {
        m_media.MakeFolder(name);
        const std::string image = Image(name + "/a.ppm", static_cast<int>(name.size()));
        Done(Joined({"import", Media(name)}, more));
    }
    std::string RowOf(const std::string& parent, const std::string& name) const {
        const Json listed = Done({"ls", parent});
        for (const Json& folder : listed["folders"]) {
            if (folder["name"] == name) return "#" + std::to_string(folder["row"].get<int>());
        }
        return "none";
    }
    // Two folders of one shown name, as libraries of other programs may have them.
    void MakeTwins() const {
        Done({"mkdir", "k--s"});
        Done({"mkdir", "l--x"});
        Exec("update FOLDER_TABLE set FOLDER_NAME = 'l--s' where FOLDER_NAME = 'l--x'");
    }
    void TranslatePhotographs() const {
        WriteHost("qvTWTranslateData.dat",
                  "[TW_FOLDER_0]\r\nPhotographs=Fotografien\r\n[TW_FOLDER_4]\r\nPhotographs=Fotografien\r\n"
                  "[TW_ITEMTYPE_VIDEO]\r\nv.mp4=Leben.mp4\r\n");
        Done({"--translate", "on", "gallery", "list"});
    }
};

// --- What a name shows is taken ------------------------------------------------------------------------------------

TEST_F(CommandsFolderNames, MkdirFindsAnEncodedFolderByWhatItIsShownAs) {
    ImportDirectory("a--b", {"--folder", "m2"});
    EXPECT_NE(Refused({"mkdir", "m2\\a--b"}).find("m2\\a--b"), std::string::npos);
    EXPECT_EQ(Done({"mkdir", "m2\\a--b\\c"})["made"].size(), 1U);
    EXPECT_EQ(FoldersOf("m2"), Names{"a--b"});
    EXPECT_EQ(FoldersOf("m2\\a--b"), Names{"c"});
}

TEST_F(CommandsFolderNames, MkdirRefusesANameThatWouldBeShownAsAnother) {
    Done({"mkdir", "s"});
    EXPECT_NE(Refused({"mkdir", "k--s"}).find("a folder s already"), std::string::npos);
    Refused({"mkdir", "k--s\\new"});
    Done({"mkdir", "A\\k--t"});
    EXPECT_NE(Refused({"mkdir", "A\\l--t"}).find("A\\t already"), std::string::npos);
    Refused({"mkdir", "A\\t"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"s", "A"}));
    EXPECT_EQ(FoldersOf("A"), Names{"t"});
}

TEST_F(CommandsFolderNames, RenameRefusesANameThatWouldBeShownAsAnother) {
    Done({"mkdir", "b"});
    Done({"mkdir", "x"});
    Refused({"rename", "x", "y--b"});
    ImportDirectory("c--d");
    Refused({"rename", "x", "c--d"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"b", "x", "c--d"}));
    Done({"rename", "b", "y--b"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"b", "x", "c--d"}));
    EXPECT_EQ(Sql("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'y--b'"), "1");
}

TEST_F(CommandsFolderNames, MvRefusesANameThatWouldBeShownAsAnother) {
    Done({"mkdir", "T\\s"});
    Done({"mkdir", "k--s"});
    Refused({"mv", "s", "T"});
    EXPECT_EQ(FoldersOf("T"), Names{"s"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"T", "s"}));
}

TEST_F(CommandsFolderNames, ImportGoesToTheFolderThatIsShownSo) {
    Done({"mkdir", "k--s"});
    Done({"import", Image("a.ppm", 1), "--folder", "s"});
    m_media.MakeFolder("s");
    Image("s/b.ppm", 2);
    Done({"import", Media("s")});
    EXPECT_EQ(FoldersOf("\\"), Names{"s"});
    EXPECT_EQ(ItemsOf("k--s"), (Names{"a.ppm", "b.ppm"}));
}

// --- Several folders of one name -----------------------------------------------------------------------------------

TEST_F(CommandsFolderNames, ANameThatFitsSeveralFolders_IsRefusedWithTheirRows) {
    MakeTwins();
    ASSERT_EQ(FoldersOf("\\"), (Names{"s", "s"}));
    const Json folders = Done({"ls", "\\"})["folders"];
    const std::string first = "#" + std::to_string(folders[0]["row"].get<int>());
    const std::string second = "#" + std::to_string(folders[1]["row"].get<int>());
    const std::string image = Image("a.ppm");
    for (const Args& arguments :
         {Args{"ls", "s"}, Args{"rmdir", "s"}, Args{"mv", "s", "\\"}, Args{"rename", "s", "t"}, Args{"mkdir", "s"},
          Args{"mkdir", "s\\t"}, Args{"import", image, "--folder", "s"}, Args{"show", "s\\a.ppm"},
          Args{"reorder", "s", "--to", "1"}, Args{"sheet", m_folder / "out.png", "--folder", "s"}}) {
        const std::string line = Refused(arguments);
        EXPECT_NE(line.find(first + ", " + second), std::string::npos) << arguments.front() << ": " << line;
    }
    EXPECT_EQ(FoldersOf("\\"), (Names{"s", "s"}));
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "0");
    Done({"ls", "l--s"});
    Done({"import", image, "--folder", second});
    EXPECT_EQ(ItemsOf("l--s"), Names{"a.ppm"});
    Done({"rename", second, "t"});
    EXPECT_EQ(ItemsOf("t"), Names{"a.ppm"});
    Done({"rmdir", "s"});
}

TEST_F(CommandsFolderNames, FilesOfADirectoryThatFitsSeveralFolders_AreNamed) {
    MakeTwins();
    m_media.MakeFolder("s");
    Image("s/b.ppm", 2);
    const QfcResult result = Qfc({"import", Image("a.ppm", 1), Media("s")});
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("b.ppm: several folders are called s: #"), std::string::npos) << result.err;
    EXPECT_EQ(ItemsOf("Imported"), Names{"a.ppm"});
}

TEST_F(CommandsFolderNames, ImportIntoAFolderThatItsPathDoesNotReach_IsRefused) {
    Done({"mkdir", "s"});
    Done({"mkdir", "t"});
    const std::string second = RowOf("\\", "t");
    Exec("update FOLDER_TABLE set FOLDER_NAME = 's' where FOLDER_NAME = 't'");
    Refused({"import", Image("a.ppm"), "--folder", second});
    Refused({"ls", "s"});
    EXPECT_EQ(ItemsOf(second), Names{});
    Done({"rename", second, "t"});
    Done({"import", Media("a.ppm"), "--folder", second});
    EXPECT_EQ(ItemsOf("t"), Names{"a.ppm"});
}

// --- Translated names ----------------------------------------------------------------------------------------------

TEST_F(CommandsFolderNames, TranslatedNamesAreTaken) {
    Done({"mkdir", "Photographs"});
    Done({"mkdir", "Other"});
    TranslatePhotographs();
    Refused({"mkdir", "Fotografien"});
    Refused({"rename", "Other", "Fotografien"});
    Done({"import", Image("a.ppm"), "--folder", "Fotografien"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"Fotografien", "Other"}));
    EXPECT_EQ(ItemsOf("Photographs"), Names{"a.ppm"});
}

TEST_F(CommandsFolderNames, ANameWhoseTranslationIsTaken_IsRefused_AndADirectoryKeepsItsOwn) {
    Done({"mkdir", "Fotografien"});
    TranslatePhotographs();
    Refused({"mkdir", "Photographs"});
    Done({"mkdir", "x"});
    Refused({"rename", "x", "Photographs"});
    ImportDirectory("Photographs");
    EXPECT_EQ(FoldersOf("\\"), (Names{"Fotografien", "x", "Photographs"}));
    EXPECT_EQ(ItemsOf("Photographs"), Names{"a.ppm"});
    EXPECT_EQ(ItemsOf("Fotografien"), Names{});
}

TEST_F(CommandsFolderNames, StoredNamesThatLieAboutTheirLengths_CanBeLookedAt) {
    Done({"import", Image("a.ppm"), "--folder", "F"});
    for (const char* name : {"||-4||x", "||2147483647||a||-2147483648||b", "||0||", "--||5||"}) {
        SCOPED_TRACE(name);
        Exec(std::string("update FOLDER_TABLE set FOLDER_NAME = '") + name + "' where PARENT_ID <> -1");
        Done({"tree"});
        const Json listed = Done({"ls", "\\"})["folders"];
        ASSERT_EQ(listed.size(), 1u);
        const std::string row = "#" + std::to_string(listed[0]["row"].get<int>());
        EXPECT_EQ(ItemsOf(row), Names{"a.ppm"});
        EXPECT_EQ(Done({"find", "a.ppm"}).size(), 1u);
        Done({"check"});
    }
}

TEST_F(CommandsFolderNames, ItemsThatWouldBeShownAlike_AreRefused) {
    Done({"import", Video("v.mp4"), Image("b.ppm"), "--folder", "F"});
    Done({"import", Video("w.mp4"), "--folder", "G"});
    TranslatePhotographs();
    Refused({"rename", "F\\b.ppm", "Leben.mp4"});
    Refused({"rename", "F\\b.ppm", "v.mp4"});
    Done({"rename", "G\\w.mp4", "Leben.mp4"});
    Refused({"mv", "G\\Leben.mp4", "F"});
    EXPECT_EQ(ItemsOf("F"), (Names{"Leben.mp4", "b.ppm"}));
}

}  // namespace
}  // namespace qfc::test
