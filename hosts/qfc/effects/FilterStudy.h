#pragma once

#include "hosts/qfc/effects/ParameterMoves.h"
#include "hosts/qfc/effects/PluginFile.h"
#include "hosts/qfc/effects/WorkBudget.h"

namespace qfc::host {

// The size in which effects run; pictures of it are halved to be shown.
inline constexpr PictureSize kStudySize = {2 * kEffectPictureSize.width, 2 * kEffectPictureSize.height};

// Runs the chosen filter of a plugin over a moving photograph, a second at 25 frames, and fills in what the effect
// shows: picture, flags, moved parameters. Its parameters are filled in before. The photograph is larger than
// kStudySize, by a quarter. Throws PluginError. One thread.
void StudyFilter(const PluginFile& plugin, const Picture& photograph, const WorkBudget& budget, ProbedEffect& effect);

}  // namespace qfc::host
