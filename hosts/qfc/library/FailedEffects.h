#pragma once

#include "hosts/qfc/effects/ProbeReport.h"

#include <optional>
#include <string>

namespace qfc::host {

// What is remembered of effect files that could not be read: their state at that time, and why. The store itself has no
// place for it, so it stands in the settings; what is not remembered there is tried again. Main thread.
struct FailedEffect {
    FileStamp stamp;
    std::string reason;
};

std::optional<FailedEffect> RecallFailure(const std::string& path);
void RememberFailure(const std::string& path, const FailedEffect& failure);
// The same of plugins without any effect for the library, of which the store knows nothing at all.
std::optional<FailedEffect> RecallSkipped(const std::string& path);
void RememberSkipped(const std::string& path, const FailedEffect& skipped);
// Of both kinds.
void ForgetFailure(const std::string& path);
void ForgetAllFailures();

}  // namespace qfc::host
