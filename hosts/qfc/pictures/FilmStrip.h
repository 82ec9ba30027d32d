#pragma once

#include "hosts/qfc/pictures/Drawing.h"

#include <string>
#include <vector>

namespace qfc::host {

// The frames of a film as a strip of celluloid. Functions without state; any thread.
struct FilmStrip {
    std::string title;   // printed on the edge of the strip
    std::string detail;  // at the end of that line, where there is room; may be empty
    std::vector<Picture> frames;
    std::vector<std::string> captions;  // under the frames, on the edge: one each, or none
};

PictureSize FilmStripSize(const FilmStrip& strip);

// The strip on any drawing of that size.
void DrawFilmStrip(const FilmStrip& strip, Drawing& drawing);

// Side by side, in several strips when there are many. Throws PictureError, also for a strip without frames.
void WriteFilmStrip(const FilmStrip& strip, const std::string& path);

}  // namespace qfc::host
