#pragma once

#include <string>
#include <string_view>

namespace qfc {

// Simple case folding of Unicode to lower case, and its inverse, of one character; what has no other case stays as it
// is. They know no locale.
char32_t FoldToLower(char32_t character);
char32_t FoldToUpper(char32_t character);

// The same over a text in the ANSI code page. Bytes that form no character, and characters whose other case the code
// page does not have, stay as they are. Any thread.
std::string FoldAnsiToLower(std::string_view text);
std::string FoldAnsiToUpper(std::string_view text);

}  // namespace qfc
