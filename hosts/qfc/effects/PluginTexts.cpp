#include "hosts/qfc/effects/PluginTexts.h"

#include <cstdint>
#include <cstring>

namespace qfc::host {

namespace {

// Bytes of the character at the start of the text; 0 when there is none.
std::size_t CharacterLength(std::string_view text) {
    const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
    const std::uint8_t lead = byte(0);
    if (lead < 0x80) return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
    for (std::size_t at = 1; at < length; ++at)
        if ((byte(at) & 0xC0) != 0x80) return 0;
    const std::uint8_t second = byte(1);
    const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    const bool surrogate = lead == 0xED && second >= 0xA0;
    const bool beyond = lead == 0xF4 && second >= 0x90;
    return overlong || surrogate || beyond ? 0 : length;
}

bool IsControl(std::string_view character) {
    const auto lead = static_cast<std::uint8_t>(character[0]);
    if (character.size() == 1) return lead < 0x20 || lead == 0x7F;
    return character.size() == 2 && lead == 0xC2 && static_cast<std::uint8_t>(character[1]) < 0xA0;
}

std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

std::string CleanPluginText(const char* text) {
    if (!text) return {};
    std::string_view rest(text, strnlen(text, kLongestPluginText + 4));
    std::string clean;
    while (!rest.empty()) {
        const std::size_t length = CharacterLength(rest);
        const std::string_view character = length == 0 ? "?" : rest.substr(0, length);
        if (clean.size() + character.size() > kLongestPluginText) break;
        clean += IsControl(character) ? " " : character;
        rest.remove_prefix(length == 0 ? 1 : length);
    }
    return Trimmed(clean);
}

bool IsCleanPluginText(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) return false;
    const std::string copy(text);
    return CleanPluginText(copy.c_str()) == copy;
}

}  // namespace qfc::host
