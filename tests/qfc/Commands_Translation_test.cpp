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
