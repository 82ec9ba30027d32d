#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qfc::host {

enum class MediaKind { Video, Audio, Image };

// What is known of a media file beside its pictures and samples. Numbers that do not apply, or that the file does not
// tell, are 0 and texts empty. A plain value.
struct MediaFacts {
    MediaKind kind = MediaKind::Image;
    double duration = 0;  // seconds
    double frameRate = 0;
    int width = 0;  // as shown: upright and with square pixels
    int height = 0;
    int rotation = 0;   // degrees clockwise from the stored picture to the shown one
    std::string codec;  // of the picture, or of the sound where there is no picture
    std::string audioCodec;
    int channels = 0;
    int sampleRate = 0;
    std::string container;
    std::optional<std::int64_t> recorded;  // seconds since 1970, UTC
    std::int64_t modified = 0;             // the same, of the file
    std::uint64_t fileSize = 0;
};

}  // namespace qfc::host
