#pragma once

#include <cstdint>

namespace qfc::host {

// Stands at both ends of a report, so that half of one is none.
inline constexpr std::uint32_t kReportMark = 0x31504651;

// The first byte of an answer, written just before the plugin is loaded: what happens from then on is the plugin's
// doing. An answer that begins with anything else is a complaint, in words: no plugin was run.
inline constexpr std::uint8_t kUnderFullLimits = 1;
inline constexpr std::uint8_t kUnderLowerLimits = 2;  // The caller had less to give than a plugin may take.

}  // namespace qfc::host
