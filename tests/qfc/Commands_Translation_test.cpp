#include "TagCommandsTest.h"

namespace qfc::test {
namespace {

namespace fs = std::filesystem;

class CommandsTranslation : public TagCommandsTest {
protected:
    void SetUp() override {
        TagCommandsTest::SetUp();
        Done({"import", Video("v.mp4"), "--folder", "Trips"});
        // The section is that of what the folder holds: with the video, and once it is empty.
        WriteHost("qvTWTranslateData.dat",
                  "[TW_FOLDER_0]\r\nTrips=Reisen\r\n[TW_FOLDER_1]\r\nTrips=Reisen\r\n"
                  "[TW_ITEMTYPE_VIDEO]\r\nv.mp4=Ostsee ö\r\n");
    }
    std::string Ini() const { return m_library + "/Cinelume.ini"; }
};

TEST_F(CommandsTranslation, NamesAreShownAsTheyAre_UntilTranslationIsTurnedOn) {
    EXPECT_EQ(FoldersOf("\\"), Names{"Trips"});
    Done({"--translate", "on", "tree"});
    EXPECT_EQ(FoldersOf("\\"), Names{"Reisen"});
    EXPECT_EQ(ItemsOf("Reisen"), Names{"Ostsee ö"});
    EXPECT_EQ(ItemsOf("Trips"), Names{"Ostsee ö"});
    EXPECT_EQ(Done({"show", "Reisen\\Ostsee ö"})["paths"], Json{"Reisen\\Ostsee ö"});
    EXPECT_EQ(Done({"show", "Trips\\v.mp4"})["name"], "Ostsee ö");
    Done({"--translate", "off", "tree"});
    EXPECT_EQ(FoldersOf("\\"), Names{"Trips"});
}

TEST_F(CommandsTranslation, TheSwitchIsOneLineOfTheApplicationIni) {
    m_folder.Write("library/Cinelume.ini", "; mine\r\n[Other]\r\nkey=value\r\n");
    Done({"--translate", "on", "tree"});
    EXPECT_EQ(ReadFile(Ini()),
              "; mine\r\n[Other]\r\nkey=value\r\n[Orvel Cinelume Init Project]\r\nSupportTWTranslateMode=1\r\n");
    Done({"--translate", "off", "tree"});
    EXPECT_NE(ReadFile(Ini()).find("SupportTWTranslateMode=0\r\n"), std::string::npos);
    Refused({"--translate", "maybe", "tree"}, 2);
}

TEST_F(CommandsTranslation, AWriteAfterTranslatedNamesWereShown_KeepsTheOriginalOnes) {
    Done({"tag", "create", "Beach"});
    Done({"mkdir", "Other"});
    Done({"--translate", "on", "show", "Trips\\v.mp4"});
    Done({"tag", "add", "Beach", "Reisen\\Ostsee ö"});
    Done({"reorder", "Reisen", "--by", "name"});
    Done({"mv", "Reisen\\Ostsee ö", "Other"});
    Done({"mv", "Reisen", "Other"});
    EXPECT_EQ(Sql("select ITEM_NAME from ITEM_TABLE"), "'v.mp4'");
    EXPECT_EQ(Sql("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'Trips'"), "1");
    EXPECT_EQ(Sql("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'Reisen'"), "0");
}

TEST_F(CommandsTranslation, EveryCommandCallsAnItemAsItIsShown) {
    Done({"tag", "create", "Beach"});
    Done({"--translate", "on", "tree"});
    EXPECT_EQ(Qfc({"tag", "add", "Beach", "Trips\\v.mp4"}).out, "tagged Ostsee ö: Beach\n");
    EXPECT_EQ(Qfc({"tag", "remove", "Beach", "Trips\\v.mp4"}).out, "untagged Ostsee ö\n");
    const std::string picture = m_folder / "out.png";
    EXPECT_EQ(Done({"film", "Trips\\v.mp4", picture})["title"], "Ostsee ö");
    EXPECT_EQ(Done({"sheet", picture, "--folder", "Trips"})["title"], "Reisen");
    Done({"--translate", "off", "tree"});
    EXPECT_EQ(Done({"film", "Trips\\v.mp4", picture})["title"], "v.mp4");
    EXPECT_EQ(Done({"sheet", picture, "--folder", "Trips"})["title"], "Trips");
}

TEST_F(CommandsTranslation, ASheetOfAGalleryBearsTheNameThatTheCommandLineTakes) {
    WriteHost("qvTWTranslateData.dat", "[TW_FOLDER_0]\r\nMedia=Medien\r\n[TW_FOLDER_1]\r\nMedia=Medien\r\n");
    Done({"--translate", "on", "tree"});
    EXPECT_EQ(Done({"sheet", m_folder / "out.png"})["title"], "Media");
}

TEST_F(CommandsTranslation, FindLooksForTheNameThatIsShown_AndTheStoredOne) {
    Done({"--translate", "on", "tree"});
    for (const char* text : {"OSTSEE", "Ö", "v.mp", "ostsee ö"}) {
        EXPECT_EQ(NamesIn(Done({"find", text})), Names{"Ostsee ö"}) << text;
    }
    Done({"--translate", "off", "tree"});
    EXPECT_EQ(NamesIn(Done({"find", "v.mp"})), Names{"v.mp4"});
    EXPECT_EQ(Document({"find", "Ostsee"}, 1), Json::array());
}

TEST_F(CommandsTranslation, RenamingATranslatedItemStoresTheNewName) {
    Done({"--translate", "on", "rename", "Reisen\\Ostsee ö", "w.mp4"});
    EXPECT_EQ(Sql("select ITEM_NAME from ITEM_TABLE"), "'w.mp4'");
    EXPECT_EQ(ItemsOf("Reisen"), Names{"w.mp4"});
}

TEST_F(CommandsTranslation, NamesThatLookEncodedAreShownAndFoundWhileTranslated) {
    m_media.MakeFolder("a--b");
    Image("a--b/i.ppm", 1);
    Done({"--translate", "on", "import", Media("a--b")});
    Done({"mkdir", "key--Coast"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"Reisen", "a--b", "Coast"}));
    EXPECT_EQ(ItemsOf("a--b"), Names{"i.ppm"});
    Done({"import", Media("a--b")});
    Done({"ls", "Coast"});
    EXPECT_EQ(FoldersOf("\\").size(), 3u);
    Done({"mv", "a--b\\i.ppm", "Coast"});
    EXPECT_EQ(ItemsOf("key--Coast"), Names{"i.ppm"});
}

TEST_F(CommandsTranslation, ASwitchThatCannotBeStored_IsAFailure) {
    if (!CanRunUnprivileged()) GTEST_SKIP() << "nobody else can start the program here";
    fs::permissions(m_folder.Path(), fs::perms(0755));
    fs::permissions(m_library, fs::perms(0555));
    const QfcWorld nobody{.unprivileged = true, .largestFile = std::nullopt, .narrowPipe = false};
    EXPECT_EQ(Qfc({"--translate", "off", "tree"}, nobody).exit, 0);
    const QfcResult result = Qfc({"--translate", "on", "tree"}, nobody);
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("Cinelume.ini"), std::string::npos) << result.err;
}

// --- translate collect ---------------------------------------------------------------------------------------------

TEST_F(CommandsTranslation, CollectWritesTheNamesThatHaveNoTranslation) {
    Done({"mkdir", "New"});
    Exec("insert into ITEM_TABLE (ITEM_ID, ITEM_NAME, ITEM_TYPE) values (zeroblob(16), 'Fade', 64)");
    Exec(
        "insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select ID, zeroblob(16), 0 from FOLDER_TABLE "
        "where FOLDER_NAME = 'New'");
    const std::string before = DumpOf(Database());
    const Json report = Done({"translate", "collect"});
    EXPECT_EQ(report["written"].size(), 2u) << report;
    EXPECT_EQ(report["already"], 1);
    const std::string file = ReadFile(HostFile("qvTWTranslateData.dat"));
    EXPECT_NE(file.find("Trips=Reisen\r\n"), std::string::npos) << file;
    EXPECT_NE(file.find("New=New\r\n"), std::string::npos) << file;
    EXPECT_NE(file.find("[TW_ITEMTYPE_TX]\r\nFade=Fade\r\n"), std::string::npos) << file;
    EXPECT_EQ(DumpOf(Database()), before);
    EXPECT_TRUE(Done({"translate", "collect"})["written"].empty());
    EXPECT_EQ(ReadFile(HostFile("qvTWTranslateData.dat")), file);
}

TEST_F(CommandsTranslation, CollectLeavesTheSwitchesAsTheyWere) {
    Done({"--translate", "on", "translate", "collect"});
    EXPECT_EQ(FoldersOf("\\"), Names{"Reisen"});
    EXPECT_EQ(ReadFile(Ini()).find("CreateTWTranslateData"), std::string::npos);
    Done({"--translate", "off", "translate", "collect"});
    EXPECT_EQ(FoldersOf("\\"), Names{"Trips"});
}

TEST_F(CommandsTranslation, CollectLeavesTheSettingsByteForByte) {
    const std::string other = "; mine\r\n[Other]\r\nkey=value\r\n";
    for (const std::string& before : {other, other + "[USERMODE]\r\nCreateTWTranslateData = \"0\"\r\nLater=1\r\n",
                                      other + "[usermode]\r\ncreatetwtranslatedata=1\r\n", other + "[UserMode]\r\n",
                                      other + "[Orvel Cinelume Init Project]\r\nSupportTWTranslateMode='0'\r\n",
                                      other + "[Orvel Cinelume Init Project]\r\nSupportTWTranslateMode=\r\n"}) {
        m_folder.Write("library/Cinelume.ini", before);
        Done({"translate", "collect"});
        EXPECT_EQ(ReadFile(Ini()), before);
    }
}

TEST_F(CommandsTranslation, CollectMakesNoSettings) {
    fs::remove(Ini());
    Done({"mkdir", "New"});
    EXPECT_EQ(Done({"translate", "collect"})["written"].size(), 1u);
    EXPECT_FALSE(fs::exists(Ini()));
}

// The library takes the switches from the settings alone.
TEST_F(CommandsTranslation, CollectWhereSettingsCannotBeWritten_SaysWhyTheyShouldBe) {
    if (!CanRunUnprivileged()) GTEST_SKIP() << "nobody else can start the program here";
    fs::permissions(m_folder.Path(), fs::perms(0755));
    fs::permissions(m_library, fs::perms(0555));
    const QfcWorld nobody{.unprivileged = true, .largestFile = std::nullopt, .narrowPipe = false};
    const QfcResult result = Qfc({"translate", "collect"}, nobody);
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("Cinelume.ini, where collecting has to be switched on"), std::string::npos) << result.err;
}

// As a collecting that was killed leaves them.
TEST_F(CommandsTranslation, SettingsThatHaveNamesWrittenOver_AreWarnedOf) {
    const std::string collect = "[USERMODE]\r\nCreateTWTranslateData=1\r\n";
    m_folder.Write("library/Cinelume.ini", collect);
    EXPECT_EQ(Qfc({"gallery", "list"}).err, "");
    m_folder.Write("library/Cinelume.ini", collect + "[Orvel Cinelume Init Project]\r\nSupportTWTranslateMode=1\r\n");
    const QfcResult result = Qfc({"gallery", "list"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(result.err,
              "qfc: names that are shown are written over their translations: CreateTWTranslateData is 1 "
              "in " +
                  Ini() + "\n");
    EXPECT_EQ(Qfc({"--translate", "off", "gallery", "list"}).err, "");
}

TEST_F(CommandsTranslation, NamesThatCannotBeKeys_AreSaid) {
    Done({"mkdir", "a=b"});
    const Json report = Document({"translate", "collect"}, 1);
    ASSERT_EQ(report["refused"].size(), 1u);
    EXPECT_NE(report["refused"][0].get<std::string>().find("a=b"), std::string::npos);
}

TEST_F(CommandsTranslation, AFolderWithoutAName_IsNotCollected) {
    Done({"mkdir", "New"});
    Exec("update FOLDER_TABLE set FOLDER_NAME = '' where FOLDER_NAME = 'New'");
    const Json report = Done({"translate", "collect"});
    EXPECT_TRUE(report["written"].empty()) << report;
    EXPECT_TRUE(report["refused"].empty()) << report;
}

TEST_F(CommandsTranslation, HelpHasAnExample) {
    for (const Args& command : {Args{"translate"}, Args{"translate", "collect"}}) {
        EXPECT_NE(Qfc(Joined(command, {"--help"})).out.find("Example:\n  qfc translate"), std::string::npos);
    }
    EXPECT_NE(Qfc({"--help"}).out.find("--translate"), std::string::npos);
}

}  // namespace
}  // namespace qfc::test
