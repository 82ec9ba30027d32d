#pragma once

#include "hosts/qfc/pictures/Drawing.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace qfc::host {

// One sheet with the pictures of many items, as a photographer lays out prints. Functions without state; any thread.

enum class SheetBadge { None, Film, Sound };

struct SheetCell {
    std::string section;  // a heading is drawn where it changes; empty for no headings
    std::string name;
    std::string detail;  // a second, quieter line; may be empty
    SheetBadge badge = SheetBadge::None;
    std::string duration;  // on the badge; may be empty
};

struct ContactSheet {
    std::string title;
    std::string subtitle;
    int columns = 6;
    std::vector<SheetCell> cells;
    // The upright picture of a cell; an empty one is drawn as a crossed card. Asked for one at a time while drawing, so
    // that a large library needs no more memory than a small one.
    std::function<Picture(std::size_t cell)> picture;
};

// The most columns that fit the widest picture that can be made.
int MaxSheetColumns();

// The files that a sheet takes: `path`, and for what does not fit one picture "name-2.png" and so on beside it. Throws
// PictureError for columns out of range.
std::vector<std::string> ContactSheetFiles(const ContactSheet& sheet, const std::string& path);

// The pages of the sheet, and one of them on any drawing. Throw PictureError for columns out of range.
std::size_t ContactSheetPages(const ContactSheet& sheet);
void DrawContactSheet(const ContactSheet& sheet, std::size_t page, Drawing& drawing);

// Draws the sheet and gives those files, written. Throws PictureError, for columns out of range as well.
std::vector<std::string> WriteContactSheet(const ContactSheet& sheet, const std::string& path);

// The size of the sheet's first page in pixels.
PictureSize ContactSheetSize(const ContactSheet& sheet);

}  // namespace qfc::host
