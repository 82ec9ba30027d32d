#include "platform/text/Utf8.h"

namespace qfc {
namespace {

// What a lead byte announces. The range of the first continuation byte shuts out overlong forms, surrogates and values
// beyond U+10FFFF.
struct Lead {
    int continuations;
    unsigned char firstLow;
    unsigned char firstHigh;
    char32_t bits;
};

Lead ReadLead(unsigned char byte) {
    if (byte < 0x80) return {0, 0, 0, byte};
    if (byte < 0xC2) return {-1, 0, 0, 0};
    if (byte < 0xE0) return {1, 0x80, 0xBF, byte & 0x1Fu};
    if (byte == 0xE0) return {2, 0xA0, 0xBF, byte & 0x0Fu};
    if (byte == 0xED) return {2, 0x80, 0x9F, byte & 0x0Fu};
    if (byte < 0xF0) return {2, 0x80, 0xBF, byte & 0x0Fu};
    if (byte == 0xF0) return {3, 0x90, 0xBF, byte & 0x07u};
    if (byte < 0xF4) return {3, 0x80, 0xBF, byte & 0x07u};
    if (byte == 0xF4) return {3, 0x80, 0x8F, byte & 0x07u};
    return {-1, 0, 0, 0};
}

}  // namespace

DecodedCharacter DecodeUtf8(std::string_view text) {
    const Lead lead = ReadLead(static_cast<unsigned char>(text.front()));
    if (lead.continuations < 0) return {0, 1, false};
    char32_t character = lead.bits;
    unsigned char low = lead.firstLow;
    unsigned char high = lead.firstHigh;
    std::size_t length = 1;
    for (int i = 0; i < lead.continuations; ++i, ++length) {
        if (length >= text.size()) return {0, length, false};
        const auto byte = static_cast<unsigned char>(text[length]);
        if (byte < low || byte > high) return {0, length, false};
        character = (character << 6) | (byte & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {character, length, true};
}

void AppendUtf8(std::string& text, char32_t character) {
    const auto continuation = [](char32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | (character >> 6));
        text += continuation(character);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | (character >> 12));
        text += continuation(character >> 6);
        text += continuation(character);
    } else {
        text += static_cast<char>(0xF0 | (character >> 18));
        text += continuation(character >> 12);
        text += continuation(character >> 6);
        text += continuation(character);
    }
}

void AppendUtf16(std::u16string& text, char32_t character) {
    if (character < 0x10000) {
        text += static_cast<char16_t>(character);
        return;
    }
    text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
    text += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
}

}  // namespace qfc
