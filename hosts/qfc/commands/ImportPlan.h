#pragma once

#include "hosts/qfc/cli/Options.h"
#include "hosts/qfc/media/FileWalk.h"

#include <string>
#include <vector>

class CQGallery;

namespace qfc::host {

// What an import is going to do, decided before anything is added.
struct ImportPlan {
    struct File {
        std::string path;  // Canonical: the identity of the file.
        std::string name;
        std::vector<std::string> folder;
        bool named = false;    // On the command line itself; else found in a directory.
        bool storable = true;  // False when its name is not one that the library gives back unchanged.
    };
    struct Known {
        std::string path;
        std::vector<std::string> paths;  // Where the library has it.
    };

    std::vector<File> files;
    std::vector<Known> already;         // In the gallery before.
    std::vector<WalkProblem> problems;  // Not there, not readable.
};

// `base` are the components of the folder to import into, empty for none: directories then become folders of the
// gallery, and single files go to "Imported". Reads the tree; main thread, no adds under way.
ImportPlan PlanImport(const Walk& walk, CQGallery& gallery, const std::vector<std::string>& base);

}  // namespace qfc::host
