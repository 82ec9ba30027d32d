#include "TagCommandsTest.h"

#include <csignal>
#include <filesystem>

namespace qfc::test {
namespace {

// Ctrl-C and its like while something goes.
class CommandsRemovalSignals : public TagCommandsTest, public ::testing::WithParamInterface<int> {
protected:
    void SetUp() override {
        TagCommandsTest::SetUp();
        ImportAbc();
        Done({"tag", "create", "Sea"});
        Done({"tag", "add", "Sea", "F\\a.ppm", "F\\b.ppm"});
    }
    QfcResult Interrupted(const Args& arguments) const { return QfcInterrupted(arguments, GetParam()); }
    std::string Links() const { return Sql("select count(*) from TAG_ITEM_RELATION_TABLE"); }
};

TEST_P(CommandsRemovalSignals, AFolderTakesItsItemsAlong) {
    EXPECT_EQ(Interrupted({"rmdir", "F", "--recursive"}).exit, 0);
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "0");
    EXPECT_EQ(Links(), "0");
    ExpectSound();
}

TEST_P(CommandsRemovalSignals, TheFoldersAboveItAreLeftAlone) {
    Done({"mkdir", "G\\H\\I"});
    Done({"mv", "F", "G\\H\\I"});
    const QfcResult result = Interrupted({"--json", "rmdir", "G", "--recursive"});
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(result.err, "qfc: interrupted\nqfc: 1 of 4 folders and 3 of 3 items are not seen in G any more\n");
    const Json report = Json::parse(result.out);
    EXPECT_EQ(report["interrupted"], true);
    EXPECT_EQ(report["failed"], Json::array());
    EXPECT_EQ(report["removed"], nullptr);
    EXPECT_EQ(FoldersOf("G\\H"), Names{"I"});
    EXPECT_EQ(FoldersOf("G\\H\\I"), Names{});
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "0");
    EXPECT_EQ(Links(), "0");
    ExpectSound();
}

TEST_P(CommandsRemovalSignals, AnItemTakesItsLinksAlong) {
    EXPECT_EQ(Interrupted({"rm", "F\\a.ppm"}).exit, 0);
    EXPECT_EQ(Links(), "1");
    ExpectSound();
}

TEST_P(CommandsRemovalSignals, OnATerminalTheFirstIsAnsweredInALine) {
    if (!CanMakeTerminal()) GTEST_SKIP() << "there are no terminals here";
    RawDb writer(Database());
    writer.Exec("begin immediate");
    QfcProcess process(WithLibrary({"rm", "F\\a.ppm"}), {.terminal = true});
    ASSERT_TRUE(process.WaitUntilCaught(GetParam()));
    process.Signal(GetParam());
    ASSERT_TRUE(process.WaitUntilLeftToItself(GetParam()));
    writer.Exec("rollback");
    const QfcResult result = process.Wait();
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(result.err, "\r\nqfc: ending in good order; once more ends it at once\r\n");
}

// Ctrl-S, and then the signal from elsewhere: a program that waited for the terminal would keep the library for ever.
TEST_P(CommandsRemovalSignals, OnATerminalThatTakesNothing_TheWorkGoesOn) {
    if (!CanMakeTerminal()) GTEST_SKIP() << "there are no terminals here";
    RawDb writer(Database());
    writer.Exec("begin immediate");
    QfcProcess process(WithLibrary({"rm", "F\\a.ppm"}), {.terminal = true});
    ASSERT_TRUE(process.WaitUntilCaught(GetParam()));
    process.HoldTerminal();
    process.Signal(GetParam());
    ASSERT_TRUE(process.WaitUntilLeftToItself(GetParam()));
    writer.Exec("rollback");
    EXPECT_EQ(process.Wait().exit, 0);
    EXPECT_EQ(ItemsOf("F"), (Names{"b.ppm", "c.ppm"}));
}

TEST_P(CommandsRemovalSignals, TheSecondEndsItAtOnce) {
    RawDb writer(Database());
    writer.Exec("begin immediate");
    QfcProcess process(WithLibrary({"rm", "F\\a.ppm"}), {});
    ASSERT_TRUE(process.WaitUntilCaught(GetParam()));
    process.Signal(GetParam());
    ASSERT_TRUE(process.WaitUntilLeftToItself(GetParam()));
    process.Signal(GetParam());
    EXPECT_EQ(process.Wait().exit, 128 + GetParam());
}

TEST_P(CommandsRemovalSignals, AMovedItemIsInOnePlace) {
    Done({"mkdir", "G"});
    EXPECT_EQ(Interrupted({"mv", "F\\a.ppm", "G"}).exit, 0);
    EXPECT_EQ(ItemsOf("G"), Names{"a.ppm"});
    EXPECT_EQ(ItemsOf("F"), (Names{"b.ppm", "c.ppm"}));
}

TEST_P(CommandsRemovalSignals, AGalleryStopsBetweenFolders_AndSaysSo) {
    Done({"mkdir", "G"});
    const QfcResult result = Interrupted({"gallery", "rm", "Media"});
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("cannot remove the gallery Media: interrupted"), std::string::npos) << result.err;
    EXPECT_EQ(FoldersOf("\\").back(), "G");
    ExpectSound();
    Done({"gallery", "rm", "Media"});
}

TEST_P(CommandsRemovalSignals, AnExportLeavesNothingThatIsNotWhole) {
    Exec("insert into CACHE_DATA_TABLE values(50000000, 0, zeroblob(50000000), 0, zeroblob(16))");
    const TempFolder target;
    QfcProcess process(WithLibrary({"export", target / "copy.db"}), {});
    ASSERT_TRUE(process.WaitUntilCaught(GetParam()));
    process.Signal(GetParam());
    const QfcResult result = process.Wait();
    Names left;
    for (const auto& file : std::filesystem::directory_iterator(target.Path())) left.push_back(file.path().filename());
    // The copy may have been whole before the signal came.
    EXPECT_TRUE(left.empty() || left == Names{"copy.db"});
    if (left.empty()) {
        EXPECT_EQ(result.exit, 1);
        EXPECT_EQ(result.err, "qfc: interrupted; " + (target / "copy.db") + " is not written\n");
    }
}

INSTANTIATE_TEST_SUITE_P(Signals, CommandsRemovalSignals, ::testing::Values(SIGINT, SIGTERM, SIGHUP));

}  // namespace
}  // namespace qfc::test
