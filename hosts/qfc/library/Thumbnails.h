#pragma once

#include "service/LibItemThumbnailInfo.h"

#include <vector>

namespace qfc::host {

struct StoredThumbnail {
    _DS_LibItemTunmbnailInfo_ info;  // Width and height -1: no picture, or not readable.
    bool isReadable = true;          // False: what is stored of the bitmap, or of the item, could not be read.
};

// The bitmaps of the library, whatever other programs add or remove meanwhile. Looks again at what the library lists
// without size or path: it tells neither from what it cannot read. Throws Failure when not all can be listed. Main
// thread, while a Session runs.
std::vector<StoredThumbnail> StoredThumbnails();

}  // namespace qfc::host
