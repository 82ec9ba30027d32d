#include "platform/text/AnsiText.h"

#include "platform/text/AnsiCodec.h"
#include "platform/text/CodePages.h"

#include <algorithm>

namespace qfc {
namespace {

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The first beginning of a character at or behind `target`, counted from one at `start`.
std::size_t NextBoundary(std::string_view text, std::size_t start, std::size_t target) {
    while (start < target) start += DecodeAnsi(text.substr(start)).length;
    return start;
}

}  // namespace

std::size_t FindInAnsi(std::string_view text, std::string_view wanted, std::size_t start) {
    std::size_t found = text.find(wanted, start);
    // In UTF-8 no part of a character looks like ASCII.
    if (IsAnsiUtf8()) return found;
    while (found != std::string_view::npos) {
        if (IsAscii(text.substr(start, found - start))) return found;
        const std::size_t boundary = NextBoundary(text, start, found);
        if (boundary == found) return found;
        start = boundary;
        found = text.find(wanted, start);
    }
    return found;
}

std::size_t FindLastInAnsi(std::string_view text, char wanted) {
    if (IsAnsiUtf8()) return text.rfind(wanted);
    std::size_t last = std::string_view::npos;
    const std::string_view sought(&wanted, 1);
    for (std::size_t found = FindInAnsi(text, sought); found != std::string_view::npos;
         found = FindInAnsi(text, sought, found + 1)) {
        last = found;
    }
    return last;
}

std::string_view CutAnsi(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return text;
    std::size_t end = 0;
    for (std::size_t next = 0; next <= limit; next += DecodeAnsi(text.substr(next)).length) end = next;
    return text.substr(0, end);
}

}  // namespace qfc
