#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qfc::host {

// What a JPEG or TIFF file says of itself in its EXIF data. Functions without state; any thread. Files of other kinds,
// broken files and missing tags all give "nothing said"; no function throws.

struct ExifFacts {
    // Degrees clockwise that bring the stored picture upright: 0, 90, 180 or 270. Mirroring is left out.
    int rotation = 0;
    // Seconds since 1970 in UTC. Without a stored time zone the camera's clock is taken as it stands.
    std::optional<std::int64_t> recorded;
};

ExifFacts ReadExif(const std::string& path);

// The same from bytes that begin with "Exif\0\0" and a TIFF header.
ExifFacts ReadExifBlock(std::span<const std::uint8_t> block);

}  // namespace qfc::host
