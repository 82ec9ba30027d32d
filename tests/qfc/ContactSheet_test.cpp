#include "hosts/qfc/pictures/ContactSheet.h"

#include "hosts/qfc/pictures/Canvas.h"
#include "hosts/qfc/pictures/Palette.h"
#include "tests/qfc/MediaMaker.h"
#include "tests/qfc/RecordedDrawing.h"

#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>

namespace {

using namespace qfc::test;
using qfc::host::Canvas;
using qfc::host::ContactSheet;
using qfc::host::ContactSheetPages;
using qfc::host::ContactSheetSize;
using qfc::host::Cut;
using qfc::host::DrawContactSheet;
using qfc::host::MaxSheetColumns;
using qfc::host::PictureError;
using qfc::host::SheetBadge;
using qfc::host::WriteContactSheet;

ContactSheet Sheet(std::size_t cells, int columns) {
    ContactSheet sheet;
    sheet.title = "Holidays";
    sheet.subtitle = "some items";
    sheet.columns = columns;
    for (std::size_t i = 0; i < cells; ++i)
        sheet.cells.push_back({"", "name " + std::to_string(i) + ".mp4", "640 x 360", SheetBadge::Film, "0:10"});
    sheet.picture = [](std::size_t) { return Picture(160, 120, 0xFFE02040u); };
    return sheet;
}

std::size_t Count(const Picture& picture, std::uint32_t colour) {
    return static_cast<std::size_t>(std::ranges::count(picture.pixels, colour));
}

TEST(ContactSheet, TheFileIsAPngOfTheAnnouncedSize) {
    const TempFolder folder;
    const ContactSheet sheet = Sheet(10, 4);
    EXPECT_THAT(WriteContactSheet(sheet, folder / "sheet.png"), testing::ElementsAre(folder / "sheet.png"));
    EXPECT_EQ(ReadFile(folder / "sheet.png").substr(0, 8), "\x89PNG\r\n\x1A\n");
    EXPECT_EQ(SizeOf(ReadImage(folder / "sheet.png")), ContactSheetSize(sheet));
}

TEST(ContactSheet, MoreColumnsMakeItWiderAndLessHigh) {
    const auto narrow = ContactSheetSize(Sheet(12, 3));
    const auto wide = ContactSheetSize(Sheet(12, 6));
    EXPECT_GT(wide.width, narrow.width);
    EXPECT_LT(wide.height, narrow.height);
}

TEST(ContactSheet, EveryPictureIsDrawn) {
    const TempFolder folder;
    WriteContactSheet(Sheet(5, 3), folder / "sheet.png");
    const std::size_t red = Count(ReadImage(folder / "sheet.png"), 0xFFE02040);
    // Corners, the edge and the badge take a little of each.
    EXPECT_GT(red, 5u * 160 * 120 * 85 / 100);
    EXPECT_LE(red, 5u * 160 * 120);
}

TEST(ContactSheet, PicturesAreAskedForOneByOneInTheirOrder) {
    const TempFolder folder;
    ContactSheet sheet = Sheet(4, 2);
    std::vector<std::size_t> asked;
    sheet.picture = [&](std::size_t cell) {
        asked.push_back(cell);
        return Picture(90, 160);
    };
    WriteContactSheet(sheet, folder / "sheet.png");
    EXPECT_THAT(asked, testing::ElementsAre(0u, 1u, 2u, 3u));
}

TEST(ContactSheet, WhereTheSectionChangesAHeadingStands) {
    ContactSheet plain = Sheet(4, 4);
    ContactSheet divided = Sheet(4, 4);
    for (std::size_t i = 0; i < 4; ++i) divided.cells[i].section = i < 2 ? "First" : "Second";
    EXPECT_GT(ContactSheetSize(divided).height, 2 * ContactSheetSize(plain).height - 200);
}

TEST(ContactSheet, NothingToShowIsStillASheetWithItsTitle) {
    const TempFolder folder;
    ContactSheet sheet = Sheet(0, 6);
    WriteContactSheet(sheet, folder / "sheet.png");
    EXPECT_GT(ReadImage(folder / "sheet.png").width, 300);
}

TEST(ContactSheet, ItemsWithoutAPictureAndOddTextsAreDrawn) {
    const TempFolder folder;
    ContactSheet sheet = Sheet(4, 4);
    sheet.picture = [](std::size_t cell) { return cell % 2 ? Picture{} : Picture(1, 1); };
    sheet.title = std::string(2000, 'W');
    sheet.cells[0].name = "\xFF\xFE not UTF-8";
    sheet.cells[1].name = std::string(500, 'W') + ".mp4";
    sheet.cells[2].name = "<b>&amp;\n\t";
    sheet.cells[3].name = "";
    sheet.cells[3].badge = SheetBadge::Sound;
    sheet.cells[3].duration = "";
    EXPECT_EQ(WriteContactSheet(sheet, folder / "sheet.png").size(), 1u);
}

TEST(ContactSheet, ItIsAsWideAsItsLongestRow) {
    ContactSheet sheet = Sheet(12, 8);
    for (std::size_t i = 0; i < sheet.cells.size(); ++i) sheet.cells[i].section = i < 4 ? "A" : i < 8 ? "B" : "C";
    EXPECT_EQ(ContactSheetSize(sheet).width, ContactSheetSize(Sheet(4, 8)).width);
}

TEST(ContactSheet, ColumnsOutOfRangeAreRefused) {
    const TempFolder folder;
    for (const int columns : {0, -1, MaxSheetColumns() + 1})
        EXPECT_THROW(WriteContactSheet(Sheet(1, columns), folder / "sheet.png"), PictureError) << columns;
    EXPECT_THAT(folder.Entries(), testing::IsEmpty());
}

TEST(ContactSheet, TheWidestSheetCanBeMade) {
    EXPECT_LE(ContactSheetSize(Sheet(1000, MaxSheetColumns())).width, Canvas::kMaxSide);
    EXPECT_GT(ContactSheetSize(Sheet(1000, MaxSheetColumns())).width, Canvas::kMaxSide - 200);
}

TEST(ContactSheet, WhatDoesNotFitOnePictureGoesOntoFurtherPages) {
    const TempFolder folder;
    const ContactSheet sheet = Sheet(200, 1);
    const auto files = WriteContactSheet(sheet, folder / "sheet.of.png");
    ASSERT_GE(files.size(), 2u);
    EXPECT_EQ(files[0], folder / "sheet.of.png");
    EXPECT_EQ(files[1], folder / "sheet.of-2.png");
    std::size_t red = 0;
    for (const std::string& file : files) red += Count(ReadImage(file), 0xFFE02040);
    EXPECT_GT(red, 200u * 160 * 120 * 85 / 100);
    EXPECT_THAT(folder.Entries(), testing::SizeIs(files.size()));
}

TEST(ContactSheet, AFailureLeavesTheOldFileAndNothingBeside) {
    const TempFolder folder;
    const std::string blocked = folder.MakeFolder("blocked.png");
    std::ofstream(blocked + "/inside") << "x";
    EXPECT_THROW(WriteContactSheet(Sheet(1, 1), blocked), PictureError);
    EXPECT_THROW(WriteContactSheet(Sheet(1, 1), folder / "missing/sheet.png"), PictureError);
    EXPECT_THAT(folder.Entries(), testing::ElementsAre("blocked.png"));
}

TEST(ContactSheetDeathTest, ASystemWithoutFontsStillGetsASheet) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const TempFolder folder;
    const std::string config = folder.Write("fonts.conf", "<?xml version=\"1.0\"?><fontconfig></fontconfig>");
    EXPECT_EXIT(
        {
            setenv("FONTCONFIG_FILE", config.c_str(), 1);
            ContactSheet wide = Sheet(3, 3);
            ContactSheet narrow = Sheet(3, 3);
            wide.title = "MMMMMMMM";
            narrow.title = "iiiiiiii";
            WriteContactSheet(wide, folder / "wide.png");
            WriteContactSheet(narrow, folder / "narrow.png");
            // Boxes in place of letters would be as many pixels for the one as for the other.
            const std::size_t ink = Count(ReadImage(folder / "narrow.png"), 0xFFF4F1EA);
            std::exit(ink > 0 && Count(ReadImage(folder / "wide.png"), 0xFFF4F1EA) > 2 * ink ? 0 : 7);
        },
        testing::ExitedWithCode(0), "");
}

// --- What stands where ---------------------------------------------------------------------------------------------

class SheetTexts : public testing::Test {
protected:
    void Draw(const ContactSheet& sheet, std::size_t page = 0) { DrawContactSheet(sheet, page, m_drawn); }

    RecordedDrawing m_drawn;
};

TEST_F(SheetTexts, TitleThenNamesWithTheirDetails_InTheOrderOfTheItems) {
    ContactSheet sheet = Sheet(2, 4);
    sheet.cells[1].badge = SheetBadge::None;
    Draw(sheet);
    EXPECT_THAT(m_drawn.Words(), testing::ElementsAre("Holidays", "some items", "0:10", "name 0.mp4", "640 x 360",
                                                      "name 1.mp4", "640 x 360"));
}

TEST_F(SheetTexts, AHeadingWithItsCountStandsOverItsItems) {
    ContactSheet sheet = Sheet(5, 2);
    for (std::size_t i = 0; i < 5; ++i) sheet.cells[i].section = i < 3 ? "Summer\\Beach" : "Winter";
    Draw(sheet);
    const auto heading = [&](const char* text) { return m_drawn.Find(text); };
    EXPECT_EQ(m_drawn.Find("3").box.y, heading("Summer\\Beach").box.y);
    EXPECT_EQ(m_drawn.Find("2").box.y, heading("Winter").box.y);
    EXPECT_GT(m_drawn.Find("3").box.x, heading("Summer\\Beach").box.x);
    EXPECT_LT(heading("Summer\\Beach").box.y, m_drawn.Find("name 0.mp4").box.y);
    EXPECT_LT(m_drawn.Find("name 2.mp4").box.y, heading("Winter").box.y);
    EXPECT_LT(heading("Winter").box.y, m_drawn.Find("name 3.mp4").box.y);
    EXPECT_TRUE(heading("Winter").style.bold);
}

TEST_F(SheetTexts, OfALongHeadingTheEndIsKept_AndItStaysOnTheSheet) {
    ContactSheet sheet = Sheet(1, 1);
    const std::string path(500, 'p');
    sheet.cells[0].section = path;
    Draw(sheet);
    const auto heading = m_drawn.Find(path);
    EXPECT_EQ(heading.style.cut, Cut::Start);
    EXPECT_LT(heading.box.x + heading.box.width, ContactSheetSize(sheet).width);
    EXPECT_LT(m_drawn.Find("1").box.x, ContactSheetSize(sheet).width);
}

TEST_F(SheetTexts, ANameStandsUnderItsPicture_AndItsDetailUnderTheName) {
    Draw(Sheet(3, 3));
    ASSERT_EQ(m_drawn.pictures.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        const auto name = m_drawn.Find("name " + std::to_string(i) + ".mp4");
        const auto& picture = m_drawn.pictures[i];
        EXPECT_GE(name.box.y, picture.y + picture.height);
        EXPECT_LE(name.box.x, picture.x);
        EXPECT_GE(name.box.x + name.box.width, picture.x + picture.width);
        EXPECT_EQ(name.style.cut, Cut::Middle);
    }
    EXPECT_GE(m_drawn.Find("640 x 360").box.y, m_drawn.Find("name 0.mp4").box.y + 10);
}

TEST_F(SheetTexts, BadgesTellFilmsAndSoundsApart_WithTheirLength) {
    ContactSheet sheet = Sheet(3, 3);
    sheet.cells[1].badge = SheetBadge::Sound;
    sheet.cells[1].duration = "3:20";
    sheet.cells[2].badge = SheetBadge::None;
    Draw(sheet);
    EXPECT_EQ(m_drawn.triangles, 1);
    EXPECT_EQ(m_drawn.notes, 1);
    const auto length = m_drawn.Find("3:20");
    EXPECT_GT(length.box.x, m_drawn.pictures[1].x);
    EXPECT_LT(length.box.x + length.box.width, m_drawn.pictures[1].x + m_drawn.pictures[1].width);
}

TEST_F(SheetTexts, AnItemWithoutAPictureSaysSo) {
    ContactSheet sheet = Sheet(1, 1);
    sheet.picture = [](std::size_t) { return Picture{}; };
    Draw(sheet);
    EXPECT_TRUE(m_drawn.pictures.empty());
    EXPECT_EQ(m_drawn.Find("no picture").text, "no picture");
}

TEST_F(SheetTexts, PagesAreNumberedWhenThereAreSeveral) {
    const ContactSheet sheet = Sheet(200, 1);
    const std::size_t pages = ContactSheetPages(sheet);
    ASSERT_GE(pages, 2u);
    Draw(sheet, pages - 1);
    EXPECT_EQ(m_drawn.Find("page " + std::to_string(pages) + " of " + std::to_string(pages)).text.substr(0, 4), "page");
    EXPECT_EQ(m_drawn.Find("Holidays").text, "Holidays");
    EXPECT_EQ(m_drawn.texts.back().text, "640 x 360");
    EXPECT_EQ(m_drawn.Find("name 199.mp4").text, "name 199.mp4");
    RecordedDrawing single;
    DrawContactSheet(Sheet(3, 3), 0, single);
    for (const std::string& word : single.Words()) EXPECT_EQ(word.find("page"), std::string::npos);
}

TEST_F(SheetTexts, APictureThatIsNearlyBlackGetsAnEdgeThatShows) {
    ContactSheet sheet = Sheet(2, 2);
    sheet.picture = [](std::size_t cell) { return Picture(160, 120, cell == 0 ? 0xFF050505u : 0xFFC0C0C0u); };
    Draw(sheet);
    std::vector<double> edges;
    for (const auto& outline : m_drawn.outlines)
        if (outline.box.width == 160) edges.push_back(outline.colour.opacity);
    EXPECT_THAT(edges, testing::ElementsAre(qfc::host::palette::kDarkPictureEdge.opacity,
                                            qfc::host::palette::kPictureEdge.opacity));
}

TEST(Palette, WhatCountsIsTheBorderOfThePicture) {
    using namespace qfc::host::palette;
    Picture framed(20, 10, 0xFFFFFFFFu);
    for (int x = 0; x < 20; ++x) framed.At(x, 0) = framed.At(x, 9) = 0xFF000000u;
    for (int y = 0; y < 10; ++y) framed.At(0, y) = framed.At(19, y) = 0xFF000000u;
    EXPECT_EQ(EdgeOf(framed).opacity, kDarkPictureEdge.opacity);
    EXPECT_EQ(EdgeOf(Picture(1, 1, 0xFF000000u)).opacity, kDarkPictureEdge.opacity);
    EXPECT_EQ(EdgeOf(Picture(20, 10, 0xFF808080u)).opacity, kPictureEdge.opacity);
    EXPECT_EQ(EdgeOf(Picture{}).opacity, kPictureEdge.opacity);
    EXPECT_GE(kDarkPictureEdge.opacity, 3 * kPictureEdge.opacity);
}

TEST(Canvas, SizesThatCannotBeDrawnAreRefused) {
    for (const PictureSize size : {PictureSize{0, 1}, PictureSize{1, 0}, PictureSize{Canvas::kMaxSide + 1, 1},
                                   PictureSize{1, Canvas::kMaxSide + 1}, PictureSize{-5, 5}})
        EXPECT_THROW(Canvas(size, {}), PictureError) << size.width << " x " << size.height;
}

}  // namespace
