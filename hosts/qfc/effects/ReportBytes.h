#pragma once

#include "hosts/qfc/effects/ProbeReport.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qfc::host {

// A report on its way from the process that runs a plugin. Whoever reads it trusts nothing: the plugin lived in the
// same process as the writer. Functions without state; any thread.

// No report has more bytes.
inline constexpr std::size_t kLargestReport = std::size_t{32} << 20;

// Without the stamp, which is not the other process's business. Empty when it would be too large.
std::vector<std::uint8_t> PackReport(const ProbeReport& report);

// Nothing unless the bytes are exactly one report, and everything in it is as ProbeReport.h promises.
std::optional<ProbeReport> UnpackReport(std::span<const std::uint8_t> bytes);

}  // namespace qfc::host
