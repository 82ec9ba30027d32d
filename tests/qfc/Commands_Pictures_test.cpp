#include "CommandsTest.h"

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
    EXPECT_EQ(Done({"film", "Imported\\v.mp4", Out("film.png")})["frames"], 10);
    const auto [width, height] = SizeOf(Out("film.png"));
    EXPECT_GT(width, height);
}

TEST_F(CommandsPictures, FilmOfAnItemWithoutOne_Fails) {
    Done({"import", Image("a.ppm")});
    Refused({"film", "Imported\\a.ppm", Out("film.png")});
}

}  // namespace
}  // namespace qfc::test
