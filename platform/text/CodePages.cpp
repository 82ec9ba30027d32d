#include "platform/text/CodePages.h"

#include "platform/text/AnsiCodec.h"

namespace qfc {
namespace {

constexpr char kSubstitute = '?';
constexpr char16_t kReplacement = u'\uFFFD';

}  // namespace

std::string MapAnsiCharacters(std::string_view text, char32_t (*map)(char32_t)) {
    std::string mapped;
    mapped.reserve(text.size());
    while (!text.empty()) {
        const DecodedCharacter decoded = DecodeAnsi(text);
        const char32_t other = decoded.valid ? map(decoded.character) : decoded.character;
        if (other == decoded.character || !AppendAnsi(mapped, other)) mapped.append(text.substr(0, decoded.length));
        text.remove_prefix(decoded.length);
    }
    return mapped;
}

std::string AnsiToUtf8(std::string_view text) {
    if (IsAnsiUtf8()) return std::string(text);
    std::string utf8;
    utf8.reserve(text.size());
    while (!text.empty()) {
        const DecodedCharacter decoded = DecodeAnsi(text);
        AppendUtf8(utf8, decoded.valid ? decoded.character : static_cast<char32_t>(kSubstitute));
        text.remove_prefix(decoded.length);
    }
    return utf8;
}

std::string Utf8ToAnsi(std::string_view text) {
    if (IsAnsiUtf8()) return std::string(text);
    std::string ansi;
    ansi.reserve(text.size());
    while (!text.empty()) {
        const DecodedCharacter decoded = DecodeUtf8(text);
        if (!decoded.valid || !AppendAnsi(ansi, decoded.character)) {
            // A character beyond the 16-bit range counts as the two units of its surrogate pair.
            ansi.append(decoded.valid && decoded.character > 0xFFFF ? 2 : 1, kSubstitute);
        }
        text.remove_prefix(decoded.length);
    }
    return ansi;
}

std::u16string AnsiToUtf16(std::string_view text) {
    std::u16string utf16;
    utf16.reserve(text.size());
    while (!text.empty()) {
        const DecodedCharacter decoded = DecodeAnsi(text);
        AppendUtf16(utf16, decoded.valid ? decoded.character : kReplacement);
        text.remove_prefix(decoded.length);
    }
    return utf16;
}

}  // namespace qfc

CString CDBStringHelper::ASCII2UTF_8(const CString& text) { return CString(qfc::AnsiToUtf8(text.View())); }

CString CDBStringHelper::UTF_82ASCII(const CString& text) { return CString(qfc::Utf8ToAnsi(text.View())); }
