#pragma once

#include "hosts/qfc/library/EffectCatalogue.h"
#include "hosts/qfc/media/FileWalk.h"

#include <string>
#include <vector>

namespace qfc::host {

// What a scan is going to do, decided before anything is opened.
struct EffectsPlan {
    struct Left {
        std::string path;
        std::string reason;
    };

    std::vector<std::string> probed;
    // Of a file that is probed these have the name: they are probed, one by one, while those before have no effect.
    std::vector<std::string> waiting;
    std::vector<std::string> unchanged;  // In the library, whole, and as the file is now.
    std::vector<Left> failedBefore;      // And not changed since.
    std::vector<Left> skipped;           // Another file of that name is in the library, or it is not for a scan.
    std::vector<Left> problems;          // Not there, not readable, no name for the library.
};

// Of directories only what is called like a plugin (".so") is taken. Files that nothing came of before are tried again
// when they have changed, or with `retry`. Main thread, no adds under way.
EffectsPlan PlanScan(const Walk& walk, const EffectCatalogue& catalogue, bool retry);

// The files of the catalogue whose effects a scan of the file finds again: itself, and those of its name that are gone.
std::vector<const KnownFile*> Predecessors(const EffectCatalogue& catalogue, const std::string& path);

}  // namespace qfc::host
