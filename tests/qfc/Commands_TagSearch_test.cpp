#include "TagCommandsTest.h"

namespace qfc::test {
namespace {

class CommandsTagSearch : public TagCommandsTest {
protected:
    // a: Beach, Sea. b: Beach. c: none. s, in Sounds: the Beach of Sounds.
    void TagSome() const {
        ImportAbc();
        Done({"import", Sound("s.wav"), "--folder", "S", "--gallery", "Sounds"});
        Done({"tag", "create", "Beach"});
        Done({"tag", "create", "Sea"});
        Done({"tag", "create", "Beach", "--gallery", "Sounds"});
        Done({"tag", "add", "Beach", "Sea", "--", "F\\a.ppm"});
        Done({"tag", "add", "Beach", "F\\b.ppm"});
        Done({"tag", "add", "Beach", "S\\s.wav", "--gallery", "Sounds"});
    }
    // With a tagged item.
    void AddOwnGallery() const {
        Done({"gallery", "create", "Own"});
        Done({"import", Image("d.ppm", 4), "--gallery", "Own"});
        Done({"tag", "create", "Mine", "--gallery", "Own"});
        Done({"tag", "add", "Mine", "Sea", "--gallery", "Own", "--", "Imported\\d.ppm"});
    }
    Names Found(const Args& arguments) const { return NamesIn(Done(Joined({"find"}, arguments))); }
};

// What a clear says of links that it cannot take.
const std::string kGone = "links of tags to items that are gone ('qfc check' lists them)";
const std::string kMalformed = "links of tags without a valid GUID, which nothing can name ('qfc check' lists them)";

// --- find ----------------------------------------------------------------------------------------------------------

TEST_F(CommandsTagSearch, ANameMeansTheTagOfEachItemsOwnGallery) {
    TagSome();
    EXPECT_EQ(Found({"--tag", "beach"}), (Names{"a.ppm", "b.ppm", "s.wav"}));
    EXPECT_EQ(Found({"--tag", "beach", "--gallery", "Sounds"}), Names{"s.wav"});
}

TEST_F(CommandsTagSearch, AllTagsHaveToMatch_UnlessAnyIsAskedFor) {
    TagSome();
    EXPECT_EQ(Found({"--tag", "Beach", "--tag", "Sea"}), Names{"a.ppm"});
    EXPECT_EQ(Found({"--tag", "Sea", "--tag", "Beach", "--any", "--gallery", "Media"}), (Names{"a.ppm", "b.ppm"}));
}

TEST_F(CommandsTagSearch, TagsKindsGalleriesAndTextGoTogether) {
    TagSome();
    EXPECT_EQ(Found({"--tag", "Beach", "--kind", "audio"}), Names{"s.wav"});
    EXPECT_EQ(Found({"B", "--tag", "Beach", "--kind", "image"}), Names{"b.ppm"});
    EXPECT_EQ(Found({"--kind", "image"}), (Names{"a.ppm", "b.ppm", "c.ppm"}));
    EXPECT_EQ(Document({"find", "c", "--tag", "Beach"}, 1), Json::array());
}

TEST_F(CommandsTagSearch, ATagThatOnlyAnotherGalleryHas_IsFoundByItsName) {
    TagSome();
    const std::string sound = Done({"show", "S\\s.wav", "--gallery", "Sounds"})["guid"];
    Done({"tag", "add", "Sea", sound});
    EXPECT_EQ(Found({"--tag", "sea"}), (Names{"a.ppm", "s.wav"}));
    EXPECT_EQ(Found({"--tag", "Media:My tags/Sea", "--gallery", "Sounds"}), Names{"s.wav"});
}

TEST_F(CommandsTagSearch, AnAmbiguousOrUnknownTagIsRefused) {
    TagSome();
    Exec("insert into LIB_TAG_CATEGORY_TABLE values ('Other', 1, 1, 0, X'00112233445566778899AABBCCDDEEFF')");
    Exec(
        "insert into LIB_TAG_TABLE select TAG_NAME, X'00112233445566778899AABBCCDDEEFF', 0, 0, 1, 0, null, "
        "X'FF112233445566778899AABBCCDDEEFF' from LIB_TAG_TABLE where TAG_NAME = 'Sea'");
    const std::string error = Refused({"find", "--tag", "Sea"});
    EXPECT_NE(error.find("Media:My tags/Sea"), std::string::npos) << error;
    EXPECT_NE(error.find("Media:Other/Sea"), std::string::npos) << error;
    EXPECT_EQ(Found({"--tag", "Media:My tags/Sea"}), Names{"a.ppm"});
    Refused({"find", "--tag", "Nowhere"});
}

TEST_F(CommandsTagSearch, FindWantsSomethingToLookFor) {
    Refused({"find"}, 2);
    Refused({"find", "--gallery", "Media"}, 2);
    Refused({"find", "x", "--any"}, 2);
    Refused({"find", "--kind", "image", "--description"}, 2);
    Refused({"find", "--kind", "music"}, 2);
}

// --- Looking -------------------------------------------------------------------------------------------------------

TEST_F(CommandsTagSearch, LsShowAndFindTellTheTags) {
    TagSome();
    const Json listed = Done({"ls", "F"});
    EXPECT_EQ(NamesIn(listed["items"][0]["tags"]), (Names{"Beach", "Sea"}));
    EXPECT_EQ(NamesIn(listed["items"][2]["tags"]), Names{});
    EXPECT_NE(Qfc({"ls", "F"}).out.find("a.ppm  [Beach, Sea]\n"), std::string::npos);
    EXPECT_NE(Qfc({"show", "F\\a.ppm"}).out.find("tags                Beach, Sea\n"), std::string::npos);
    EXPECT_NE(Qfc({"find", "a.ppm"}).out.find("F\\a.ppm  [Beach, Sea]\n"), std::string::npos);
}

TEST_F(CommandsTagSearch, ALinkToATagThatIsNotStored_IsShownByItsGuid) {
    TagSome();
    Exec("delete from LIB_TAG_TABLE where TAG_NAME = 'Sea'");
    EXPECT_EQ(TagsOf("F\\a.ppm"), (Names{"Beach", "?"}));
    EXPECT_NE(Qfc({"ls", "F"}).out.find("a.ppm  [Beach]\n"), std::string::npos);
}

TEST_F(CommandsTagSearch, SheetDrawsTheTaggedItemsAlone) {
    TagSome();
    const std::string out = m_folder / "sheet.png";
    EXPECT_EQ(Done({"sheet", out, "--tag", "Beach"})["items"], 2);
    EXPECT_EQ(Done({"sheet", out, "--tag", "Beach", "--tag", "Sea"})["items"], 1);
    Exec("delete from TAG_ITEM_RELATION_TABLE");
    Refused({"sheet", out, "--tag", "Beach"});
    Refused({"sheet", out, "--any"}, 2);
}

// --- What goes takes its links along -------------------------------------------------------------------------------

TEST_F(CommandsTagSearch, RmOfTheLastPlacementTakesTheLinks_AnEarlierOneDoesNot) {
    TagSome();
    Done({"mkdir", "G"});
    const int row = Done({"ls", "G"})["row"];
    Exec("insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select " + std::to_string(row) +
         ", ITEM_ID, 0 from ITEM_TABLE where ITEM_NAME = 'a.ppm'");
    Done({"rm", "F\\a.ppm"});
    EXPECT_EQ(TagsOf("G\\a.ppm"), (Names{"Beach", "Sea"}));
    Done({"rm", "G\\a.ppm"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "2");
    Done({"rm", "F\\b.ppm", "--everywhere"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "1");
    ExpectSound();
}

TEST_F(CommandsTagSearch, RmdirAndGalleryRmTakeTheLinksOfWhatGoes) {
    TagSome();
    Done({"rmdir", "F", "--recursive"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "1");
    Done({"gallery", "rm", "Sounds"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "0");
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "3");
    ExpectSound();
}

TEST_F(CommandsTagSearch, ClearTakesTheLinksAndKeepsTheTags) {
    TagSome();
    Done({"clear", "--yes"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "0");
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "3");
    ExpectSound();
}

TEST_F(CommandsTagSearch, ClearTakesTheLinksToTagsThatNobodySees) {
    TagSome();
    Exec("delete from LIB_TAG_CATEGORY_TABLE where CATEGORY_GALLERY = 2");
    Exec("delete from LIB_TAG_TABLE where TAG_NAME = 'Sea'");
    Exec(
        "insert into TAG_ITEM_RELATION_TABLE values (X'00112233445566778899AABBCCDDEEFF', "
        "X'11112233445566778899AABBCCDDEEFF')");
    Done({"clear", "--yes"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "0");
}

TEST_F(CommandsTagSearch, LinksThatClearCannotTake_AreAFailure) {
    TagSome();
    Exec("delete from LIB_TAG_TABLE where TAG_NAME = 'Sea'");
    Exec("create trigger keep before delete on TAG_ITEM_RELATION_TABLE begin select raise(ignore); end");
    EXPECT_EQ(Refused({"clear", "--yes"}), "qfc: cleared " + Database() + ", except: " + kGone + "\n");
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "0");
    EXPECT_EQ(Sql("select count(*) from GALLERY_TABLE"), "0");
    EXPECT_EQ(Document({"clear", "--yes"}, 1),
              (Json{{"cleared", Database()}, {"categories", Json::array()}, {"failed", {kGone}}}));
    Exec("drop trigger keep");
    Done({"clear", "--yes"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "0");
}

TEST_F(CommandsTagSearch, LinksThatNothingCanName_AreSaidWhenAllElseIsCleared) {
    TagSome();
    AddOwnGallery();
    Exec("insert into TAG_ITEM_RELATION_TABLE select ITEM_ID, X'0011' from ITEM_TABLE where ITEM_NAME = 'a.ppm'");
    const Json report = Document({"clear", "--yes"}, 1);
    EXPECT_EQ(report["failed"], Json{kMalformed});
    EXPECT_EQ(report["categories"], Json{"100:My tags"});
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "0");
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "1");
    EXPECT_EQ(Refused({"clear", "--yes"}), "qfc: cleared " + Database() + ", except: " + kMalformed + "\n");
    ImportAbc();
    EXPECT_EQ(TagsOf("F\\a.ppm"), Names{});
}

TEST_F(CommandsTagSearch, ClearTakesLinksOfItemsThatNothingCanName_AndKeepsTheirTags) {
    TagSome();
    Exec("update LIB_TAG_TABLE set TAG_CHECKED = 1, TAG_PICTURE_SIZE = 3, TAG_PICTURE_DATA = X'010203'");
    Exec("insert into TAG_ITEM_RELATION_TABLE select X'0011', TAG_GUID from LIB_TAG_TABLE where TAG_NAME = 'Sea'");
    Exec("insert into TAG_ITEM_RELATION_TABLE values ('text', X'11112233445566778899AABBCCDDEEFF')");
    const std::string rows = "select * from LIB_TAG_TABLE order by TAG_GUID";
    const auto before = RawDb(Database()).Rows(rows);
    Done({"clear", "--yes"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "0");
    EXPECT_EQ(RawDb(Database()).Rows(rows), before);
    ExpectSound();
}

// The next gallery would get their ids.
TEST_F(CommandsTagSearch, ClearTakesTheTagsOfOwnGalleries) {
    TagSome();
    AddOwnGallery();
    EXPECT_EQ(Done({"clear", "--yes"}),
              (Json{{"cleared", Database()}, {"categories", {"100:My tags"}}, {"failed", Json::array()}}));
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "3");
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE where CATEGORY_GALLERY >= 100"), "0");
    EXPECT_EQ(Done({"gallery", "create", "Next"})["id"], 100);
    ExpectSound();
}

TEST_F(CommandsTagSearch, ClearNamesTheTagsThatGo_BeforehandAndAfterwards) {
    TagSome();
    AddOwnGallery();
    Done({"tag", "create", "Lion", "--gallery", "Own", "--category", "Zoo"});
    EXPECT_NE(Qfc({"clear", "--help"}).out.find("only the tags of predefined galleries stay"), std::string::npos);
    EXPECT_EQ(Qfc({"clear", "--yes"}).out, "cleared " + Database() + " with the tags of 100:My tags, 100:Zoo\n");
    EXPECT_EQ(Qfc({"clear", "--yes"}).out, "cleared " + Database() + "\n");
}

// Whatever its id, a gallery that is not there by nature is its user's own, for "gallery rm" as well.
TEST_F(CommandsTagSearch, ClearTakesTheTagsOfEveryGalleryThatIsNotPredefined) {
    ImportAbc();
    for (const char* id : {"-1", "0", "7", "16", "17", "99"}) {
        Exec(std::string("insert into LIB_TAG_CATEGORY_TABLE values ('C', ") + id + ", 1, 0, randomblob(16))");
    }
    Exec(
        "insert into LIB_TAG_TABLE select 'T', CATEGORY_GUID, 0, 0, 1, 0, null, randomblob(16) from "
        "LIB_TAG_CATEGORY_TABLE");
    EXPECT_EQ(Done({"clear", "--yes"})["categories"], (Json{"-1:C", "0:C", "7:C", "17:C", "99:C"}));
    EXPECT_EQ(Sql("select group_concat(CATEGORY_GALLERY) from LIB_TAG_CATEGORY_TABLE"), "'16'");
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "1");
}

TEST_F(CommandsTagSearch, TagsThatClearCannotTake_AreNamedWhenAllElseIsCleared) {
    TagSome();
    AddOwnGallery();
    Exec("create trigger keep before delete on LIB_TAG_TABLE begin select raise(abort, 'kept'); end");
    EXPECT_EQ(Refused({"clear", "--yes"}), "qfc: cleared " + Database() + ", except: the tags of 100:My tags\n");
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "0");
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "0");
    Exec("drop trigger keep");
    Exec("create trigger keep before delete on LIB_TAG_CATEGORY_TABLE begin select raise(abort, 'kept'); end");
    EXPECT_EQ(Document({"clear", "--yes"}, 1)["failed"], Json{"the category 100:My tags"});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "3");
}

TEST_F(CommandsTagSearch, AnItemThatCannotGo_KeepsItsTags) {
    TagSome();
    Exec("create trigger keep before delete on RELATION_TABLE begin select raise(abort, 'kept'); end");
    EXPECT_EQ(Qfc({"rm", "F\\a.ppm"}).exit, 1);
    EXPECT_EQ(TagsOf("F\\a.ppm"), (Names{"Beach", "Sea"}));
    EXPECT_EQ(Qfc({"rmdir", "F", "--recursive"}).exit, 1);
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "4");
}

// Whatever ends the program in between then costs no tag.
TEST_F(CommandsTagSearch, LinksGoAfterTheItemsOfAFolderOrGallery) {
    TagSome();
    Exec(
        "create trigger first before delete on TAG_ITEM_RELATION_TABLE when exists (select 1 from ITEM_TABLE where "
        "ITEM_ID = old.ITEM_GUID) begin select raise(abort, 'the item is there'); end");
    Done({"rmdir", "F", "--recursive"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "1");
    Done({"gallery", "rm", "Sounds"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "0");
    ExpectSound();
}

TEST_F(CommandsTagSearch, LinksThatCannotGo_AreTold) {
    TagSome();
    Exec("create trigger keep before delete on TAG_ITEM_RELATION_TABLE begin select raise(abort, 'kept'); end");
    EXPECT_EQ(Refused({"rm", "F\\a.ppm"}), "qfc: cannot remove F\\a.ppm\n");
    EXPECT_NE(Refused({"rmdir", "F", "--recursive"}).find("F is removed, but links of tags"), std::string::npos);
    EXPECT_NE(Refused({"gallery", "rm", "Sounds"}).find("links of tags to items of the gallery Sounds are left"),
              std::string::npos);
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "0");
    EXPECT_EQ(Document({"check"}, 1)["findings"].size(), 4U);
}

TEST_F(CommandsTagSearch, CheckListsWhatTagsLeaveBehind) {
    TagSome();
    Exec("delete from LIB_TAG_CATEGORY_TABLE where CATEGORY_GALLERY = 2");
    Exec("delete from LIB_TAG_TABLE where TAG_NAME = 'Sea'");
    Exec(
        "insert into TAG_ITEM_RELATION_TABLE select X'00112233445566778899AABBCCDDEEFF', TAG_GUID from LIB_TAG_TABLE "
        "where TAG_NAME = 'Beach' limit 1");
    Names kinds;
    const Json report = Document({"check"}, 1);
    for (const Json& finding : report["findings"]) kinds.push_back(finding["kind"]);
    EXPECT_EQ(kinds, (Names{"link-without-tag", "link-without-item", "tag-without-category"}));
}

}  // namespace
}  // namespace qfc::test
