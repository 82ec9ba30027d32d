#pragma once

#include "hosts/qfc/effects/FilterStudy.h"

namespace qfc::host {

// Finds out how the chosen mixer of a plugin gets from one picture to another, by measuring, and fills in its film, its
// progress and its flags. Its parameters are filled in before. Throws PluginError. One thread.
//
// Progress is the number parameter whose ends show the one picture and the other (mode 1). Where there is none, the
// film goes through the mix of both: from the first picture to it, and on to the second one, blended by us (mode 2).
// Where the mix cannot be told from one of the two, it is looked for with pictures that are partly transparent and with
// other parameters; at last the film blends the two pictures straight.
void StudyTransition(const PluginFile& plugin, const Picture& first, const Picture& second, const WorkBudget& budget,
                     ProbedEffect& effect);

}  // namespace qfc::host
