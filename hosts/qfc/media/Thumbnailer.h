#pragma once

#include "hosts/qfc/media/MediaFile.h"

#include <cstdint>
#include <vector>

namespace qfc::host {

// What the library keeps of a file's looks, as packed bitmaps of 24 bits.
struct Thumbnails {
    std::vector<std::uint8_t> cache;
    std::vector<std::uint8_t> film;  // for video: frames of one size, back to back
    std::uint32_t frameSize = 0;     // bytes of one frame
    std::uint32_t shownFrame = 0;    // the frame of the film that the cache shows
};

// Makes the bitmaps of a file and completes `facts` with what only decoding tells: an image's size and recording
// time, the length of a sound, and of a film that does not say it. JPEG and TIFF pictures stay as stored, since whoever
// draws them turns them by their EXIF data; a film's own turn is applied. Throws MediaError when nothing can be
// decoded. One thread per file.
Thumbnails MakeThumbnails(MediaFile& file, MediaFacts& facts);

}  // namespace qfc::host
