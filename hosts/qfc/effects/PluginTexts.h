#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qfc::host {

// Texts of plugins. Functions without state; any thread.

// No text of a report is longer, in bytes.
inline constexpr std::size_t kLongestPluginText = 4096;

// What a plugin says, fit to be stored: valid UTF-8 without control characters, without blanks at either end, at most
// kLongestPluginText bytes, cut between characters. Bytes that form no character become '?'. Null gives an empty text.
std::string CleanPluginText(const char* text);

// Whether a text is as CleanPluginText makes them.
bool IsCleanPluginText(std::string_view text);

}  // namespace qfc::host
