#pragma once

#include "hosts/qfc/media/MediaFacts.h"
#include "hosts/qfc/pictures/Picture.h"

#include <vector>

class CQItem;

namespace qfc::host {

// The pictures that the library stores of an item, read from its payloads, which are let go again afterwards: a large
// gallery does not fit into memory. Main thread, no adds under way.

// Upright: a photograph is stored as its file has it and turned here by the file's EXIF data. Empty when there is none.
Picture LoadThumbnail(CQItem& item);
// The frames of its film; none without one. Frames that cannot be read are left out.
std::vector<Picture> LoadFilm(CQItem& item);
// What the black box says of the file; all at their defaults when it is not of qfc's making.
MediaFacts LoadFacts(CQItem& item);

}  // namespace qfc::host
