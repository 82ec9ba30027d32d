#pragma once

#include "hosts/qfc/pictures/Picture.h"

#include <filesystem>

namespace qfc::host {

// The two photographs on which effects are shown: larger than the size in which effects run, by a quarter, so that they
// can be moved. A plain value.
struct SamplePhotographs {
    Picture first;
    Picture second;
};

// Where they lie beside a program.
std::filesystem::path PhotographFolder(const std::filesystem::path& program);

// Throws std::runtime_error when they cannot be read or are too small. Any thread.
SamplePhotographs ReadPhotographs(const std::filesystem::path& folder);

}  // namespace qfc::host
