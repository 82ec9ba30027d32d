#include "CommandsTest.h"

namespace qfc::test {
namespace {

class CommandsCommandLine : public CommandsTest {};

const std::vector<Args> kCommands = {
    {},
    {"import"},
    {"tree"},
    {"ls"},
    {"show"},
    {"find"},
    {"gallery"},
    {"gallery", "create"},
    {"gallery", "list"},
    {"gallery", "rm"},
    {"mkdir"},
    {"rmdir"},
    {"mv"},
    {"rename"},
    {"rm"},
    {"reorder"},
    {"thumbs"},
    {"sheet"},
    {"film"},
    {"export"},
    {"import-library"},
    {"clear"},
    {"check"},
};

TEST_F(CommandsCommandLine, EveryCommandHasHelpWithAnExample) {
    for (Args command : kCommands) {
        command.push_back("--help");
        const QfcResult result = Qfc(command);
        EXPECT_EQ(result.exit, 0) << command.front();
        EXPECT_NE(result.out.find("Example:\n  qfc "), std::string::npos) << result.out;
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(CommandsCommandLine, HelpMakesNoLibrary) {
    Qfc({"tree", "--help"});
    EXPECT_FALSE(std::filesystem::exists(m_library));
}

TEST_F(CommandsCommandLine, WrongUsage_ExitsTwoWithOneLine) {
    const std::vector<Args> wrong = {
        {},
        {"fly"},
        {"tree", "--fast"},
        {"tree", "surplus"},
        {"import"},
        {"ls"},
        {"ls", "A", "--sort", "size"},
        {"ls", "A", "--desc"},
        {"gallery"},
        {"gallery", "create"},
        {"rename", "A"},
        {"rename", "A", ""},
        {"rename", "A", "B\\C"},
        {"mv", "A"},
        {"reorder", "A"},
        {"reorder", "A", "--by", "name", "--to", "1"},
        {"reorder", "A", "--to", "0"},
        {"reorder", "A", "--to", "1", "--desc"},
        {"sheet", "out.png", "--columns", "0"},
        {"sheet", "out.png", "--columns", "99999"},
        {"gallery", "create", "12"},
        {"mkdir", "\\"},
        {"clear"},
        {"clear", "--yes=no"},
        {"clear", "--yes=false"},
        {"clear", "--yes=0"},
        {"gallery", "rm", ""},
        {"gallery", "rm", "--", ""},
        {"tree", "--gallery", ""},
        {"tree", "--gallery="},
        {"find", "a", "--gallery", ""},
        {"tag", "delete", "Beach", "--gallery", ""},
        {"tag", "add", "Beach", "A\\b", "--gallery", ""},
        {"tag", "create", "Beach", "--category", ""},
        {"tag", "create", "Beach", "--category="},
        {"import", "a.ppm", "--folder", ""},
        {"sheet", "out.png", "--folder", ""},
    };
    for (const Args& arguments : wrong) {
        const QfcResult result = Qfc(arguments);
        std::string text;
        for (const std::string& argument : arguments) text += argument + " ";
        EXPECT_EQ(result.exit, 2) << text << result.out << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << text << result.err;
    }
}

TEST_F(CommandsCommandLine, WordsBehindACommandAreItsArguments) {
    const std::string path = Image("tree.ppm");
    Done({"import", path, "--folder", "find"});
    Done({"rename", "find\\tree.ppm", "tree"});
    EXPECT_EQ(ItemsOf("find"), Names{"tree"});
}

TEST_F(CommandsCommandLine, BracketsAndCommasAreLettersOfAName) {
    const std::string path = m_media.MakeFolder("[a,b]");
    Image("[a,b]/x.ppm");
    Done({"import", path});
    EXPECT_EQ(ItemsOf("[a,b]"), Names{"x.ppm"});
}

TEST_F(CommandsCommandLine, GlobalOptionsMayStandBehindTheCommand) {
    const QfcResult result = QfcProcess({"tree", "--json", "--data-dir", m_library}, {}).Wait();
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_TRUE(Json::accept(result.out)) << result.out;
    EXPECT_TRUE(std::filesystem::exists(Database()));
}

TEST_F(CommandsCommandLine, TheEnvironmentNamesTheLibraryWhenNoOptionDoes) {
    setenv("QFCLIB_DATA_DIR", m_library.c_str(), 1);
    EXPECT_EQ(QfcProcess({"mkdir", "A"}, {}).Wait().exit, 0);
    EXPECT_EQ(FoldersOf("\\"), Names{"A"});
}

TEST_F(CommandsCommandLine, Quiet_SaysNothingOfWhatWasDone) {
    const QfcResult result = Qfc({"--quiet", "import", Image("a.ppm")});
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(Qfc({"--quiet", "tree"}).out, "");
}

TEST_F(CommandsCommandLine, DataFolderThatCannotBeMade_Fails) {
    m_folder.Write("file", "in the way");
    const QfcResult result = QfcProcess({"--data-dir", m_folder / "file", "tree"}, {}).Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
}

TEST_F(CommandsCommandLine, DataFolderTooLongForTheInterface_Fails) {
    const QfcResult result = QfcProcess({"--data-dir", m_folder / std::string(240, 'x'), "tree"}, {}).Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("too long"), std::string::npos) << result.err;
    const QfcResult change = QfcProcess({"--data-dir", m_folder / std::string(240, 'x'), "mkdir", "A"}, {}).Wait();
    EXPECT_EQ(change.exit, 1);
    EXPECT_FALSE(std::filesystem::exists(".lock"));
}

TEST_F(CommandsCommandLine, OutputThatCannotBeWritten_Fails) {
    Done({"mkdir", "A"});
    const std::string command =
        std::string(QFC_PROGRAM) + " --data-dir '" + m_library + "' tree > /dev/full 2>/dev/null";
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
}

TEST_F(CommandsCommandLine, NewNamesThatAreNotUtf8_AreWrongUsage) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    for (const std::string bad : {"x\xFF", "\xC3", "\xED\xA0\x80", "\xC0\xAF", "\xF4\x90\x80\x80", "\xE2\x82"}) {
        Refused({"mkdir", bad}, 2);
        Refused({"rename", "A", bad}, 2);
        Refused({"rename", "A\\a.ppm", bad}, 2);
        Refused({"gallery", "create", bad}, 2);
    }
    for (const std::string good : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x8E\x9E", "\xEE\x80\x80", "\xED\x9F\xBF"}) {
        Done({"rename", "A\\a.ppm", good});
        EXPECT_EQ(ItemsOf("A"), Names{good});
        Done({"rename", "A\\" + good, "a.ppm"});
    }
    EXPECT_EQ(FoldersOf("\\"), Names{"A"});
}

TEST_F(CommandsCommandLine, AnEmptyDataFolder_IsWrongUsageAndTouchesNoLibrary) {
    setenv("QFCLIB_DATA_DIR", m_library.c_str(), 1);
    for (const Args& arguments : {Args{"--data-dir", "", "mkdir", "A"}, Args{"mkdir", "A", "--data-dir="}}) {
        const QfcResult result = QfcProcess(arguments, {}).Wait();
        EXPECT_EQ(result.exit, 2) << result.out << result.err;
    }
    EXPECT_FALSE(std::filesystem::exists(m_library));
    unsetenv("QFCLIB_DATA_DIR");
}

TEST_F(CommandsCommandLine, CountsBelowOne_AreExplained) {
    EXPECT_NE(Refused({"sheet", "out.png", "--columns", "0"}, 2).find("must be 1 or more"), std::string::npos);
    EXPECT_NE(Refused({"reorder", "A", "--to", "-3"}, 2).find("must be 1 or more"), std::string::npos);
    EXPECT_EQ(Refused({"reorder", "A", "--to", "x"}, 2).find("must be 1 or more"), std::string::npos);
}

TEST_F(CommandsCommandLine, AnUnknownCommand_IsNamed) {
    EXPECT_NE(Refused({"bogus"}, 2).find("bogus"), std::string::npos);
    EXPECT_NE(Refused({"gallery", "bogus"}, 2).find("gallery bogus"), std::string::npos);
}

TEST_F(CommandsCommandLine, UsageLinesShowTheWholeCommand) {
    EXPECT_NE(Qfc({"reorder", "--help"}).out.find("Usage: qfc reorder "), std::string::npos);
    EXPECT_NE(Qfc({"gallery", "rm", "--help"}).out.find("Usage: qfc gallery rm "), std::string::npos);
    EXPECT_NE(Qfc({"--help"}).out.find("Usage: qfc "), std::string::npos);
}

TEST_F(CommandsCommandLine, Json_IsOneDocumentOnFailureToo) {
    Done({"mkdir", "A"});
    const std::vector<Args> failing = {{"show", "nothing"},
                                       {"ls", "nowhere"},
                                       {"find", "nothing"},
                                       {"mkdir", "A"},
                                       {"rm", "nothing"},
                                       {"mv", "nothing", "A"},
                                       {"rename", "nothing", "x"},
                                       {"reorder", "A", "--by", "name"},
                                       {"sheet", m_folder / "out.png"},
                                       {"import", Media("missing.jpg")},
                                       {"import", Media("missing.jpg"), "--gallery", "7"},
                                       {"import-library", Media("missing.db")},
                                       {"gallery", "rm", "nothing"},
                                       {"export", m_folder / "missing/copy.db"}};
    for (const Args& arguments : failing) EXPECT_TRUE(Document(arguments, 1).is_structured()) << arguments.front();
    EXPECT_NE(Document({"show", "nothing"}, 1)["error"].get<std::string>().find("nothing"), std::string::npos);
    EXPECT_EQ(Document({"find", "nothing"}, 1), Json::array());
}

TEST_F(CommandsCommandLine, Json_OfWrongUsageIsADocumentToo) {
    for (const Args& arguments : {Args{"fly"}, Args{"ls"}, Args{"mkdir", "\\"}, Args{"tree", "--fast"}, Args{"clear"}})
        EXPECT_TRUE(Document(arguments, 2).contains("error")) << arguments.front();
    const QfcResult last = Qfc({"ls", "A", "--sort", "size", "--json"});
    EXPECT_EQ(last.exit, 2);
    EXPECT_EQ(Qfc({"ls"}).out, "");
}

}  // namespace
}  // namespace qfc::test
