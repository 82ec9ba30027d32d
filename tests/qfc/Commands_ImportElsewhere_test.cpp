// import-library and items that stand in other places here than there, or in several galleries.
#include "CommandsTest.h"
#include "WithFailingReads.h"

namespace qfc::test {
namespace {

class CommandsImportElsewhere : public WithFailingReads<CommandsTest> {
protected:
    // The other library has F in Media, with an item, and H in the gallery Own; this one as well, without the item.
    void SetUp() override {
        for (const std::string& library : {m_folder / "other", m_library}) {
            const auto run = [&](const Args& arguments) {
                EXPECT_EQ(QfcProcess(Joined({"--data-dir", library}, arguments), {}).Wait().exit, 0);
            };
            run({"gallery", "create", "Own"});
            run({"mkdir", "H", "--gallery", "Own"});
            run({"import", Image("first.ppm", 2), "--folder", "F"});
        }
        EXPECT_EQ(Other({"import", Image("a.ppm", 1), "--folder", "F"}).exit, 0);
    }
    QfcResult Other(const Args& arguments) const {
        return QfcProcess(Joined({"--data-dir", m_folder / "other"}, arguments), {}).Wait();
    }
    std::string OtherDatabase() const { return m_folder / "other/CinelumeDatabase.db"; }
    static void Exec(const std::string& library, const std::string& sql) { RawDb(library).Exec(sql); }
    static void AlsoPlaceInH(const std::string& library) {
        Exec(library,
             "insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select (select ID from FOLDER_TABLE where "
             "FOLDER_NAME = 'H'), ITEM_ID, 0 from ITEM_TABLE where ITEM_NAME = 'a.ppm'");
    }
    static void PlaceInHAlone(const std::string& library) {
        Exec(
            library,
            "update RELATION_TABLE set PARENT_ID = (select ID from FOLDER_TABLE where FOLDER_NAME = 'H') where ITEM_ID "
            "= (select ITEM_ID from ITEM_TABLE where ITEM_NAME = 'a.ppm')");
    }
    // As the item came, it was put into H, and called otherwise.
    void HaveItInHAsMine() const {
        Done({"import-library", OtherDatabase()});
        PlaceInHAlone(Database());
        Done({"rename", "H\\a.ppm", "mine", "--gallery", "Own"});
    }
    Names InF() const { return ItemsOf("F"); }
    Names InH() const { return ItemsOf("H", {"--gallery", "Own"}); }
    std::string Cell(const std::string& sql) const { return RawDb(Database()).Cell(sql); }
};

TEST_F(CommandsImportElsewhere, AnItemThatTheOtherHasInTwoGalleriesComesIntoBoth_AsOne) {
    AlsoPlaceInH(OtherDatabase());
    const Json report = Done({"import-library", OtherDatabase()});
    EXPECT_EQ(report["added"], (Json{"Media: F\\a.ppm", "Own: H\\a.ppm"}));
    EXPECT_EQ(report["elsewhere"], Json::array());
    EXPECT_EQ(InF(), (Names{"first.ppm", "a.ppm"}));
    EXPECT_EQ(InH(), Names{"a.ppm"});
    EXPECT_EQ(Cell("select count(*) from ITEM_TABLE where ITEM_NAME = 'a.ppm'"), "1");
    EXPECT_EQ(Cell("select count(*) from CACHE_DATA_TABLE where ITEM_ID = (select ITEM_ID from ITEM_TABLE where "
                   "ITEM_NAME = 'a.ppm')"),
              "2");
    ExpectSound();
    const std::string before = DumpOf(Database());
    const Json again = Done({"import-library", OtherDatabase()});
    EXPECT_EQ(again["already"].size(), 3U);
    EXPECT_EQ(DumpOf(Database()), before);
}

TEST_F(CommandsImportElsewhere, APlaceInASecondGalleryComesBehindTheOthersThere) {
    AlsoPlaceInH(OtherDatabase());
    Done({"import", Image("b.ppm", 3), Image("c.ppm", 4), "--folder", "H", "--gallery", "Own"});
    Done({"import-library", OtherDatabase()});
    EXPECT_EQ(InH(), (Names{"b.ppm", "c.ppm", "a.ppm"}));
}

TEST_F(CommandsImportElsewhere, AnItemThatStandsInOneOfTwoGalleriesGetsTheOther_WhicheverIsFirst_AndStaysWhatItIs) {
    HaveItInHAsMine();
    AlsoPlaceInH(OtherDatabase());
    const Json report = Done({"import-library", OtherDatabase()});
    EXPECT_EQ(report["added"], Json{"Media: F\\a.ppm"});
    EXPECT_EQ(InF(), (Names{"first.ppm", "mine"}));
    EXPECT_EQ(InH(), Names{"mine"});
    ExpectSound();
}

TEST_F(CommandsImportElsewhere, AnItemThatStandsInAnotherGalleryAlone_StaysThere_AndIsTold) {
    HaveItInHAsMine();
    const std::string before = DumpOf(Database());
    const QfcResult result = Qfc({"--json", "import-library", OtherDatabase()});
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(result.err, "qfc: there already, in Own: H\\mine: the place Media: F\\a.ppm is not made\n");
    const Json report = Json::parse(result.out);
    EXPECT_EQ(report["elsewhere"], (Json{{{"wanted", "Media: F\\a.ppm"}, {"there", {"Own: H\\mine"}}}}));
    EXPECT_EQ(report["already"], Json{"Media: F\\first.ppm"});
    EXPECT_EQ(report["failed"], Json::array());
    EXPECT_EQ(DumpOf(Database()), before);
    EXPECT_NE(Qfc({"import-library", OtherDatabase()}).out.find("1 there already, 1 elsewhere, "), std::string::npos);
}

TEST_F(CommandsImportElsewhere, AnItemThatStandsInAnotherGalleryGetsTheTagsItLacks) {
    HaveItInHAsMine();
    EXPECT_EQ(Other({"tag", "create", "Sea"}).exit, 0);
    EXPECT_EQ(Other({"tag", "add", "Sea", "F\\a.ppm"}).exit, 0);
    EXPECT_EQ(Document({"import-library", OtherDatabase()}, 1)["tagged"], Json{"Own: H\\mine"});
}

TEST_F(CommandsImportElsewhere, APlaceThatIsNotStoredIsToldAsFailed) {
    HaveItInHAsMine();
    AlsoPlaceInH(OtherDatabase());
    Exec(Database(), "create trigger lose before insert on RELATION_TABLE begin select raise(ignore); end");
    const Json report = Document({"import-library", OtherDatabase()}, 1);
    EXPECT_EQ(report["failed"], Json{"Media: F\\a.ppm"});
    EXPECT_EQ(InF(), Names{"first.ppm"});
}

// Made for those below it alone, it would not be what it is there.
TEST_F(CommandsImportElsewhere, WhatLiesBelowAFolderThatDoesNotCome_IsLeftOutAndTold) {
    EXPECT_EQ(Other({"import", Image("b.ppm", 5), "--folder", "New\\Deep"}).exit, 0);
    Exec(OtherDatabase(), "update FOLDER_TABLE set TYPE_EXTRA = 9 where FOLDER_NAME = 'New'");
    Exec(Database(),
         "create trigger keep before insert on FOLDER_TABLE when new.FOLDER_NAME = 'New' and new.TYPE_EXTRA = 9 "
         "begin select raise(abort, 'kept'); end");
    const Json report = Document({"import-library", OtherDatabase()}, 1);
    EXPECT_EQ(report["failed"], (Json{"Media: New", "Media: New\\Deep", "Media: New\\Deep\\b.ppm"}));
    EXPECT_EQ(report["foldersMade"], Json::array());
    EXPECT_EQ(Cell("select count(*) from FOLDER_TABLE where FOLDER_NAME in ('New', 'Deep')"), "0");
    Exec(Database(), "drop trigger keep");
    Done({"import-library", OtherDatabase()});
    EXPECT_EQ(Cell("select TYPE_EXTRA from FOLDER_TABLE where FOLDER_NAME = 'New'"), "9");
}

TEST_F(CommandsImportElsewhere, AnItemThatComesWithoutAPayload_IsTold) {
    Exec(OtherDatabase(),
         "update CACHE_DATA_TABLE set COMPRESSED_SIZE = 1, COMPRESSED_DATA = x'00' where CACHE_DATA_TYPE = 1 and "
         "ITEM_ID = (select ITEM_ID "
         "from ITEM_TABLE where ITEM_NAME = 'a.ppm')");
    const QfcResult result = Qfc({"--json", "import-library", OtherDatabase()});
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(result.err, "qfc: cannot bring in the black box of Media: F\\a.ppm\n");
    const Json report = Json::parse(result.out);
    EXPECT_EQ(report["added"], Json{"Media: F\\a.ppm"});
    EXPECT_EQ(report["failed"], Json{"the black box of Media: F\\a.ppm"});
}

// Without the attribute bit no film is the item's, whatever the table holds.
TEST_F(CommandsImportElsewhere, StrayBytesOfAFilmAreNotMissed) {
    Exec(OtherDatabase(),
         "insert into CACHE_DATA_TABLE (ITEM_ID, CACHE_DATA_TYPE, COMPRESSED_SIZE, PRE_COMPRESSED_SIZE, "
         "COMPRESSED_DATA) select ITEM_ID, 2, 0, 4, x'01020304' from ITEM_TABLE where ITEM_NAME = 'a.ppm'");
    EXPECT_EQ(Other({"show", "F\\a.ppm"}).exit, 0);
    EXPECT_EQ(Done({"import-library", OtherDatabase()})["added"], Json{"Media: F\\a.ppm"});
    EXPECT_EQ(Cell("select count(*) from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 2"), "0");
}

// What is read there comes as what it is, or it is told.
TEST_F(CommandsImportElsewhere, WhateverCannotBeReadThere_NothingComesAsAnotherThingThanItIs) {
    EXPECT_EQ(Other({"mkdir", "a--b\\c"}).exit, 0);
    EXPECT_EQ(Other({"mv", "F\\a.ppm", "a--b\\c"}).exit, 0);
    Exec(OtherDatabase(), "update FOLDER_TABLE set TYPE_EXTRA = 9 where FOLDER_NAME = 'a--b'");
    KeepLibrary();
    int payloadsUnseen = 0;
    const auto look = [&](const QfcResult& result) {
        EXPECT_EQ(Cell("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'a--b' and (TYPE_EXTRA <> 9 or "
                       "TRUSTY_TYPE <> 0)"),
                  "0");
        const bool isWhole = Cell(
                                 "select count(*) from CACHE_DATA_TABLE where ITEM_ID = (select ITEM_ID from "
                                 "ITEM_TABLE where ITEM_NAME = 'a.ppm')") == "2";
        EXPECT_TRUE(isWhole || result.exit != 0);
        payloadsUnseen += result.err.find("cannot tell whether every ") != std::string::npos ? 1 : 0;
    };
    WithEachFailingReadOf("/library.db", {"import-library", OtherDatabase()}, look);
    EXPECT_GT(payloadsUnseen, 0);
}

// What stands here has payloads of its own.
TEST_F(CommandsImportElsewhere, AnotherPlaceOfAnItemThatIsHere_IsNotSaidToLackPayloads) {
    Done({"import-library", OtherDatabase()});
    EXPECT_EQ(Other({"mkdir", "New"}).exit, 0);
    EXPECT_EQ(Other({"mv", "F\\a.ppm", "New"}).exit, 0);
    Exec(Database(), "update CACHE_DATA_TABLE set PRE_COMPRESSED_SIZE = PRE_COMPRESSED_SIZE + 1");
    EXPECT_EQ(Done({"import-library", OtherDatabase()})["added"], Json{"Media: New\\a.ppm"});
}

TEST_F(CommandsImportElsewhere, WhatNobodySaw_IsNeitherAddedNorFailed) {
    KeepLibrary();
    int unseen = 0;
    const auto look = [&](const QfcResult& result) {
        const Json report = Json::parse(result.out, nullptr, false);
        if (!report.contains("unseen") || report["unseen"] != Json{"Media: F\\a.ppm"}) return;
        ++unseen;
        EXPECT_EQ(report["added"], Json::array());
        EXPECT_EQ(report["failed"], Json::array());
        EXPECT_EQ(result.exit, 1);
    };
    WithEachFailingRead({"--json", "import-library", OtherDatabase()}, look);
    EXPECT_GT(unseen, 0);
}

TEST_F(CommandsImportElsewhere, WhateverCannotBeRead_WhatCameOrMayHaveIsTold) {
    EXPECT_EQ(Other({"import", Image("b.ppm", 5), "--folder", "New\\Deep"}).exit, 0);
    EXPECT_EQ(Other({"tag", "create", "Sea"}).exit, 0);
    EXPECT_EQ(Other({"tag", "add", "Sea", "F\\a.ppm"}).exit, 0);
    KeepLibrary();
    const auto look = [&](const QfcResult& result) {
        const std::string told = result.out + result.err;
        const bool isLinked = Cell("select count(*) from TAG_ITEM_RELATION_TABLE") == "1";
        EXPECT_TRUE(!isLinked || told.find("cannot bring in the tags of Media: F") == std::string::npos);
        EXPECT_NE(told.find(" added, "), std::string::npos);
        for (const std::string name : {"a.ppm", "b.ppm"}) {
            const bool isHere = Cell("select count(*) from ITEM_TABLE where ITEM_NAME = '" + name + "'") != "0";
            if (isHere) {
                const bool isAdded = told.find("added Media: F\\" + name) != std::string::npos ||
                                     told.find("added Media: New\\Deep\\" + name) != std::string::npos;
                EXPECT_TRUE(isAdded ||
                            told.find("\\" + name + " came: the library cannot be looked at") != std::string::npos)
                    << name;
            } else {
                EXPECT_EQ(result.exit, 1);
            }
        }
    };
    WithEachFailingRead({"import-library", OtherDatabase()}, look);
}

TEST_F(CommandsImportElsewhere, WhateverCannotBeRead_TheItemHereIsNotOverwritten) {
    HaveItInHAsMine();
    EXPECT_EQ(Other({"mkdir", "New"}).exit, 0);  // What is written first.
    EXPECT_EQ(Other({"mv", "F\\a.ppm", "New"}).exit, 0);
    KeepLibrary();
    const auto look = [&](const QfcResult& result) {
        EXPECT_EQ(result.exit, 1);
        EXPECT_EQ(Cell("select count(*) from ITEM_TABLE where ITEM_NAME = 'mine'"), "1");
        EXPECT_EQ(Cell("select count(*) from RELATION_TABLE"), "2");
        EXPECT_NE(result.err.find("qfc: "), std::string::npos);
    };
    WithEachFailingRead({"import-library", OtherDatabase()}, look, 1, 1);
}

}  // namespace
}  // namespace qfc::test
