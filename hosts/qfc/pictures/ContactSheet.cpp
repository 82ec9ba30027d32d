#include "hosts/qfc/pictures/ContactSheet.h"

#include "hosts/qfc/pictures/Canvas.h"
#include "hosts/qfc/pictures/Palette.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <optional>

namespace qfc::host {

namespace {

// Measures in pixels.
constexpr int kMargin = 32;
constexpr int kGap = 14;
constexpr int kTitleHeight = 96;
constexpr int kHeadingHeight = 44;
constexpr int kCardPadding = 10;
constexpr PictureSize kPictureArea = {160, 120};
constexpr int kNameHeight = 18;
constexpr int kDetailHeight = 15;
constexpr int kCardWidth = kPictureArea.width + 2 * kCardPadding;
constexpr int kCardHeight = kPictureArea.height + 2 * kCardPadding + 6 + kNameHeight + kDetailHeight;
constexpr int kMaxPageHeight = 16000;
constexpr double kCardRadius = 9;
constexpr double kPictureRadius = 4;

// A row of the sheet: a heading (no cells) or some cells beside each other.
struct Row {
    std::size_t firstCell = 0;
    std::size_t cells = 0;
    int Height() const { return cells == 0 ? kHeadingHeight : kCardHeight + kGap; }
};

struct Page {
    std::vector<Row> rows;
    int height = kTitleHeight + kMargin;
};

std::vector<Row> RowsOf(const ContactSheet& sheet) {
    std::vector<Row> rows;
    std::string section;
    for (std::size_t i = 0; i < sheet.cells.size(); ++i) {
        const bool heading = sheet.cells[i].section != section;
        if (heading) rows.push_back({i, 0});
        section = sheet.cells[i].section;
        const bool full = !rows.empty() && rows.back().cells == static_cast<std::size_t>(sheet.columns);
        if (rows.empty() || heading || full) rows.push_back({i, 0});
        ++rows.back().cells;
    }
    return rows;
}

// A heading moves to the next page together with its first cells.
std::vector<Page> PagesOf(const ContactSheet& sheet) {
    const std::vector<Row> rows = RowsOf(sheet);
    std::vector<Page> pages(1);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const int needed = rows[i].Height() + (rows[i].cells == 0 ? kCardHeight : 0);
        if (pages.back().height + needed > kMaxPageHeight) pages.emplace_back();
        pages.back().rows.push_back(rows[i]);
        pages.back().height += rows[i].Height();
    }
    return pages;
}

int WidthOf(int columns) { return 2 * kMargin + columns * kCardWidth + (columns - 1) * kGap; }

// A sheet of a few items is no wider than they need, but never too narrow for its title.
int ColumnsUsed(const ContactSheet& sheet) {
    constexpr int kFewest = 3;
    std::size_t widest = kFewest;
    for (const Row& row : RowsOf(sheet)) widest = std::max(widest, row.cells);
    return static_cast<int>(std::min(static_cast<std::size_t>(sheet.columns), widest));
}

void CheckColumns(const ContactSheet& sheet) {
    if (sheet.columns < 1 || sheet.columns > MaxSheetColumns())
        throw PictureError(fmt::format("a sheet has 1 to {} columns", MaxSheetColumns()));
}

std::size_t SectionSize(const ContactSheet& sheet, std::size_t first) {
    std::size_t last = first;
    while (last < sheet.cells.size() && sheet.cells[last].section == sheet.cells[first].section) ++last;
    return last - first;
}

class PagePainter {
public:
    PagePainter(const ContactSheet& sheet, const Page& page, Drawing& drawing)
        : m_sheet(sheet), m_page(page), m_width(WidthOf(ColumnsUsed(sheet))), m_drawing(drawing) {}

    void Paint(const std::string& pageText) {
        PaintTitle(pageText);
        int y = kTitleHeight;
        for (const Row& row : m_page.rows) {
            if (row.cells == 0) PaintHeading(row, y);
            for (std::size_t i = 0; i < row.cells; ++i)
                PaintCell(row.firstCell + i, kMargin + static_cast<int>(i) * (kCardWidth + kGap), y);
            y += row.Height();
        }
    }

private:
    void PaintTitle(const std::string& pageText) {
        const double width = m_width - 2 * kMargin;
        m_drawing.FillBox({kMargin, 30, 4, 42}, 2, palette::kAccent);
        m_drawing.DrawText(m_sheet.title, {kMargin + 16, 26, width - 16, 30},
                           {.size = 23, .colour = palette::kTitle, .bold = true});
        m_drawing.DrawText(m_sheet.subtitle, {kMargin + 16, 56, width - 16, 18},
                           {.size = 12.5, .colour = palette::kQuiet});
        m_drawing.DrawText(pageText, {kMargin, 56, width, 18},
                           {.size = 12.5, .colour = palette::kQuiet, .align = Align::Right});
    }

    void PaintHeading(const Row& row, int y) {
        const double width = m_width - 2 * kMargin;
        const TextStyle style = {.size = 14, .colour = palette::kTitle, .bold = true};
        const std::string& text = m_sheet.cells[row.firstCell].section;
        const std::string count = text.empty() ? "" : std::to_string(SectionSize(m_sheet, row.firstCell));
        const double textWidth = std::min(m_drawing.TextWidth(text, style) + 2, width - 60);
        // Of a long path the end tells more.
        TextStyle shown = style;
        shown.cut = Cut::Start;
        m_drawing.DrawText(text, {kMargin, y + 10.0, textWidth, 22}, shown);
        m_drawing.DrawText(count, {kMargin + textWidth + 8, y + 10.0, 48, 22}, {.size = 12, .colour = palette::kQuiet});
        const double rule =
            kMargin + textWidth + 8 + m_drawing.TextWidth(count, {.size = 12, .colour = palette::kQuiet}) + 12;
        if (rule < m_width - kMargin)
            m_drawing.FillBox({rule, y + 21.0, m_width - kMargin - rule, 1}, 0, palette::kRule);
    }

    void PaintCell(std::size_t number, int x, int y) {
        const SheetCell& cell = m_sheet.cells[number];
        const Box card = {double(x), double(y), kCardWidth, kCardHeight};
        m_drawing.Shadow(card, kCardRadius, 6);
        m_drawing.FillGradient(card, kCardRadius, palette::kCardTop, palette::kCardBottom);
        m_drawing.OutlineBox(card, kCardRadius, 1, palette::kCardEdge);
        const Box area = {card.x + kCardPadding, card.y + kCardPadding, kPictureArea.width, kPictureArea.height};
        const Box shown = PaintPicture(m_sheet.picture ? m_sheet.picture(number) : Picture{}, area);
        PaintBadge(cell, shown);
        const double below = area.y + area.height + 6;
        m_drawing.DrawText(cell.name, {area.x, below, area.width, kNameHeight},
                           {.size = 11.5, .colour = palette::kName, .align = Align::Centre, .cut = Cut::Middle});
        m_drawing.DrawText(cell.detail, {area.x, below + kNameHeight, area.width, kDetailHeight},
                           {.size = 10, .colour = palette::kQuiet, .align = Align::Centre});
    }

    // The box that the picture takes.
    Box PaintPicture(const Picture& picture, Box area) {
        if (picture.IsEmpty()) {
            m_drawing.FillBox(area, kPictureRadius, palette::kMat);
            m_drawing.DrawText("no picture", area, {.size = 10.5, .colour = palette::kQuiet, .align = Align::Centre});
            return area;
        }
        PictureSize size = {picture.width, picture.height};
        if (size.width > kPictureArea.width || size.height > kPictureArea.height) size = FittedSize(size, kPictureArea);
        const int left = (kPictureArea.width - size.width) / 2;
        const int top = (kPictureArea.height - size.height) / 2;
        const Box box = {area.x + left, area.y + top, double(size.width), double(size.height)};
        m_drawing.DrawPicture(picture, box, kPictureRadius);
        m_drawing.OutlineBox(box, kPictureRadius, 1, palette::EdgeOf(picture));
        return box;
    }

    void PaintBadge(const SheetCell& cell, Box picture) {
        if (cell.badge == SheetBadge::None) return;
        constexpr double kHeight = 17;
        constexpr double kIcon = 8;
        const TextStyle style = {.size = 10, .colour = palette::kBadgeText, .bold = true};
        const double text = cell.duration.empty() ? 0 : m_drawing.TextWidth(cell.duration, style) + 5;
        const double width = kIcon + text + 12;
        const Box pill = {picture.x + picture.width - width - 4, picture.y + picture.height - kHeight - 4, width,
                          kHeight};
        m_drawing.FillBox(pill, kHeight / 2, palette::kBadge);
        const Box icon = {pill.x + 7, pill.y + 4.5, kIcon - 1, kIcon};
        if (cell.badge == SheetBadge::Film) m_drawing.FillTriangle(icon, palette::kAccent);
        if (cell.badge == SheetBadge::Sound) m_drawing.FillNote(icon, palette::kAccent);
        if (text > 0) m_drawing.DrawText(cell.duration, {icon.x + kIcon + 3, pill.y, text, kHeight}, style);
    }

    const ContactSheet& m_sheet;
    const Page& m_page;
    const int m_width;
    Drawing& m_drawing;
};

void PaintPage(const ContactSheet& sheet, const std::vector<Page>& pages, std::size_t page, Drawing& drawing) {
    const std::string pageText = pages.size() == 1 ? "" : fmt::format("page {} of {}", page + 1, pages.size());
    PagePainter(sheet, pages.at(page), drawing).Paint(pageText);
}

std::string PagePath(const std::string& path, std::size_t page) {
    if (page == 0) return path;
    const std::filesystem::path whole(path);
    std::filesystem::path name = whole.stem();
    name += fmt::format("-{}", page + 1);
    name += whole.extension();
    return (whole.parent_path() / name).string();
}

}  // namespace

int MaxSheetColumns() { return (Canvas::kMaxSide - 2 * kMargin + kGap) / (kCardWidth + kGap); }

PictureSize ContactSheetSize(const ContactSheet& sheet) {
    CheckColumns(sheet);
    return {WidthOf(ColumnsUsed(sheet)), PagesOf(sheet).front().height};
}

std::vector<std::string> ContactSheetFiles(const ContactSheet& sheet, const std::string& path) {
    CheckColumns(sheet);
    std::vector<std::string> files;
    const std::size_t pages = PagesOf(sheet).size();
    for (std::size_t i = 0; i < pages; ++i) files.push_back(PagePath(path, i));
    return files;
}

std::size_t ContactSheetPages(const ContactSheet& sheet) {
    CheckColumns(sheet);
    return PagesOf(sheet).size();
}

void DrawContactSheet(const ContactSheet& sheet, std::size_t page, Drawing& drawing) {
    CheckColumns(sheet);
    PaintPage(sheet, PagesOf(sheet), page, drawing);
}

std::vector<std::string> WriteContactSheet(const ContactSheet& sheet, const std::string& path) {
    CheckColumns(sheet);
    const std::vector<Page> pages = PagesOf(sheet);
    std::vector<std::string> written;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        Canvas canvas({WidthOf(ColumnsUsed(sheet)), pages[i].height}, palette::kGround);
        PaintPage(sheet, pages, i, canvas);
        written.push_back(PagePath(path, i));
        canvas.SavePng(written.back());
    }
    return written;
}

}  // namespace qfc::host
