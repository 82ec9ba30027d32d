#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qfc::host {

// Moments as seconds since 1970 in UTC. Functions without state; any thread.

// Reads "2024-05-06T10:20:30", also with colons or blanks between the parts, a fraction, and "Z" or an offset such as
// "+02:00" behind it; without one the text is taken as UTC. Nothing for a text that names no day of the calendar or a
// year before 1826, the year of the first photograph: cameras without a set clock write such dates.
std::optional<std::int64_t> ParseTime(std::string_view text);

// Year, month, day, hour, minute and second, single blanks between: "2024 5 6 10 20 30".
std::string SixNumbers(std::int64_t seconds);

}  // namespace qfc::host
