#include "hosts/qfc/Progress.h"

#include <algorithm>
#include <fmt/format.h>
#include <unistd.h>

namespace qfc::host {

namespace {

constexpr std::size_t kBar = 24;
constexpr std::size_t kText = 34;

// Cut to whole characters of UTF-8; a line that wraps could not be taken back.
std::string_view Shortened(std::string_view text) {
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool begins = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
        if (begins && ++characters > kText) return text.substr(0, i);
    }
    return text;
}

}  // namespace

std::string ProgressLine(std::size_t done, std::size_t total, std::string_view text) {
    const std::size_t filled = total == 0 ? kBar : std::min(done, total) * kBar / total;
    return fmt::format("[{}{}] {}/{} {}", std::string(filled, '#'), std::string(kBar - filled, '.'), done, total,
                       Shortened(text));
}

Progress::Progress(std::FILE* stream, std::size_t total, bool quiet)
    : m_stream(!quiet && isatty(fileno(stream)) ? stream : nullptr), m_total(total) {}

Progress::~Progress() { Clear(); }

void Progress::Step(std::string_view text) {
    ++m_done;
    if (!m_stream) return;
    fmt::print(m_stream, "\r\x1b[K{}", ProgressLine(m_done, m_total, text));
    std::fflush(m_stream);
}

void Progress::Clear() {
    if (!m_stream) return;
    fmt::print(m_stream, "\r\x1b[K");
    std::fflush(m_stream);
}

}  // namespace qfc::host
