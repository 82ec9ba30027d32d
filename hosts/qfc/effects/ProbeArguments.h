#pragma once

#include "hosts/qfc/effects/ProbeReport.h"

#include <string>
#include <vector>

namespace qfc::host {

// How the process that runs a plugin is called, apart from the program's name.
std::vector<std::string> ProbeArguments(const std::filesystem::path& file, std::chrono::milliseconds limit);

}  // namespace qfc::host
