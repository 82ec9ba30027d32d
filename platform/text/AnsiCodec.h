#pragma once

#include "platform/text/Utf8.h"

#include <string>
#include <string_view>

// Character by character between the ANSI code page and Unicode, for whatever page is in force. Every function may be
// called from any thread: each thread has converters of its own. Throws std::bad_alloc when it cannot get one.
namespace qfc {

// The character at the start of a text that is not empty.
DecodedCharacter DecodeAnsi(std::string_view text);

// False, and nothing appended, when the code page does not have the character.
bool AppendAnsi(std::string& text, char32_t character);

// Replaces each character by `map` of it; what forms no character, or maps to one the page does not have, stays.
std::string MapAnsiCharacters(std::string_view text, char32_t (*map)(char32_t));

}  // namespace qfc
