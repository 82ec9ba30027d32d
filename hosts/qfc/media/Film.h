#pragma once

#include "hosts/qfc/media/MediaFile.h"
#include "hosts/qfc/pictures/Picture.h"

#include <cstddef>
#include <vector>

namespace qfc::host {

// Pictures from places spread over a clip, each turned as the file demands and all of one size. Functions without
// state; any thread, one per file.

struct FilmSettings {
    std::size_t frames = 10;
    int longestSide = 160;
};

struct Film {
    std::vector<Picture> pictures;
    std::size_t framesRead = 0;  // frames of the whole clip when every one was decoded, else 0
};

// `frames` pictures, or none when no picture can be decoded. Of a clip with fewer frames than that, and of one that
// breaks off, the pictures there are stand for their neighbours too. Jumps from key frame to key frame where the file
// allows it; else reads it from end to end.
Film ReadFilm(MediaFile& file, const FilmSettings& settings);

// The place of the picture that shows most: the first that is not nearly of one colour, else the most varied one.
std::size_t MostTelling(const std::vector<Picture>& film);

}  // namespace qfc::host
