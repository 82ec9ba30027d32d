#include "CommandsTest.h"

#include <sys/stat.h>

namespace qfc::test {
namespace {

namespace fs = std::filesystem;

class CommandsWholeLibrary : public CommandsTest {
protected:
    std::string Out(const std::string& name) const { return m_folder / name; }
    // The same program on a second library.
    Args OnOther(const Args& arguments) const { return Joined({"--data-dir", m_folder / "other"}, arguments); }
    QfcResult Other(const Args& arguments) const { return QfcProcess(OnOther(arguments), {}).Wait(); }
    // Stores so many folders "d", one in the other, below the one with that row; the row of the last.
    static int Deepen(const std::string& library, int row, int count) {
        RawDb db(library);
        const int last = std::stoi(db.Cell("select max(ID) from FOLDER_TABLE"));
        db.Exec("with recursive LEVEL(I) as (select 1 union all select I + 1 from LEVEL where I < " +
                std::to_string(count) +
                ") insert into FOLDER_TABLE (VERSION, PREDEFINED_ID, FOLDER_NAME, ADOPT_TYPE, TRUSTY_TYPE, TYPE_EXTRA, "
                "PARENT_ID, EXPAND_TYPE, ORDER_INDEX, ID) select VERSION, 0, 'd', ADOPT_TYPE, TRUSTY_TYPE, TYPE_EXTRA, "
                "case I when 1 then ID else I - 1 + " +
                std::to_string(last) + " end, EXPAND_TYPE, 1, I + " + std::to_string(last) +
                " from LEVEL join FOLDER_TABLE on ID = " + std::to_string(row));
        return last + count;
    }
    std::string OtherDatabase() const { return m_folder / "other/CinelumeDatabase.db"; }
};

// --- export
// -------------------------------------------------------------------------------------------------------------

TEST_F(CommandsWholeLibrary, ExportWritesALibraryWithTheSameContent) {
    Done({"import", Video("v.mp4"), "--folder", "A\\B"});
    Done({"export", Out("copy.db")});
    EXPECT_EQ(DumpOf(Out("copy.db")), DumpOf(Database()));
}

TEST_F(CommandsWholeLibrary, ExportReplacesAnOlderCopy_AndLeavesNothingElse) {
    Done({"mkdir", "A"});
    m_folder.Write("copy.db", "something else");
    Done({"export", Out("copy.db")});
    EXPECT_EQ(DumpOf(Out("copy.db")), DumpOf(Database()));
    EXPECT_EQ(m_folder.Entries().size(), 2u);
}

TEST_F(CommandsWholeLibrary, ExportRefusesTheLibraryItself_HoweverSpelt) {
    Done({"mkdir", "A"});
    fs::create_symlink(Database(), Out("link.db"));
    fs::create_hard_link(Database(), Out("hard.db"));
    fs::create_directory_symlink(m_library, Out("dir"));
    const std::string before = ReadFile(Database());
    for (const std::string& path : {Database(), m_library + "/../library/CinelumeDatabase.db", Out("link.db"),
                                    Out("hard.db"), Out("dir/CinelumeDatabase.db"), Database() + "-journal"}) {
        EXPECT_NE(Refused({"export", path}).find("the library itself"), std::string::npos) << path;
    }
    EXPECT_EQ(ReadFile(Database()), before);
    EXPECT_TRUE(fs::is_symlink(Out("link.db")));
}

// The settings would be gone, and who waits at the lock would wait at another file than who comes.
TEST_F(CommandsWholeLibrary, ExportRefusesTheSettingsAndTheLocks_ThereOrNot) {
    Done({"mkdir", "A"});
    Done({"--translate", "on", "tree"});
    const std::string settings = m_library + "/Cinelume.ini";
    const std::string before = ReadFile(settings);
    fs::create_symlink(settings, Out("link.db"));
    for (const std::string& path :
         {settings, settings + ".lock", Database() + ".lock", Out("link.db"), m_library + "/../library/Cinelume.ini"}) {
        EXPECT_NE(Refused({"export", path}).find("belongs to the library"), std::string::npos) << path;
    }
    EXPECT_EQ(ReadFile(settings), before);
    EXPECT_EQ(ReadFile(Database() + ".lock"), "");
    fs::remove(settings);
    fs::remove(settings + ".lock");
    Refused({"export", settings});
    Refused({"export", settings + ".lock"});
    EXPECT_FALSE(fs::exists(settings));
    EXPECT_FALSE(fs::exists(settings + ".lock"));
}

TEST_F(CommandsWholeLibrary, ExportFollowsALink_AndReplacesWhatItNames) {
    Done({"import", Image("a.ppm")});
    std::filesystem::create_symlink("real.db", Out("link.db"));
    Done({"export", Out("link.db")});
    EXPECT_TRUE(std::filesystem::is_symlink(Out("link.db")));
    EXPECT_EQ(ReadFile(Out("real.db")).substr(0, 6), "SQLite");
}

TEST_F(CommandsWholeLibrary, ExportReplacesNothingButFiles) {
    Done({"import", Image("a.ppm")});
    ASSERT_EQ(mkfifo(Out("pipe.db").c_str(), 0600), 0);
    std::filesystem::create_symlink("pipe.db", Out("link.db"));
    std::filesystem::create_symlink("loop.db", Out("loop.db"));
    for (const std::string name : {"pipe.db", "link.db", "loop.db"}) Refused({"export", Out(name)});
    EXPECT_TRUE(std::filesystem::is_fifo(Out("pipe.db")));
    EXPECT_TRUE(std::filesystem::is_symlink(Out("link.db")));
}

TEST_F(CommandsWholeLibrary, ExportNeverReplacesTheFileOfAnItem) {
    Done({"import", Image("a.ppm")});
    const std::string before = ReadFile(Media("a.ppm"));
    EXPECT_NE(Refused({"export", Media("a.ppm")}).find("Imported\\a.ppm"), std::string::npos);
    EXPECT_EQ(ReadFile(Media("a.ppm")), before);
}

TEST_F(CommandsWholeLibrary, ExportThatCannotBeWritten_LeavesTheOldCopyAndNoTrace) {
    Done({"mkdir", "A"});
    Refused({"export", Out("missing/copy.db")});
    m_folder.MakeFolder("taken");
    Refused({"export", Out("taken")});
    m_folder.Write("copy.db", "the old copy");
    QfcWorld full;
    full.largestFile = 8192;
    EXPECT_EQ(Qfc({"export", Out("copy.db")}, full).exit, 1);
    EXPECT_EQ(ReadFile(Out("copy.db")), "the old copy");
    EXPECT_EQ(m_folder.Entries().size(), 3u);  // library, taken, copy.db
}

// Both would be applied to the new copy by whoever opens it next.
TEST_F(CommandsWholeLibrary, ExportRefusesATargetWithAJournalOrLogOfItsOwn) {
    Done({"mkdir", "A"});
    m_folder.Write("copy.db", "the old copy");
    for (const std::string journal : {"copy.db-journal", "copy.db-wal"}) {
        m_folder.Write(journal, "left behind");
        EXPECT_NE(Refused({"export", Out("copy.db")}).find(journal), std::string::npos);
        EXPECT_EQ(ReadFile(Out("copy.db")), "the old copy");
        EXPECT_EQ(ReadFile(Out(journal)), "left behind");
        fs::remove(Out(journal));
    }
    EXPECT_EQ(m_folder.Entries().size(), 2u);  // library, copy.db
    m_folder.Write("copy.db-journal", "");
    Done({"export", Out("copy.db")});
    EXPECT_EQ(DumpOf(Out("copy.db")), DumpOf(Database()));
}

// --- import-library
// -----------------------------------------------------------------------------------------------------

TEST_F(CommandsWholeLibrary, ImportLibraryBringsGalleriesFoldersAndItems) {
    Other({"import", Video("v.mp4"), Image("a.ppm"), "--folder", "A\\B"});
    Other({"mkdir", "Empty"});
    Other({"import", Sound("s.wav"), "--gallery", "Sounds"});
    const Json report = Done({"import-library", OtherDatabase()});
    EXPECT_EQ(report["added"].size(), 3u);
    EXPECT_EQ(FoldersOf("\\"), (Names{"A", "Empty"}));
    EXPECT_EQ(ItemsOf("A\\B"), (Names{"v.mp4", "a.ppm"}));
    EXPECT_EQ(ItemsOf("Imported", {"--gallery", "Sounds"}), Names{"s.wav"});
    const Json item = Done({"show", "A\\B\\v.mp4"});
    EXPECT_EQ(item["film"]["frames"], 10);
    EXPECT_GT(item["blackBox"]["bytes"], 0);
    EXPECT_GT(item["bitmapCache"]["bytes"], 0);
    ExpectSound();
}

TEST_F(CommandsWholeLibrary, ImportLibraryNeverChangesTheOther) {
    Other({"import", Image("a.ppm"), "--folder", "A"});
    const std::string before = ReadFile(OtherDatabase());
    const auto time = fs::last_write_time(OtherDatabase());
    Done({"import-library", OtherDatabase()});
    EXPECT_EQ(ReadFile(OtherDatabase()), before);
    EXPECT_EQ(fs::last_write_time(OtherDatabase()), time);
    // The library and the lock of its own program; nothing of ours.
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder / "other"), fs::directory_iterator()), 2);
}

TEST_F(CommandsWholeLibrary, ImportLibraryOfBeforeFoldersHadAnOrder) {
    const std::string old = m_folder / "old.db";
    fs::copy_file(QFCLIB_TEST_DATA "/library-before-folder-order.db", old);
    const std::string before = ReadFile(old);
    const QfcResult result = Qfc({"import-library", old});
    EXPECT_EQ(result.exit, 0) << result.out << result.err;
    EXPECT_EQ(ReadFile(old), before);
}

TEST_F(CommandsWholeLibrary, ImportLibraryTwice_SaysWhatWasThere) {
    Other({"import", Image("a.ppm"), "--folder", "A"});
    Done({"import-library", OtherDatabase()});
    const std::string before = DumpOf(Database());
    const Json report = Done({"import-library", OtherDatabase()});
    EXPECT_TRUE(report["added"].empty());
    EXPECT_EQ(report["already"], Json{"Media: A\\a.ppm"});
    EXPECT_EQ(DumpOf(Database()), before);
}

TEST_F(CommandsWholeLibrary, ImportLibraryPutsWhatItBringsLast) {
    Done({"import", Image("a.ppm", 1), Image("b.ppm", 2), Image("c.ppm", 3), "--folder", "F"});
    Done({"reorder", "F", "--by", "name"});
    const std::string backup = m_folder / "backup.db";
    Done({"export", backup});
    Done({"rm", "F\\a.ppm"});
    Done({"rm", "F\\b.ppm"});
    Done({"import-library", backup});
    EXPECT_EQ(ItemsOf("F"), (Names{"c.ppm", "a.ppm", "b.ppm"}));
}

TEST_F(CommandsWholeLibrary, ImportLibraryBringsFoldersThatAreShownAlike) {
    Done({"mkdir", "k--s"});
    Done({"import", Image("a.ppm"), "--folder", "k--s"});
    const std::string backup = m_folder / "backup.db";
    Done({"export", backup});
    Done({"rmdir", "s", "--recursive"});
    Done({"mkdir", "s"});
    Done({"import-library", backup});
    EXPECT_EQ(FoldersOf("\\"), (Names{"s", "s"}));
    EXPECT_EQ(ItemsOf("k--s"), Names{"a.ppm"});
    EXPECT_EQ(ItemsOf("s"), Names{});
}

TEST_F(CommandsWholeLibrary, ImportLibraryKeepsAnItemSharedByFoldersOne) {
    Other({"import", Image("a.ppm"), "--folder", "A"});
    Other({"mkdir", "B"});
    RawDb(OtherDatabase())
        .Exec(
            "insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select (select ID from FOLDER_TABLE where "
            "FOLDER_NAME = 'B'), ITEM_ID, 0 from ITEM_TABLE");
    Done({"import-library", OtherDatabase()});
    EXPECT_EQ(Done({"show", "A\\a.ppm"})["paths"], (Json{"A\\a.ppm", "B\\a.ppm"}));
    EXPECT_EQ(RawDb(Database()).Cell("select count(*) from ITEM_TABLE"), "1");
}

TEST_F(CommandsWholeLibrary, ImportLibraryDoesNotOverwriteAnItemItKnows) {
    Other({"import", Image("a.ppm"), "--folder", "A"});
    Done({"import-library", OtherDatabase()});
    Done({"rename", "A\\a.ppm", "mine"});
    RawDb(OtherDatabase()).Exec("update ITEM_TABLE set FILE_NAME = '/elsewhere/a.ppm'");
    EXPECT_EQ(Done({"import-library", OtherDatabase()})["already"].size(), 1u);
    EXPECT_EQ(ItemsOf("A"), Names{"mine"});
}

TEST_F(CommandsWholeLibrary, ImportLibraryMergesOwnGalleriesByName) {
    Other({"gallery", "create", "First"});
    Other({"gallery", "create", "Holidays"});
    Other({"import", Image("a.ppm"), "--gallery", "Holidays"});
    Done({"gallery", "create", "Holidays"});
    Done({"import-library", OtherDatabase()});
    EXPECT_EQ(Done({"gallery", "list"}), (Json{{{"id", 100}, {"name", "Holidays"}}, {{"id", 101}, {"name", "First"}}}));
    EXPECT_EQ(ItemsOf("Imported", {"--gallery", "100"}), Names{"a.ppm"});
}

TEST_F(CommandsWholeLibrary, ImportLibraryNamesFoldersThatLieTooDeepToBeLoaded) {
    Done({"import", Image("a.ppm"), "--folder", "d"});
    const int last = Deepen(Database(), Done({"ls", "d"})["row"], 999);
    Done({"mkdir", "later"});
    Done({"export", Out("copy.db")});
    Done({"rmdir", "later"});
    const int deepest = Deepen(Out("copy.db"), last, 3);
    RawDb(Out("copy.db"))
        .Exec("insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select " + std::to_string(deepest) +
              ", ITEM_ID, 0 from ITEM_TABLE");
    const std::string unseen = "Media: 3 folders with 1 item below #" + std::to_string(last) + " there";
    const Json report = Document({"import-library", Out("copy.db")}, 1);
    EXPECT_EQ(report["failed"], Json{unseen});
    EXPECT_EQ(report["foldersMade"], Json{"Media: later"});
    EXPECT_EQ(report["already"].size(), 1u);
    const QfcResult again = Qfc({"import-library", Out("copy.db")});
    EXPECT_EQ(again.exit, 1);
    EXPECT_NE(again.err.find("cannot bring in " + unseen + ": they lie too deep; move them up there first\n"),
              std::string::npos)
        << again.err;
    EXPECT_EQ(RawDb(Database()).Cell("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'd'"), "1000");
}

TEST_F(CommandsWholeLibrary, ImportLibraryRefusesTheLibraryItself) {
    Done({"import", Image("a.ppm")});
    fs::create_symlink(Database(), Out("link.db"));
    EXPECT_NE(Refused({"import-library", Database()}).find("the library itself"), std::string::npos);
    EXPECT_NE(Refused({"import-library", Out("link.db")}).find("the library itself"), std::string::npos);
}

TEST_F(CommandsWholeLibrary, ImportLibraryOfWhatIsNone_Fails) {
    Refused({"import-library", Out("missing.db")});
    Refused({"import-library", m_folder.Write("text.db", "this is no library")});
    Refused({"import-library", m_folder.MakeFolder("directory")});
    EXPECT_FALSE(fs::exists(Out("missing.db")));
}

TEST_F(CommandsWholeLibrary, ImportLibraryLeavesNoTemporaryFiles) {
    Other({"import", Image("a.ppm")});
    const std::string temporary = m_folder.MakeFolder("tmp");
    setenv("TMPDIR", temporary.c_str(), 1);
    Done({"import-library", OtherDatabase()});
    EXPECT_TRUE(fs::is_empty(temporary));
    unsetenv("TMPDIR");
}

// --- clear
// --------------------------------------------------------------------------------------------------------------

TEST_F(CommandsWholeLibrary, ClearEmptiesTheLibrary_AndItCanBeUsedAgain) {
    Done({"import", Video("v.mp4")});
    Done({"clear", "--yes"});
    RawDb db(Database());
    for (const char* table : {"GALLERY_TABLE", "FOLDER_TABLE", "ITEM_TABLE", "RELATION_TABLE", "CACHE_DATA_TABLE"}) {
        EXPECT_EQ(db.Cell(std::string("select count(*) from ") + table), "0") << table;
    }
    Done({"import", Image("a.ppm")});
    EXPECT_EQ(ItemsOf("Imported"), Names{"a.ppm"});
    ExpectSound();
}

TEST_F(CommandsWholeLibrary, ClearKeepsTags) {
    Done({"mkdir", "A"});
    RawDb(Database()).Exec("insert into LIB_TAG_TABLE (TAG_NAME, TAG_GUID) values ('Beach', X'00')");
    Done({"clear", "--yes"});
    EXPECT_EQ(RawDb(Database()).Cell("select count(*) from LIB_TAG_TABLE"), "1");
}

TEST_F(CommandsWholeLibrary, ClearWithoutYes_ChangesNothing) {
    Done({"import", Image("a.ppm")});
    for (const Args& arguments : {Args{"clear"}, Args{"clear", "--yes=no"}, Args{"clear", "--yes=false"},
                                  Args{"clear", "--yes=0"}, Args{"clear", "--yes", "--yes=no"}}) {
        Refused(arguments, 2);
    }
    EXPECT_EQ(ItemsOf("Imported"), Names{"a.ppm"});
}

TEST_F(CommandsWholeLibrary, ClearWithoutALibrary_FailsAndMakesNone) {
    Refused({"clear", "--yes"});
    EXPECT_FALSE(fs::exists(Database()));
}

// --- check
// --------------------------------------------------------------------------------------------------------------

TEST_F(CommandsWholeLibrary, CheckOfASoundLibrary) {
    Done({"import", Video("v.mp4")});
    EXPECT_TRUE(Done({"check"})["findings"].empty());
}

TEST_F(CommandsWholeLibrary, CheckListsWhatIsWrong) {
    Done({"import", Image("a.ppm")});
    RawDb(Database()).Exec("delete from ITEM_TABLE");
    const std::string before = ReadFile(Database());
    const Json report = Document({"check"}, 1);
    ASSERT_FALSE(report["findings"].empty());
    EXPECT_EQ(report["findings"][0]["kind"], "relation-without-item");
    EXPECT_NE(Qfc({"check"}).out.find("relation-without-item"), std::string::npos);
    EXPECT_EQ(ReadFile(Database()), before);
}

TEST_F(CommandsWholeLibrary, CheckWithoutALibrary_FailsAndMakesNone) {
    Refused({"check"});
    EXPECT_FALSE(fs::exists(Database()));
}

TEST_F(CommandsWholeLibrary, CheckOfWhatIsNoLibrary_Fails) {
    m_folder.MakeFolder("library");
    m_folder.Write("library/CinelumeDatabase.db", "this is no library, whatever its name says");
    Refused({"check"});
    Refused({"tree"});
}

TEST_F(CommandsWholeLibrary, ImportLibraryTellsAFileThatNeedsRecoveryFromNoLibrary) {
    m_folder.Write("other.db", "no library at all");
    EXPECT_NE(Refused({"import-library", Out("other.db")}).find("no library"), std::string::npos);
    m_folder.Write("other.db-journal", "left behind");
    EXPECT_NE(Refused({"import-library", Out("other.db")}).find("needs recovery"), std::string::npos);
}

TEST_F(CommandsWholeLibrary, ImportLibraryDoesNotCountWhatTheDatabaseDoesNotPlace) {
    Other({"import", Image("a.ppm"), "--folder", "A"});
    Done({"mkdir", "A"});
    RawDb(Database()).Exec("create trigger lose before insert on RELATION_TABLE begin select raise(ignore); end");
    const Json report = Document({"import-library", OtherDatabase()}, 1);
    EXPECT_TRUE(report["added"].empty());
    EXPECT_EQ(report["failed"], Json{"Media: A\\a.ppm"});
}

TEST_F(CommandsWholeLibrary, ImportLibraryNamesFoldersThatCannotBePutLast) {
    for (const char* folder : {"A", "B", "C"}) Done({"mkdir", folder});
    Done({"rmdir", "A"});
    Other({"mkdir", "D"});
    RawDb(Database()).Exec("create trigger keep before update on FOLDER_TABLE begin select raise(abort, 'kept'); end");
    const Json report = Document({"import-library", OtherDatabase()}, 1);
    EXPECT_EQ(report["foldersMade"], Json{"Media: D"});
    EXPECT_EQ(report["failed"], Json{"Media: D"});
    Done({"rmdir", "D"});
    EXPECT_EQ(Refused({"import-library", OtherDatabase()}), "qfc: cannot put the folder Media: D last\n");
}

TEST_F(CommandsWholeLibrary, ImportLibraryTakesTheMasksOfFoldersAsTheyAreStored) {
    Other({"mkdir", "a--b"});
    RawDb(OtherDatabase()).Exec("update FOLDER_TABLE set TRUSTY_TYPE = 8 where FOLDER_NAME = 'a--b'");
    Done({"import-library", OtherDatabase()});
    EXPECT_EQ(RawDb(Database()).Cell("select TRUSTY_TYPE from FOLDER_TABLE where FOLDER_NAME = 'a--b'"), "8");
}

}  // namespace
}  // namespace qfc::test
