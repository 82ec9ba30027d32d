#include "CommandsTest.h"

#include <algorithm>

namespace qfc::test {
namespace {

namespace fs = std::filesystem;

class CommandsImport : public CommandsTest {
protected:
    static Names Of(const Json& list, const char* key) {
        Names names;
        for (const Json& element : list) names.push_back(element[key]);
        return names;
    }
};

TEST_F(CommandsImport, ADirectoryBecomesAFolderWithWhatIsBelowIt) {
    m_media.MakeFolder("Photos/Summer");
    Image("Photos/a.ppm", 1);
    Image("Photos/Summer/b.ppm", 2);
    const Json report = Done({"import", Media("Photos")});
    EXPECT_EQ(report["added"].size(), 2u);
    EXPECT_EQ(ItemsOf("Photos"), Names{"a.ppm"});
    EXPECT_EQ(ItemsOf("Photos\\Summer"), Names{"b.ppm"});
    ExpectSound();
}

TEST_F(CommandsImport, ASingleFileWithoutFolderGoesToImported) {
    Done({"import", Image("a.ppm")});
    EXPECT_EQ(ItemsOf("Imported"), Names{"a.ppm"});
}

TEST_F(CommandsImport, MissingFoldersAreMadeLevelByLevel) {
    Done({"import", Image("a.ppm"), "--folder", "A\\B\\C"});
    EXPECT_EQ(FoldersOf("\\"), Names{"A"});
    EXPECT_EQ(FoldersOf("A"), Names{"B"});
    EXPECT_EQ(ItemsOf("A\\B\\C"), Names{"a.ppm"});
}

TEST_F(CommandsImport, ADirectoryIsMirroredBelowTheNamedFolder) {
    m_media.MakeFolder("Photos");
    Image("Photos/a.ppm");
    Done({"import", Media("Photos"), "--folder", "A"});
    EXPECT_EQ(ItemsOf("A\\Photos"), Names{"a.ppm"});
}

TEST_F(CommandsImport, TheFolderMayBeNamedByItsRow) {
    const int row = Done({"mkdir", "A\\B"})["folder"]["row"];
    Done({"import", Image("a.ppm"), "--folder", "#" + std::to_string(row)});
    EXPECT_EQ(ItemsOf("A\\B"), Names{"a.ppm"});
}

TEST_F(CommandsImport, TheGalleryIsMadeOnFirstUse) {
    Done({"import", Sound("s.wav"), "--gallery", "Sounds"});
    EXPECT_EQ(Done({"gallery", "list"}), (Json{{{"id", 2}, {"name", "Sounds"}}}));
    EXPECT_EQ(ItemsOf("Imported", {"--gallery", "2"}), Names{"s.wav"});
}

TEST_F(CommandsImport, OneGalleryRowHoweverOftenItIsUsed) {
    Done({"import", Image("a.ppm", 1)});
    Done({"import", Image("b.ppm", 2)});
    Done({"mkdir", "A"});
    EXPECT_EQ(RawDb(Database()).Cell("select count(*) from GALLERY_TABLE"), "1");
}

TEST_F(CommandsImport, EachKindHasItsTypeBit) {
    Done({"import", Image("i.ppm"), Sound("s.wav"), Video("v.mp4")});
    EXPECT_EQ(Done({"show", "Imported\\v.mp4"})["type"], 1);
    EXPECT_EQ(Done({"show", "Imported\\s.wav"})["type"], 2);
    EXPECT_EQ(Done({"show", "Imported\\i.ppm"})["type"], 4);
}

TEST_F(CommandsImport, AnItemCarriesNamePathTimeAndDescription) {
    const std::string path = Image("i.ppm");
    fs::last_write_time(path, fs::file_time_type(std::chrono::file_clock::from_sys(
                                  std::chrono::sys_seconds(std::chrono::seconds(1000000000)))));
    Done({"import", path});
    const Json item = Done({"show", "Imported\\i.ppm"});
    EXPECT_EQ(item["file"], fs::canonical(path).string());
    EXPECT_EQ(item["timestamp"], 1000000000);
    EXPECT_EQ(item["time"], "2001-09-09 01:46:40");
    EXPECT_EQ(item["description"], "2001 9 9 1 46 40 2001 9 9 1 46 40");
}

TEST_F(CommandsImport, AVideoIsStoredWithBitmapFactsAndTenFrames) {
    Done({"import", Video("v.mp4")});
    const Json item = Done({"show", "Imported\\v.mp4"});
    EXPECT_EQ(item["attributes"], 1);
    EXPECT_EQ(item["film"]["frames"], 10);
    EXPECT_EQ(item["film"]["bytes"], 10 * item["film"]["frameBytes"].get<int>());
    EXPECT_EQ(item["media"]["width"], 64);
    EXPECT_EQ(item["media"]["codec"], "mpeg4");
    EXPECT_GT(item["bitmapCache"]["bytes"], 40);
}

TEST_F(CommandsImport, PayloadsAreStoredAlthoughTheyAreReleased) {
    Done({"import", Video("v.mp4"), Image("i.ppm"), Sound("s.wav")});
    RawDb db(Database());
    EXPECT_EQ(db.Cell("select count(*) from CACHE_DATA_TABLE where PRE_COMPRESSED_SIZE > 0"), "7");
    EXPECT_NE(db.Cell("select FRAME_SIZE from ITEM_TABLE where ITEM_TYPE = 1"), "0");
    EXPECT_NE(db.Cell("select FILM_SIZE from ITEM_TABLE where ITEM_TYPE = 1"), "0");
}

TEST_F(CommandsImport, TheSameFileIsAddedOnce_HoweverOftenNamed) {
    const std::string path = Image("a.ppm");
    Done({"import", path, path, Media("./a.ppm")});
    EXPECT_EQ(ItemsOf("Imported"), Names{"a.ppm"});
}

TEST_F(CommandsImport, ALinkedFileIsAddedOnce) {
    m_media.MakeFolder("d");
    Image("d/a.ppm");
    fs::create_symlink("a.ppm", Media("d/link.ppm"));
    fs::create_directory_symlink("..", Media("d/loop"));
    const Json report = Done({"import", Media("d")});
    EXPECT_EQ(report["added"].size(), 1u);
}

TEST_F(CommandsImport, WhatIsThereAlreadyIsSaid_AndThatIsNoFailure) {
    const std::string path = Image("a.ppm");
    fs::create_symlink("a.ppm", Media("link.ppm"));
    Done({"import", path});
    const Json report = Done({"import", Media("link.ppm"), "--folder", "Elsewhere"});
    EXPECT_EQ(report["added"].size(), 0u);
    EXPECT_EQ(report["already"][0]["file"], fs::canonical(path).string());
    EXPECT_EQ(report["already"][0]["paths"], Json{"Imported\\a.ppm"});
    EXPECT_NE(Qfc({"import", path}).out.find("there already: " + path), std::string::npos);
}

TEST_F(CommandsImport, TheSameFileMayStandInTwoGalleries) {
    const std::string path = Image("a.ppm");
    Done({"import", path});
    EXPECT_EQ(Done({"import", path, "--gallery", "Overlays"})["added"].size(), 1u);
}

TEST_F(CommandsImport, BrokenFilesAreNamedAndCounted_NeverFatal) {
    m_media.MakeFolder("d");
    m_media.Write("d/broken.mp4", "this is no film");
    m_media.Write("d/empty.jpg", "");
    m_media.Write("d/notes.txt", "no media at all");
    Image("d/good.ppm");
    const QfcResult result = Qfc({"import", Media("d")});
    EXPECT_EQ(result.exit, 0);
    EXPECT_NE(result.err.find("broken.mp4"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("empty.jpg"), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find("notes.txt"), std::string::npos) << result.err;
    EXPECT_NE(result.out.find("1 file added, 2 not readable, 1 no media"), std::string::npos) << result.out;
    EXPECT_EQ(ItemsOf("d"), Names{"good.ppm"});
}

TEST_F(CommandsImport, FilesAreTakenByTheirContent_WithOrWithoutAnExtension) {
    m_media.MakeFolder("d");
    fs::rename(Image("image.ppm", 1), Media("d/image"));
    fs::rename(Sound("sound.wav"), Media("d/sound.txt"));
    fs::rename(Video("video.mp4"), Media("d/video.dat"));
    m_media.Write("d/list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nvideo.dat\n#EXT-X-ENDLIST\n");
    m_media.Write("d/notes", "no media at all");
    m_media.Write("d/.keep", "");
    const Json report = Done({"import", Media("d")});
    EXPECT_EQ(Of(report["added"], "name"), (Names{"image", "sound.txt", "video.dat"}));
    EXPECT_EQ(report["skipped"], 3);
    EXPECT_TRUE(report["broken"].empty());
    EXPECT_EQ(Done({"show", "d\\image"})["kind"], "image");
    EXPECT_EQ(Done({"show", "d\\sound.txt"})["kind"], "audio");
    EXPECT_EQ(Done({"show", "d\\video.dat"})["kind"], "video");
}

TEST_F(CommandsImport, ADirectoryWithoutMedia_AddsNothingAndMakesNoFolder) {
    m_media.MakeFolder("d/below");
    EXPECT_EQ(Qfc({"import", Media("d")}).exit, 1);
    m_media.Write("d/below/notes.txt", "no media");
    const Json report = Document({"import", Media("d")}, 1);
    EXPECT_TRUE(report["added"].empty());
    EXPECT_EQ(report["skipped"], 1);
    EXPECT_EQ(FoldersOf("\\"), Names{});
    ExpectSound();
}

TEST_F(CommandsImport, NothingToAdd_Fails) {
    EXPECT_EQ(Qfc({"import", m_media.Write("broken.mp4", "x")}).exit, 1);
    EXPECT_EQ(Qfc({"import", m_media.Write("notes.txt", "x")}).exit, 1);
    EXPECT_EQ(Qfc({"import", Media("missing.jpg")}).exit, 1);
    EXPECT_EQ(Qfc({"import", m_media.MakeFolder("empty")}).exit, 1);
}

TEST_F(CommandsImport, AMissingFileBesideAGoodOneIsNamed) {
    const QfcResult result = Qfc({"import", Media("missing.jpg"), Image("a.ppm")});
    EXPECT_EQ(result.exit, 0);
    EXPECT_NE(result.err.find("missing.jpg"), std::string::npos);
}

TEST_F(CommandsImport, ABackslashInANativeNameBecomesAnUnderscore) {
    m_media.MakeFolder("a\\b");
    Image("a\\b/c\\d.ppm");
    Done({"import", Media("a\\b")});
    EXPECT_EQ(FoldersOf("\\"), Names{"a_b"});
    EXPECT_EQ(ItemsOf("a_b"), Names{"c_d.ppm"});
    EXPECT_EQ(Done({"show", "a_b\\c_d.ppm"})["file"], fs::canonical(Media("a\\b")).string() + "/c\\d.ppm");
}

TEST_F(CommandsImport, NamesOfAnyBytesSurvive) {
    m_media.MakeFolder("Ünï \xE2\x82\xAC");
    Image("Ünï \xE2\x82\xAC/日本.ppm");
    Done({"import", Media("Ünï \xE2\x82\xAC")});
    EXPECT_EQ(ItemsOf("Ünï \xE2\x82\xAC"), Names{"日本.ppm"});
}

TEST_F(CommandsImport, ManyMoreThanMayBeOnTheWay_AllArriveInOrder) {
    m_media.MakeFolder("d");
    Names expected;
    for (int i = 0; i < 200; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "%03d.ppm", i);
        Image(std::string("d/") + name, i);
        expected.emplace_back(name);
    }
    EXPECT_EQ(Done({"import", Media("d")})["added"].size(), 200u);
    EXPECT_EQ(ItemsOf("d"), expected);
    ExpectSound();
}

TEST_F(CommandsImport, ASecondImportAddsWhatIsNew) {
    m_media.MakeFolder("d");
    Image("d/a.ppm", 1);
    Done({"import", Media("d")});
    Image("d/b.ppm", 2);
    const Json report = Done({"import", Media("d")});
    EXPECT_EQ(Of(report["added"], "name"), Names{"b.ppm"});
    EXPECT_EQ(report["already"].size(), 1u);
    EXPECT_EQ(FoldersOf("\\"), Names{"d"});
}

TEST_F(CommandsImport, UnknownGallery_Fails) {
    EXPECT_NE(Refused({"import", Image("a.ppm"), "--gallery", "Nowhere"}).find("Nowhere"), std::string::npos);
    Refused({"import", Image("a.ppm"), "--gallery", "7"});
}

TEST_F(CommandsImport, NamesThatAreNotUtf8_AreNamedAndCountedAsBroken) {
    m_media.MakeFolder("d");
    m_media.MakeFolder("d/e\xE9");
    Image("d/good.ppm", 1);
    Image("d/bad\xFF.ppm", 2);
    Image("d/e\xE9/inside.ppm", 3);
    m_media.Write("d/note\xFF.txt", "no media");
    for (int round = 0; round < 2; ++round) {
        const Json report = Done({"import", Media("d")});
        EXPECT_EQ(report[round == 0 ? "added" : "already"].size(), 1u);
        EXPECT_EQ(report["broken"].size(), 2u);
        EXPECT_EQ(report["skipped"], 1);
    }
    EXPECT_EQ(ItemsOf("d"), Names{"good.ppm"});
    EXPECT_EQ(FoldersOf("d"), Names{});
}

TEST_F(CommandsImport, OnlyNamesThatAreNotUtf8_Fails) {
    EXPECT_EQ(Qfc({"import", Image("bad\xC3.ppm")}).exit, 1);
    Refused({"import", Image("a.ppm"), "--folder", "F\xC0\x80"}, 2);
}

TEST_F(CommandsImport, AnItemThatTheDatabaseDoesNotPlace_IsNotCountedAsAdded) {
    Done({"mkdir", "A"});
    RawDb(Database()).Exec("create trigger lose before insert on RELATION_TABLE begin select raise(ignore); end");
    const Json report = Document({"import", Image("a.ppm", 1), Image("b.ppm", 2), "--folder", "A"}, 1);
    EXPECT_TRUE(report["added"].empty());
    EXPECT_EQ(report["notStored"].size(), 2u);
}

}  // namespace
}  // namespace qfc::test
