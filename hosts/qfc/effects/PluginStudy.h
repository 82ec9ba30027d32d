#pragma once

#include "hosts/qfc/effects/ProbeReport.h"
#include "hosts/qfc/effects/SamplePhotographs.h"
#include "hosts/qfc/effects/WorkBudget.h"

namespace qfc::host {

// Loads a plugin into this process and measures all its effects; the stamp stays empty. Whatever the plugin does
// happens here, so this belongs into a process of its own. Never throws, but may not return. One thread.
ProbeReport StudyPlugin(const std::filesystem::path& file, const SamplePhotographs& photographs,
                        const WorkBudget& budget);

}  // namespace qfc::host
