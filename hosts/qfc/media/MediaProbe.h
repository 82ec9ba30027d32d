#pragma once

#include "hosts/qfc/media/MediaFacts.h"

#include <optional>
#include <string>
#include <string_view>

namespace qfc::host {

// Tells from a name alone whether a file is worth opening, and which of FFmpeg's readers it may be given to. Content
// alone would not do: FFmpeg takes plain text for a film of typed letters. Functions without state; any thread.

// The kind that the extension promises, without case; nothing for a name that is not media. A sound container may turn
// out to hold a film and the other way round; an image stays an image.
std::optional<MediaKind> KindByName(std::string_view path);

// The reader that belongs to the extension; empty when the name is not media.
std::string_view ReaderByName(std::string_view path);

// Whether a reader, by FFmpeg's name for it (several spellings separated by commas), may be used for a promised kind.
bool IsReaderAllowed(std::string_view reader, MediaKind promised);

}  // namespace qfc::host
