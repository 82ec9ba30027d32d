#pragma once

#include "hosts/qfc/media/MediaFacts.h"
#include "hosts/qfc/media/Thumbnailer.h"
#include "hosts/qfc/media/TimeLimit.h"

#include <chrono>
#include <string>

namespace qfc::host {

// Everything the library stores of one file, ready to be put into an item. A plain value.
struct DecodedMedia {
    std::string path;
    MediaFacts facts;
    std::uint32_t type = 0;
    std::string description;
    std::string blackBox;
    Thumbnails thumbnails;
    std::string error;    // one line, empty on success; the rest is then filled
    bool isMedia = true;  // false when neither the name nor the content is that of a media file

    bool IsGood() const { return error.empty(); }
};

inline constexpr std::chrono::seconds kTimePerFile{60};

// Opens and decodes one file. Never throws: a file that is broken, hostile, too large or too slow gives an error text.
// Any thread, one per file.
DecodedMedia DecodeMedia(const std::string& path, TimeLimit limit);

}  // namespace qfc::host
