#include "CommandsTest.h"

#include <sys/stat.h>

namespace qfc::test {
namespace {

class CommandsPictures : public CommandsTest {
protected:
    std::string Out(const std::string& name) const { return m_folder / name; }
    // Width and height of a PNG file; zeros when it is none.
    static std::pair<unsigned, unsigned> SizeOf(const std::string& path) {
        const std::string bytes = ReadFile(path);
        if (bytes.size() < 24 || bytes.substr(1, 3) != "PNG") return {0, 0};
        const auto number = [&](std::size_t at) {
            unsigned value = 0;
            for (std::size_t i = at; i < at + 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[i]);
            return value;
        };
        return {number(16), number(20)};
    }
};

TEST_F(CommandsPictures, SheetDrawsAllItemsOfAGallery) {
    Done({"import", Image("a.ppm", 0, 64), Sound("s.wav"), Video("v.mp4")});
    const Json report = Done({"sheet", Out("sheet.png")});
    EXPECT_EQ(report["items"], 3);
    EXPECT_EQ(report["files"], Json{Out("sheet.png")});
    EXPECT_GT(SizeOf(Out("sheet.png")).first, 200u);
}

TEST_F(CommandsPictures, SheetOfAFolderLeavesOutTheOthers) {
    Done({"import", Image("a.ppm", 1), "--folder", "A\\Below"});
    Done({"import", Image("b.ppm", 2), "--folder", "B"});
    EXPECT_EQ(Done({"sheet", Out("sheet.png"), "--folder", "A"})["items"], 1);
}

TEST_F(CommandsPictures, MoreColumnsMakeAWiderSheet) {
    Done({"import", Image("a.ppm", 1), Image("b.ppm", 2), Image("c.ppm", 3), Image("d.ppm", 4)});
    Done({"sheet", Out("two.png"), "--columns", "2"});
    Done({"sheet", Out("four.png"), "--columns", "4"});
    EXPECT_LT(SizeOf(Out("two.png")).first, SizeOf(Out("four.png")).first);
    EXPECT_GT(SizeOf(Out("two.png")).second, SizeOf(Out("four.png")).second);
}

TEST_F(CommandsPictures, SheetShowsASharedItemOnce) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    const int row = Done({"mkdir", "B"})["folder"]["row"];
    RawDb(Database())
        .Exec("insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select " + std::to_string(row) +
              ", ITEM_ID, 0 from ITEM_TABLE");
    EXPECT_EQ(Done({"sheet", Out("sheet.png")})["items"], 1);
}

TEST_F(CommandsPictures, SheetDrawsItemsWhosePictureCannotBeRead) {
    Done({"import", Image("a.ppm")});
    RawDb(Database()).Exec("update CACHE_DATA_TABLE set COMPRESSED_DATA = X'00', COMPRESSED_SIZE = 1");
    EXPECT_EQ(Done({"sheet", Out("sheet.png")})["items"], 1);
}

TEST_F(CommandsPictures, SheetOfNothing_Fails) {
    Refused({"sheet", Out("sheet.png")});
    Done({"mkdir", "A"});
    Refused({"sheet", Out("sheet.png"), "--folder", "A"});
    EXPECT_FALSE(std::filesystem::exists(Out("sheet.png")));
}

TEST_F(CommandsPictures, SheetThatCannotBeWritten_Fails) {
    Done({"import", Image("a.ppm")});
    Refused({"sheet", Out("missing/sheet.png")});
}

TEST_F(CommandsPictures, FilmDrawsTheFramesAsAStrip) {
    Done({"import", Video("v.mp4")});
    const Json report = Done({"film", "Imported\\v.mp4", Out("film.png")});
    EXPECT_EQ(report["frames"], 10);
    EXPECT_EQ(report["moments"].size(), 10u);
    EXPECT_EQ(report["moments"][0], "0:00.1");
    EXPECT_EQ(report["moments"][9], "0:01.9");
    const auto [width, height] = SizeOf(Out("film.png"));
    EXPECT_GT(width, height);
}

TEST_F(CommandsPictures, FilmOfAnItemWithoutOne_Fails) {
    Done({"import", Image("a.ppm")});
    Refused({"film", "Imported\\a.ppm", Out("film.png")});
}

// --- What may not be written over ---------------------------------------------------------------------------------

TEST_F(CommandsPictures, PictureNamesThatDoNotEndInPng_AreWrongUsage) {
    Done({"import", Image("a.ppm"), Video("v.mp4")});
    for (const std::string name : {"sheet", "sheet.jpg", ".png", "png"}) {
        Refused({"sheet", Out(name)}, 2);
        Refused({"film", "Imported\\v.mp4", Out(name)}, 2);
        EXPECT_FALSE(std::filesystem::exists(Out(name)));
    }
    Done({"sheet", Out("SHEET.PNG")});
}

TEST_F(CommandsPictures, TheLibraryItself_IsNeverDrawnOver) {
    Done({"import", Image("a.ppm"), Video("v.mp4")});
    const std::string before = ReadFile(Database());
    std::filesystem::create_symlink(Database(), Out("link.png"));
    std::filesystem::create_symlink(Database() + "-journal", Out("journal.png"));
    for (const std::string name : {"link.png", "journal.png"}) {
        Refused({"sheet", Out(name)});
        Refused({"film", "Imported\\v.mp4", Out(name)});
    }
    EXPECT_EQ(ReadFile(Database()), before);
    EXPECT_FALSE(std::filesystem::exists(Database() + "-journal"));
}

TEST_F(CommandsPictures, TheFileOfAnItem_IsNeverDrawnOver) {
    Done({"import", Image("a.ppm"), Video("v.mp4")});
    std::filesystem::rename(Media("a.ppm"), Media("a.png"));
    Done({"import", Media("a.png"), "--folder", "Other", "--gallery", "2"});
    std::filesystem::create_hard_link(Media("a.png"), Out("second.png"));
    std::filesystem::create_symlink(Media("a.png"), Out("link.png"));
    const std::string before = ReadFile(Media("a.png"));
    for (const std::string& path : {Media("a.png"), Out("second.png"), Out("link.png")}) {
        EXPECT_NE(Refused({"sheet", path}).find("Other\\a.png"), std::string::npos);
        Refused({"film", "Imported\\v.mp4", path});
    }
    EXPECT_EQ(ReadFile(Media("a.png")), before);
}

TEST_F(CommandsPictures, WhatIsNoRegularFile_IsNotReplacedByAPicture) {
    Done({"import", Image("a.ppm"), Video("v.mp4")});
    ASSERT_EQ(mkfifo(Out("pipe.png").c_str(), 0600), 0);
    std::filesystem::create_symlink("pipe.png", Out("link.png"));
    for (const std::string name : {"pipe.png", "link.png"}) {
        Refused({"sheet", Out(name)});
        Refused({"film", "Imported\\v.mp4", Out(name)});
    }
    EXPECT_TRUE(std::filesystem::is_fifo(Out("pipe.png")));
    EXPECT_TRUE(std::filesystem::is_symlink(Out("link.png")));
}

TEST_F(CommandsPictures, ALinkIsFollowed_AndItsTargetReplaced) {
    Done({"import", Image("a.ppm")});
    std::filesystem::create_symlink("real.png", Out("link.png"));
    Done({"sheet", Out("link.png")});
    EXPECT_TRUE(std::filesystem::is_symlink(Out("link.png")));
    EXPECT_GT(SizeOf(Out("real.png")).first, 200u);
}

}  // namespace
}  // namespace qfc::test
