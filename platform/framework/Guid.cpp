#include "platform/framework/Guid.h"

#include <array>
#include <cstdio>

namespace qfc {
namespace {

constexpr std::size_t kTextLength = 36;

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

bool IsHyphenPlace(std::size_t index) { return index == 8 || index == 13 || index == 18 || index == 23; }

// The 16 bytes in the order in which the text names them.
std::optional<std::array<std::uint8_t, 16>> ReadDigits(std::string_view text) {
    std::array<std::uint8_t, 16> bytes{};
    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsHyphenPlace(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const int digit = HexDigit(text[i]);
        if (digit < 0) return std::nullopt;
        std::uint8_t& byte = bytes[digits++ / 2];
        byte = static_cast<std::uint8_t>((byte << 4) | digit);
    }
    return bytes;
}

}  // namespace

std::string GuidToText(const GUID& guid) {
    char text[kTextLength + 1];
    const std::uint8_t* d = guid.Data4;
    std::snprintf(text, sizeof(text), "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X", guid.Data1, guid.Data2,
                  guid.Data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
    return text;
}

std::optional<GUID> GuidFromText(std::string_view text) {
    if (text.size() == kTextLength + 2 && text.front() == '{' && text.back() == '}') {
        text = text.substr(1, kTextLength);
    }
    if (text.size() != kTextLength) return std::nullopt;
    const auto bytes = ReadDigits(text);
    if (!bytes) return std::nullopt;
    const auto& b = *bytes;
    GUID guid;
    guid.Data1 = std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 | b[3];
    guid.Data2 = static_cast<std::uint16_t>(b[4] << 8 | b[5]);
    guid.Data3 = static_cast<std::uint16_t>(b[6] << 8 | b[7]);
    std::memcpy(guid.Data4, b.data() + 8, sizeof(guid.Data4));
    return guid;
}

}  // namespace qfc
