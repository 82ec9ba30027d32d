#include "hosts/qfc/CalendarTime.h"

#include <array>
#include <chrono>
#include <fmt/format.h>

namespace qfc::host {

namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

// Takes exactly `digits` digits off the front.
std::optional<int> TakeNumber(std::string_view& text, std::size_t digits) {
    if (text.size() < digits) return std::nullopt;
    int value = 0;
    for (const char c : text.substr(0, digits)) {
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    text.remove_prefix(digits);
    return value;
}

bool TakeOneOf(std::string_view& text, std::string_view characters) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) return false;
    text.remove_prefix(1);
    return true;
}

void TakeFraction(std::string_view& text) {
    if (!TakeOneOf(text, ".,")) return;
    while (TakeNumber(text, 1)) {
    }
}

// Seconds east of Greenwich; nothing when there is text that is no offset.
std::optional<int> TakeOffset(std::string_view text) {
    while (TakeOneOf(text, " ")) {
    }
    if (text.empty() || text == "Z" || text == "z") return 0;
    const int sign = text.front() == '-' ? -1 : 1;
    if (!TakeOneOf(text, "+-")) return std::nullopt;
    const std::optional<int> hours = TakeNumber(text, 2);
    TakeOneOf(text, ":");
    const std::optional<int> minutes = text.empty() ? 0 : TakeNumber(text, 2);
    if (!hours || !minutes || *hours > 15 || *minutes > 59 || !text.empty()) return std::nullopt;
    return sign * (*hours * 3600 + *minutes * 60);
}

struct Part {
    std::size_t digits;
    std::string_view separators;
};
constexpr std::array<Part, 6> kParts = {{{4, ":-/"}, {2, ":-/"}, {2, "T "}, {2, ":"}, {2, ":"}, {2, ""}}};
constexpr int kFirstYear = 1826;

}  // namespace

std::optional<std::int64_t> ParseTime(std::string_view text) {
    std::array<int, kParts.size()> value{};
    for (std::size_t i = 0; i < kParts.size(); ++i) {
        const std::optional<int> number = TakeNumber(text, kParts[i].digits);
        if (!number || (!kParts[i].separators.empty() && !TakeOneOf(text, kParts[i].separators))) return std::nullopt;
        value[i] = *number;
    }
    TakeFraction(text);
    const std::optional<int> offset = TakeOffset(text);
    const year_month_day date{std::chrono::year{value[0]}, std::chrono::month{static_cast<unsigned>(value[1])},
                              std::chrono::day{static_cast<unsigned>(value[2])}};
    if (!offset || !date.ok() || value[0] < kFirstYear || value[3] > 23 || value[4] > 59 || value[5] > 60)
        return std::nullopt;
    const std::int64_t midnight = seconds{sys_days{date}.time_since_epoch()}.count();
    return midnight + value[3] * 3600 + value[4] * 60 + value[5] - *offset;
}

std::string SixNumbers(std::int64_t moment) {
    const sys_seconds time{seconds{moment}};
    const sys_days day = floor<days>(time);
    const year_month_day date{day};
    const std::int64_t rest = (time - day).count();
    return fmt::format("{} {} {} {} {} {}", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                       static_cast<unsigned>(date.day()), rest / 3600, rest / 60 % 60, rest % 60);
}

}  // namespace qfc::host
