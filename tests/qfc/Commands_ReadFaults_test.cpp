// A look at the library that fails after something was changed: what is there is told, and nothing is lost.
#include "ReadFaultsTest.h"

#include <map>

namespace qfc::test {
namespace {

class CommandsReadFaults : public ReadFaultsTest {
protected:
    void SetUp() override {
        TagCommandsTest::SetUp();
        ImportAbc();
        Done({"mkdir", "G"});
        Done({"tag", "create", "Sea"});
        Done({"tag", "add", "Sea", "F\\a.ppm", "F\\b.ppm"});
        KeepLibrary();
        for (const std::string name : {"a.ppm", "b.ppm", "c.ppm"}) {
            m_guids[name] = Sql("select ITEM_ID from ITEM_TABLE where ITEM_NAME = '" + name + "'");
        }
    }
    // In the folder H of the gallery Own, as other programs may have it.
    void PutAlsoIntoOwnGallery(const std::string& item) const {
        Done({"gallery", "create", "Own"});
        Done({"mkdir", "H", "--gallery", "Own"});
        Exec(
            "insert into RELATION_TABLE select (select ID from FOLDER_TABLE where FOLDER_NAME = 'H'), ITEM_ID, 0 "
            "from ITEM_TABLE where ITEM_NAME = '" +
            item + "'");
        KeepLibrary();
    }
    // The folders that place the item in the database.
    std::string PlacesOf(const std::string& item) const {
        return Sql(
            "select group_concat(FOLDER_NAME) from (select FOLDER_NAME from RELATION_TABLE join FOLDER_TABLE on "
            "FOLDER_TABLE.ID = RELATION_TABLE.PARENT_ID join ITEM_TABLE on ITEM_TABLE.ITEM_ID = RELATION_TABLE.ITEM_ID "
            "where ITEM_NAME = '" +
            item + "' order by FOLDER_NAME)");
    }
    std::string Stored(const std::string& item) const {
        return Sql("select count(*) from ITEM_TABLE where ITEM_NAME = '" + item + "'");
    }
    // The item may be gone, but its GUID stays what it was.
    std::string LinksOf(const std::string& item) {
        const auto known = m_guids.find(item);
        if (known == m_guids.end()) ADD_FAILURE() << item;
        return Sql("select count(*) from TAG_ITEM_RELATION_TABLE where ITEM_GUID = " + known->second);
    }
    // On either stream: as what was done, or as what failed or cannot be told.
    static void ExpectNamed(const QfcResult& result, const std::string& what) {
        EXPECT_NE((result.out + result.err).find(what), std::string::npos) << what;
    }

    std::map<std::string, std::string> m_guids;
};

TEST_F(CommandsReadFaults, AMovedItemIsNeverLost_AndStandsWhereItIsSaidToStand) {
    WithEachFailingRead({"mv", "F\\a.ppm", "G"}, [&](const QfcResult& result) {
        const std::string places = PlacesOf("a.ppm");
        EXPECT_EQ(result.err.find("cannot put"), std::string::npos);  // It stands last all the time.
        if (result.exit == 0) {
            EXPECT_EQ(places, "'G'");
        }
        if (places == "'F,G'") {
            EXPECT_NE(result.err.find("it may now also be in G"), std::string::npos);
        }
        if (places == "'G'" && result.exit != 0) {
            EXPECT_NE(result.err.find(" in G"), std::string::npos);
        }
        EXPECT_NE(places, "NULL");
        EXPECT_EQ(Sql("select count(*) from CACHE_DATA_TABLE"), "6");
        EXPECT_EQ(LinksOf("a.ppm"), "1");
    });
}

TEST_F(CommandsReadFaults, AnItemThatStaysKeepsItsTags_AndWhatWentOrMayHaveIsTold) {
    PutAlsoIntoOwnGallery("a.ppm");
    const Args ways[] = {{"rm", GuidOf("F\\a.ppm")}, {"rm", "F\\a.ppm", "--everywhere"}, {"rm", "F\\b.ppm"}};
    for (const Args& way : ways) {
        const std::string name = way[1] == "F\\b.ppm" ? "b.ppm" : "a.ppm";
        SCOPED_TRACE(way[1]);
        WithEachFailingRead(way, [&](const QfcResult& result) {
            const std::string places = PlacesOf(name);
            if (result.exit == 0) {
                EXPECT_EQ(places, "NULL");
                EXPECT_EQ(LinksOf(name), "0");
            }
            if (places != "NULL") {
                EXPECT_EQ(LinksOf(name), "1");
            }
            for (const std::string folder : {"F", "H"}) {
                if (name == "b.ppm" && folder == "H") continue;
                if (places.find(folder) == std::string::npos) ExpectNamed(result, folder + "\\" + name);
            }
        });
    }
}

TEST_F(CommandsReadFaults, OneOfTwoPlacementsGoes_AndWhatMayHaveGoneIsTold) {
    PutAlsoIntoOwnGallery("a.ppm");
    WithEachFailingRead({"rm", "F\\a.ppm"}, [&](const QfcResult& result) {
        const std::string places = PlacesOf("a.ppm");
        EXPECT_NE(places.find("H"), std::string::npos);
        EXPECT_EQ(LinksOf("a.ppm"), "1");
        EXPECT_EQ(result.err.find("links of tags"), std::string::npos);
        if (places == "'H'") ExpectNamed(result, "F\\a.ppm");
        if (result.exit == 0) {
            EXPECT_EQ(places, "'H'");
        }
    });
}

// What keeps the item may also keep its links from coming back.
TEST_F(CommandsReadFaults, TagsThatAnItemMayHaveLostAreNamed) {
    Exec("create trigger stay before delete on RELATION_TABLE begin select raise(abort, 'stays'); end");
    Exec("create trigger away before insert on TAG_ITEM_RELATION_TABLE begin select raise(abort, 'no'); end");
    const QfcResult result = Qfc({"rm", "F\\a.ppm"});
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("may have lost the tag Media:My tags/Sea"), std::string::npos) << result.err;
    EXPECT_EQ(PlacesOf("a.ppm"), "'F'");
    EXPECT_EQ(LinksOf("a.ppm"), "0");
}

TEST_F(CommandsReadFaults, AnItemThatStays_GetsItsTagsBack) {
    Exec("create trigger stay before delete on RELATION_TABLE begin select raise(abort, 'stays'); end");
    KeepLibrary();
    const auto look = [&](const QfcResult& result) {
        EXPECT_EQ(result.exit, 1);
        EXPECT_EQ(LinksOf("a.ppm"), "1");
        EXPECT_EQ(result.err.find("lost"), std::string::npos);
    };
    WithEachFailingRead({"rm", "F\\a.ppm"}, look, 1, 1);
}

TEST_F(CommandsReadFaults, LinksThatStayBehindAFolderAreTold_AndWhatWentOrMayHave) {
    Done({"mkdir", "F\\S"});
    PutAlsoIntoOwnGallery("a.ppm");
    WithEachFailingRead({"rmdir", "F", "--recursive"}, [&](const QfcResult& result) {
        EXPECT_EQ(result.err.find("interrupted"), std::string::npos);
        const bool isSubGone = Sql("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'S'") == "0";
        // What one look did not see another one did.
        if (isSubGone) {
            EXPECT_NE(Sql("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'F'") +
                          (result.err.find("cannot tell whether F\\S") != std::string::npos ? "told" : ""),
                      "1told");
        }
        const bool isGone = Sql("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'F'") == "0";
        if (result.exit == 0) {
            EXPECT_TRUE(isGone);
            EXPECT_EQ(LinksOf("b.ppm"), "0");
        }
        if (isGone) {
            EXPECT_TRUE(result.out == "removed F\n" || result.err.find("whether F is removed") != std::string::npos);
        } else if (PlacesOf("b.ppm") == "NULL" || PlacesOf("c.ppm") == "NULL") {
            ExpectNamed(result, " of 3 items are not seen in F any more");
        }
        if (isGone && LinksOf("b.ppm") != "0") {
            ExpectNamed(result, Sql("select count(*) from ITEM_TABLE where ITEM_NAME = 'b.ppm'") == "0"
                                    ? "links of tags"
                                    : "b.ppm");
        }
        // An item that is left without a folder is named by no path any more.
        if (isGone && PlacesOf("b.ppm") == "NULL" && Stored("b.ppm") != "0") ExpectNamed(result, "b.ppm");
        EXPECT_NE(PlacesOf("a.ppm").find("H"), std::string::npos);
        EXPECT_EQ(LinksOf("a.ppm"), "1");
    });
}

TEST_F(CommandsReadFaults, WhatCannotBeSeenRenamed_IsCalledAsBefore) {
    const auto look = [&](const QfcResult& result) {
        const bool isRenamed = Sql("select count(*) from ITEM_TABLE where ITEM_NAME = 'new'") != "0" ||
                               Sql("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'new'") != "0";
        EXPECT_EQ(isRenamed, result.exit == 0);
    };
    WithEachFailingRead({"rename", "F\\a.ppm", "new"}, look);
    WithEachFailingRead({"rename", "G", "new"}, look);
}

TEST_F(CommandsReadFaults, WhatCannotBeSeenMade_IsNotSaidToBeMissing) {
    WithEachFailingRead({"mkdir", "N"}, [&](const QfcResult& result) {
        if (result.exit != 0 && Sql("select count(*) from FOLDER_TABLE where FOLDER_NAME = 'N'") != "0") {
            EXPECT_NE(result.err.find("the folder N may be made"), std::string::npos);
        }
    });
    WithEachFailingRead({"gallery", "create", "N"}, [&](const QfcResult& result) {
        if (result.exit != 0 && Sql("select count(*) from GALLERY_TABLE where GALLERY_FOLDER_ID = 100") != "0") {
            EXPECT_NE(result.err.find("the gallery N may be made"), std::string::npos);
        }
    });
}

TEST_F(CommandsReadFaults, AnOrderThatNobodySawIsNotSaidToBeTheOldOne) {
    Done({"mkdir", "H"});
    KeepLibrary();
    const auto order = [&] { return std::pair(ItemsOf("F"), FoldersOf("\\")); };
    for (const std::string what : {"F\\c.ppm", "H"}) {
        SCOPED_TRACE(what);
        const Args arguments{"reorder", what, "--to", "1"};
        Done(arguments);
        const auto wanted = order();
        WithEachFailingRead(arguments, [&](const QfcResult& result) {
            EXPECT_TRUE(result.exit != 0 || order() == wanted);
            if (result.exit != 0 && order() == wanted) ExpectNamed(result, "cannot tell whether the ");
        });
    }
}

// The folder is made once, whatever could not be seen of it in between.
TEST_F(CommandsReadFaults, AFolderThatCouldNotBeSeenMade_IsNotMadeTwice) {
    const std::string first = Image("x.ppm", 11), second = Image("y.ppm", 12);
    WithEachFailingRead({"import", first, second, "--folder", "N\\M"}, [&](const QfcResult& result) {
        for (const std::string name : {"x.ppm", "y.ppm"}) {
            if (Stored(name) == "0") continue;
            const bool isTold = result.out.find("added N\\M\\" + name) != std::string::npos;
            if (!isTold) ExpectNamed(result, name + ": the library cannot be looked at; it may be stored");
        }
        for (const std::string name : {"N", "M"}) {
            EXPECT_LE(std::stoi(Sql("select count(*) from FOLDER_TABLE where FOLDER_NAME = '" + name + "'")), 1);
        }
    });
}

TEST_F(CommandsReadFaults, OfAGalleryWhatWentIsTold) {
    const auto isGone = [&] { return Sql("select count(*) from GALLERY_TABLE where GALLERY_FOLDER_ID = 100") == "0"; };
    const auto look = [&](const QfcResult& result) {
        const bool isWholeTold = result.out.starts_with("removed the gallery Own") ||
                                 result.err.find("maybe the gallery") != std::string::npos;
        if (isGone()) {
            EXPECT_TRUE(isWholeTold);
        }
        if (result.exit == 0) {
            EXPECT_TRUE(isGone());
            EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE where ITEM_GUID not in (select ITEM_ID from "
                          "ITEM_TABLE)"),
                      "0");
        }
        for (const std::string name : {"d.ppm", "e.ppm"}) {
            if (Stored(name) == "0" && !isWholeTold) ExpectNamed(result, name == "d.ppm" ? "First" : "Second");
        }
        if (Sql("select count(*) from TAG_ITEM_RELATION_TABLE where ITEM_GUID not in (select ITEM_ID from "
                "ITEM_TABLE)") != "0") {
            ExpectNamed(result, "links of tags");
        }
    };
    Done({"gallery", "create", "Own"});
    KeepLibrary();
    WithEachFailingRead({"gallery", "rm", "Own"}, look);
    Done({"gallery", "create", "Own"});
    Done({"import", Image("d.ppm", 5), "--folder", "First", "--gallery", "Own"});
    Done({"import", Image("e.ppm", 6), "--folder", "Second", "--gallery", "Own"});
    Done({"tag", "add", "Sea", "--gallery", "Own", "--", "First\\d.ppm", "Second\\e.ppm"});
    KeepLibrary();
    WithEachFailingRead({"gallery", "rm", "Own"}, look);
}

TEST_F(CommandsReadFaults, OfAGalleryWithoutFolderItIsToldThatItMayBeGone) {
    Exec("insert into GALLERY_TABLE values(105, 999)");
    KeepLibrary();
    WithEachFailingRead({"gallery", "rm", "105"}, [&](const QfcResult& result) {
        const bool isGone = Sql("select count(*) from GALLERY_TABLE where GALLERY_FOLDER_ID = 105") == "0";
        if (isGone && result.exit != 0) ExpectNamed(result, "the gallery 105 may be removed");
        EXPECT_TRUE(isGone || result.exit == 1);
    });
}

// --- Reads before the change ---------------------------------------------------------------------------------------

// Loading adds bits to the mask of such a name, which the row must not get.
TEST_F(CommandsReadFaults, TheMaskOfAFolderNamedLikeAKeyIsNeverAnother) {
    Done({"mkdir", "a--b\\c--d"});
    Done({"mkdir", "K"});
    KeepLibrary();
    const Args ways[] = {{"rename", "a--b", "x--y"}, {"mv", "a--b", "K"}, {"reorder", "K", "--to", "1"}};
    for (const Args& way : ways) {
        SCOPED_TRACE(way[0]);
        WithEachFailingReadFromTheStart(way, [&](const QfcResult&) {
            EXPECT_EQ(Sql("select count(*) from FOLDER_TABLE where TRUSTY_TYPE <> 0"), "0");
        });
    }
}

TEST_F(CommandsReadFaults, WhatWasImportedByItselfAndRemovedDoesNotComeBack) {
    const Args automatic{"import", "--auto", Image("x.ppm", 11), Image("y.ppm", 12), "--folder", "F"};
    Done(automatic);
    Done({"rm", "F\\x.ppm"});
    KeepLibrary();
    WithEachFailingReadFromTheStart(automatic, [&](const QfcResult&) { EXPECT_EQ(Stored("x.ppm"), "0"); });
}

TEST_F(CommandsReadFaults, ThumbsAreAllThere_OrItIsToldThatTheyAreNot) {
    const std::string whole = Qfc({"thumbs"}).out;
    EXPECT_EQ(std::count(whole.begin(), whole.end(), '\n'), 3);
    WithEachFailingReadFromTheStart({"thumbs"}, [&](const QfcResult& result) {
        EXPECT_TRUE(result.exit != 0 || result.out == whole);
        EXPECT_TRUE(result.exit == 0 || !result.err.empty());
    });
}

TEST_F(CommandsReadFaults, WhatIsRememberedIsNotSaidToBeForgotten) {
    WithEachFailingRead({"import", "--auto", Image("x.ppm", 11), "--folder", "F"}, [&](const QfcResult& result) {
        if (Sql("select count(*) from ITEM_AUTO_LOADED_TABLE") == "1") {
            EXPECT_EQ(result.err.find("cannot be remembered"), std::string::npos);
        }
    });
}

}  // namespace
}  // namespace qfc::test
