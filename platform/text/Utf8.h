#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qfc {

// One character at the start of a text. Not valid: `length` bytes, at least one, that form no character.
struct DecodedCharacter {
    char32_t character;
    std::size_t length;
    bool valid;
};

// The text may not be empty. A broken sequence counts once, up to the byte that breaks it.
DecodedCharacter DecodeUtf8(std::string_view text);
void AppendUtf8(std::string& text, char32_t character);
void AppendUtf16(std::u16string& text, char32_t character);

}  // namespace qfc
