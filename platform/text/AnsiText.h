#pragma once

#include <cstddef>
#include <string_view>

// Looking into texts of the ANSI code page character by character: the second byte of a character may look like a
// backslash, a bar or a bracket. Any thread.
namespace qfc {

// Where `wanted`, a text of any characters, begins at the beginning of a character, at or behind `start`; npos when
// nowhere. `start` has to be the beginning of a character, too.
std::size_t FindInAnsi(std::string_view text, std::string_view wanted, std::size_t start = 0);

// The same for the last place of one ASCII character.
std::size_t FindLastInAnsi(std::string_view text, char wanted);

// The longest beginning of whole characters that has at most `limit` bytes.
std::string_view CutAnsi(std::string_view text, std::size_t limit);

}  // namespace qfc
