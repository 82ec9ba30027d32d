#pragma once

#include <cstdint>

namespace qfc::host {

// Stands at both ends of a report, so that half of one is none.
inline constexpr std::uint32_t kReportMark = 0x31504651;

}  // namespace qfc::host
