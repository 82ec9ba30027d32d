#include "CommandsTest.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <set>

namespace qfc::test {
namespace {

namespace fs = std::filesystem;

class CommandsLooking : public CommandsTest {
protected:
    void SetTime(const std::string& path, long seconds) {
        fs::last_write_time(path, fs::file_time_type(std::chrono::file_clock::from_sys(
                                      std::chrono::sys_seconds(std::chrono::seconds(seconds)))));
    }
    // Stored in the order b (image), a (sound), c (video); by time a, c, b.
    void ImportThree() {
        const std::string b = Image("b.ppm"), a = Sound("a.wav"), c = Video("c.mp4");
        SetTime(b, 3000000);
        SetTime(a, 1000000);
        SetTime(c, 2000000);
        Done({"import", b, a, c, "--folder", "F"});
    }
};

TEST_F(CommandsLooking, TreeOfAGalleryNobodyUsedIsEmpty_AndMakesNothing) {
    const Json tree = Done({"tree"});
    EXPECT_EQ(tree["name"], "Media");
    EXPECT_TRUE(tree["folders"].empty());
    EXPECT_EQ(RawDb(Database()).Cell("select count(*) from FOLDER_TABLE"), "0");
}

TEST_F(CommandsLooking, TreeShowsFoldersAndItems) {
    Done({"import", Image("a.ppm"), "--folder", "A\\B"});
    const Json tree = Done({"tree"});
    EXPECT_EQ(tree["id"], 1);
    EXPECT_EQ(tree["folders"][0]["folders"][0]["items"][0]["paths"], Json{"A\\B\\a.ppm"});
    const QfcResult text = Qfc({"tree"});
    EXPECT_NE(text.out.find("└── a.ppm  (image)"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("2 folders, 1 item"), std::string::npos) << text.out;
}

TEST_F(CommandsLooking, TreeOfAnUnknownGallery_Fails) { Refused({"tree", "--gallery", "Nowhere"}); }

TEST_F(CommandsLooking, ControlCharactersOfNamesDoNotReachTheTerminal) {
    Done({"import", Image("a.ppm"), "--folder", "evil\x1b[31m"});
    EXPECT_EQ(Qfc({"tree"}).out.find('\x1b'), std::string::npos);
}

TEST_F(CommandsLooking, LsWithoutSort_IsTheStoredOrder) {
    ImportThree();
    EXPECT_EQ(ItemsOf("F"), (Names{"b.ppm", "a.wav", "c.mp4"}));
}

TEST_F(CommandsLooking, LsSorts_AndLeavesTheStoredOrder) {
    ImportThree();
    EXPECT_EQ(ItemsOf("F", {"--sort", "name"}), (Names{"a.wav", "b.ppm", "c.mp4"}));
    EXPECT_EQ(ItemsOf("F", {"--sort", "name", "--desc"}), (Names{"c.mp4", "b.ppm", "a.wav"}));
    EXPECT_EQ(ItemsOf("F", {"--sort", "date"}), (Names{"a.wav", "c.mp4", "b.ppm"}));
    EXPECT_EQ(ItemsOf("F", {"--sort", "date", "--desc"}), (Names{"b.ppm", "c.mp4", "a.wav"}));
    EXPECT_EQ(ItemsOf("F", {"--sort", "kind"}), (Names{"a.wav", "b.ppm", "c.mp4"}));
    EXPECT_EQ(ItemsOf("F"), (Names{"b.ppm", "a.wav", "c.mp4"}));
}

TEST_F(CommandsLooking, FoldersByPathWithEitherSeparator_AndByRow) {
    Done({"import", Image("a.ppm"), "--folder", "A\\B"});
    const int row = Done({"ls", "A"})["folders"][0]["row"];
    EXPECT_EQ(ItemsOf("A\\B"), Names{"a.ppm"});
    EXPECT_EQ(ItemsOf("A/B"), Names{"a.ppm"});
    EXPECT_EQ(ItemsOf("/A//B/"), Names{"a.ppm"});
    EXPECT_EQ(ItemsOf("#" + std::to_string(row)), Names{"a.ppm"});
}

TEST_F(CommandsLooking, SlashesAreLettersWhereABackslashSeparates) {
    Done({"mkdir", "A\\x/y"});
    EXPECT_EQ(FoldersOf("A"), Names{"x/y"});
    Refused({"ls", "A/x/y"});
}

TEST_F(CommandsLooking, ARowIsFoundInEveryGallery) {
    const int row = Done({"mkdir", "Deep", "--gallery", "Titles"})["folder"]["row"];
    EXPECT_EQ(Done({"ls", "#" + std::to_string(row)})["name"], "Deep");
    Refused({"ls", "#99999"});
}

TEST_F(CommandsLooking, TheRowOfAGalleryIsNoFolder) {
    Done({"mkdir", "A"});
    Refused({"ls", "#1"});
}

TEST_F(CommandsLooking, AMissingFolderOrItem_Fails) {
    Done({"mkdir", "A"});
    Refused({"ls", "B"});
    Refused({"show", "A\\b"});
    Refused({"show", "00112233-4455-6677-8899-AABBCCDDEEFF"});
}

TEST_F(CommandsLooking, AnItemNamedWithoutItsFolderIsPointedOut) {
    Done({"import", Image("a.ppm"), "--folder", "A\\B"});
    EXPECT_NE(Refused({"show", "a.ppm"}).find("A\\B\\a.ppm"), std::string::npos);
}

TEST_F(CommandsLooking, AGuidIsSearchedInAllGalleries) {
    Done({"import", Sound("s.wav"), "--gallery", "Sounds"});
    const std::string guid = Done({"show", "Imported\\s.wav", "--gallery", "Sounds"})["guid"];
    EXPECT_EQ(Done({"show", guid})["gallery"], "Sounds");
    EXPECT_EQ(Done({"show", "{" + guid + "}"})["name"], "s.wav");
}

TEST_F(CommandsLooking, ANameThatFitsSeveralItems_ListsTheirGuids) {
    m_media.MakeFolder("d");
    Done({"import", Image("a.ppm", 1), "--folder", "F"});
    Done({"import", Image("d/a.ppm", 2), "--folder", "F"});
    const Json items = Done({"ls", "F"})["items"];
    ASSERT_EQ(items.size(), 2u);
    const std::string line = Refused({"show", "F\\a.ppm"});
    for (const Json& item : items) {
        const std::string guid = item["guid"];
        EXPECT_NE(line.find(guid), std::string::npos) << line;
        EXPECT_EQ(Done({"show", guid})["file"], item["file"]);
    }
}

TEST_F(CommandsLooking, ShowGivesEveryField) {
    Done({"import", Video("v.mp4")});
    const Json item = Done({"show", "Imported\\v.mp4"});
    for (const char* field : {"guid",
                              "name",
                              "kind",
                              "file",
                              "timestamp",
                              "gallery",
                              "paths",
                              "type",
                              "attributes",
                              "description",
                              "annotation",
                              "templatePath",
                              "databaseId",
                              "deletable",
                              "currentThumbFrame",
                              "originalThumbFrame",
                              "tags",
                              "blackBox",
                              "bitmapCache",
                              "film"}) {
        EXPECT_TRUE(item.contains(field)) << field;
    }
    EXPECT_GT(item["blackBox"]["bytes"], 0);
    EXPECT_EQ(item["bitmapCache"]["width"], 64);
    const QfcResult text = Qfc({"show", "Imported\\v.mp4"});
    EXPECT_NE(text.out.find("film                bytes"), std::string::npos) << text.out;
}

TEST_F(CommandsLooking, FindLooksInNamesWithoutCase) {
    Done({"import", Image("Holiday.ppm", 1), Image("work.ppm", 2)});
    const Json found = Done({"find", "HOLI"});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0]["name"], "Holiday.ppm");
}

TEST_F(CommandsLooking, FindLooksInDescriptionsAndAnnotationsWhenAsked) {
    const std::string path = Image("a.ppm");
    SetTime(path, 1000000000);
    Done({"import", path});
    RawDb(Database()).Exec("update ITEM_TABLE set ANNOTATION = 'by the sea'");
    EXPECT_EQ(Qfc({"find", "2001 9 9"}).exit, 1);
    EXPECT_EQ(Done({"find", "2001 9 9", "--description"}).size(), 1u);
    EXPECT_EQ(Qfc({"find", "the sea", "--description"}).exit, 1);
    EXPECT_EQ(Done({"find", "the sea", "--annotation"}).size(), 1u);
}

TEST_F(CommandsLooking, FindLooksInAllGalleriesUnlessOneIsNamed) {
    Done({"import", Image("same.ppm", 1)});
    Done({"import", Sound("same.wav"), "--gallery", "Sounds"});
    EXPECT_EQ(Done({"find", "same"}).size(), 2u);
    EXPECT_EQ(Done({"find", "same", "--gallery", "Sounds"}).size(), 1u);
}

TEST_F(CommandsLooking, FindShowsASharedItemOnce_WithAllItsPaths) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    const int row = Done({"mkdir", "B"})["folder"]["row"];
    RawDb(Database())
        .Exec("insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select " + std::to_string(row) +
              ", ITEM_ID, 0 from ITEM_TABLE");
    const Json found = Done({"find", "a.ppm"});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0]["paths"], (Json{"A\\a.ppm", "B\\a.ppm"}));
    const std::string text = Qfc({"find", "a.ppm"}).out;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    EXPECT_NE(text.find("Media: A\\a.ppm, B\\a.ppm"), std::string::npos) << text;
}

TEST_F(CommandsLooking, FindNothing_Fails) {
    Done({"import", Image("a.ppm")});
    Refused({"find", "nowhere"});
}

TEST_F(CommandsLooking, ThumbsListsTheStoredBitmaps) {
    Done({"import", Image("a.ppm", 0, 16), Sound("s.wav")});
    const Json thumbs = Done({"thumbs"});
    ASSERT_EQ(thumbs.size(), 2u);
    for (const Json& thumb : thumbs) {
        EXPECT_GT(thumb["width"], 0);
        EXPECT_NE(thumb["file"], "");
    }
}

TEST_F(CommandsLooking, ThumbsTellsCompressedFromUncompressedBitmaps) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    EXPECT_NE(Qfc({"thumbs"}).out.find(" bytes  "), std::string::npos);
    RawDb(Database())
        .Exec(
            "update CACHE_DATA_TABLE set COMPRESSED_SIZE = 0, COMPRESSED_DATA = zeroblob(PRE_COMPRESSED_SIZE) where "
            "CACHE_DATA_TYPE = 0");
    const std::string text = Qfc({"thumbs"}).out;
    EXPECT_NE(text.find("  uncompressed  "), std::string::npos) << text;
    EXPECT_EQ(text.find(" bytes"), std::string::npos) << text;
}

TEST_F(CommandsLooking, ThumbsTellsWhatCannotBeReadFromWhatIsNoPicture) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    const auto give = [&](const std::string& bytes) {
        RawDb(Database())
            .Exec("update CACHE_DATA_TABLE set PRE_COMPRESSED_SIZE = 4, COMPRESSED_SIZE = 0, COMPRESSED_DATA = " +
                  bytes + " where CACHE_DATA_TYPE = 0");
    };
    give("x'01020304'");
    EXPECT_NE(Qfc({"thumbs"}).out.find("  no picture   "), std::string::npos);
    EXPECT_TRUE(Done({"thumbs"})[0]["width"].is_null());
    EXPECT_EQ(Done({"thumbs"})[0]["readable"], true);
    give("x''");
    const Json thumb = Document({"thumbs"}, 1)[0];
    EXPECT_TRUE(thumb["height"].is_null());
    EXPECT_EQ(thumb["readable"], false);
    const QfcResult result = Qfc({"thumbs"});
    EXPECT_NE(result.out.find("  unreadable   "), std::string::npos);
    EXPECT_EQ(result.err, "qfc: cannot read the thumbnail of the item " + thumb["guid"].get<std::string>() + "\n");
    EXPECT_EQ(result.exit, 1);
}

TEST_F(CommandsLooking, ThumbsShowsABitmapWithoutItsItem) {
    Done({"import", Image("a.ppm", 1), Image("b.ppm", 2), "--folder", "A"});
    RawDb(Database()).Exec("delete from ITEM_TABLE where ITEM_NAME = 'a.ppm'");
    EXPECT_EQ(Done({"thumbs"}).size(), 2u);
}

// A look by key finds nothing where the walk through the index meets every entry.
TEST_F(CommandsLooking, ThumbsLeavesOutNothingThatADamagedIndexHides) {
    Done({"import", Image("a.ppm", 1), Image("b.ppm", 2), Image("c.ppm", 3), "--folder", "A"});
    const auto number = [&](const std::string& sql) { return std::stoul(RawDb(Database()).Cell(sql)); };
    const std::size_t leaf = number(
                                 "select rootpage from sqlite_master where type = 'index' and tbl_name = "
                                 "'CACHE_DATA_TABLE'") -
                             1;
    std::string file = ReadFile(Database());
    char* const page = file.data() + leaf * number("pragma page_size");
    // A leaf of an index. The places of its entries, two bytes each, begin at 8: those of the first two bitmaps.
    ASSERT_EQ(page[0], 10);
    std::swap_ranges(page + 8, page + 10, page + 10);
    std::ofstream(Database(), std::ios::binary) << file;
    std::set<std::string> guids;
    int unreadable = 0;
    for (const Json& thumb : Document({"thumbs"}, 1)) {
        guids.insert(thumb["guid"]);
        unreadable += thumb["readable"] ? 0 : 1;
    }
    EXPECT_EQ(guids.size(), 3u);
    EXPECT_EQ(unreadable, 1);
}

// Another program changes the library before each of the looks in turn.
class CommandsLookingMeanwhile : public CommandsLooking {
protected:
    void SetUp() override {
        CommandsLooking::SetUp();
        Done({"import", Image("a.ppm", 1), Image("b.ppm", 2), "--folder", "F"});
        Keep("before.db");
    }
    void Keep(const char* name) const {
        fs::copy_file(Database(), m_folder / name, fs::copy_options::overwrite_existing);
    }
    // Tells what `thumbs` shows each time.
    void EachLook(const std::function<void(const QfcResult&)>& tell) const {
        Keep("after.db");
        int looks = 0;
        for (QfcWorld world;; ++looks) {
            fs::copy_file(m_folder / "before.db", Database(), fs::copy_options::overwrite_existing);
            fs::remove(m_folder / "mark");
            world.meanwhile = {fs::canonical(Database()), looks + 1, m_folder / "mark",
                               "cp '" + m_folder / "after.db" + "' '" + Database() + "'"};
            const QfcResult result = Qfc({"thumbs"}, world);
            SCOPED_TRACE("look " + std::to_string(looks + 1) + ": " + result.out + result.err);
            EXPECT_EQ(result.exit, 0);
            tell(result);
            if (!fs::exists(m_folder / "mark")) break;
        }
        EXPECT_GT(looks, 10);
    }
};

TEST_F(CommandsLookingMeanwhile, ThumbsLeavesOutWhatIsRemoved) {
    const std::string before = Qfc({"thumbs"}).out;
    Done({"rm", "F\\b.ppm"});
    const std::string after = Qfc({"thumbs"}).out;
    EachLook([&](const QfcResult& result) { EXPECT_TRUE(result.out == before || result.out == after); });
}

TEST_F(CommandsLookingMeanwhile, ThumbsMissesNothingWhenSomethingIsAdded) {
    const std::string before = Qfc({"thumbs"}).out;
    Done({"import", Image("c.ppm", 3), "--folder", "F"});
    const std::string after = Qfc({"thumbs"}).out;
    EachLook([&](const QfcResult& result) { EXPECT_TRUE(result.out == before || result.out == after); });
}

TEST_F(CommandsLooking, ThumbsOfAnEmptyLibrary_Fails) { Refused({"thumbs"}); }

TEST_F(CommandsLooking, LsByDate_ShowsTheDatesThatItSortsBy) {
    Done({"import", Image("a.ppm", 1), Image("b.ppm", 2), Image("c.ppm", 3), "--folder", "F"});
    RawDb db(Database());
    db.Exec("update ITEM_TABLE set DESCRIPTION = '2001 2 3 4 5 6 2020 1 1 0 0 0' where ITEM_NAME = 'a.ppm'");
    db.Exec("update ITEM_TABLE set DESCRIPTION = '1999 12 31 23 59 58 2020 1 1 0 0 0' where ITEM_NAME = 'b.ppm'");
    db.Exec("update ITEM_TABLE set DESCRIPTION = 'a rainy day' where ITEM_NAME = 'c.ppm'");
    const std::string out = Qfc({"ls", "F", "--sort", "date"}).out;
    EXPECT_NE(out.find("image  2001-02-03 04:05:06  "), std::string::npos) << out;
    EXPECT_NE(out.find("image  1999-12-31 23:59:58  "), std::string::npos) << out;
    EXPECT_NE(out.find("image  -                    "), std::string::npos) << out;
    Json dates = Json::object();
    const Json listed = Done({"ls", "F", "--sort", "date"});
    for (const Json& item : listed["items"]) dates[item["name"].get<std::string>()] = item["date"];
    EXPECT_EQ(dates, (Json{{"a.ppm", "2001-02-03 04:05:06"}, {"b.ppm", "1999-12-31 23:59:58"}, {"c.ppm", nullptr}}));
    EXPECT_EQ(Qfc({"ls", "F"}).out.find("2001-02-03"), std::string::npos);
}

}  // namespace
}  // namespace qfc::test
