#pragma once

#include "hosts/qfc/effects/ProbeReport.h"

#include <vector>

namespace qfc::host {

using Moves = std::vector<MovedParameter>;

// What to try, in this order, so that an effect shows something: each parameter for itself, farthest from its default
// first; then all together; then pairs. Texts are never moved: what they mean is the plugin's secret. Pure; any thread.
std::vector<Moves> MovesToTry(const std::vector<ProbedParameter>& parameters);

}  // namespace qfc::host
