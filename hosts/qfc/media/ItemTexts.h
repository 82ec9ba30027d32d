#pragma once

#include "hosts/qfc/media/MediaFacts.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace qfc::host {

// What an item of the library says of its file. Functions without state; any thread.

// Twelve numbers with single blanks between: year, month, day, hour, minute and second of the recording in UTC, or of
// the modification when the recording is not known; then the same six of the modification. Sorting by date reads it.
std::string DescriptionOf(const MediaFacts& facts);

// A JSON object. Numbers that are not known are left out.
std::string BlackBoxOf(const MediaFacts& facts);

// The facts of such a text, as far as it holds them; all at their defaults for a text of another kind.
MediaFacts FactsOf(std::string_view blackBox);

// For people: "0:10", "1:02:03", below a second "0.4 s"; and "1920 × 1080" or "44.1 kHz stereo".
std::string ShownDuration(double seconds);
// A moment of a clip: "1:02", or "1:02.5" for moments that lie closer together than two seconds.
std::string ShownMoment(double seconds, double distance);
std::string ShownDetail(const MediaFacts& facts);

// The type bit: 1 video, 2 audio, 4 image.
std::uint32_t TypeOf(MediaKind kind);

}  // namespace qfc::host
