#pragma once

#include "hosts/qfc/library/Galleries.h"

#include <filesystem>
#include <string>

namespace qfc::host {

// What a command may write over. Main thread.

// Throws WrongUsage unless the name ends in .png, in either case.
void RequirePictureName(const std::string& name);

// The file that a named output really is, links followed. Throws Failure when it belongs to the library or is no
// regular file.
std::filesystem::path OutputPath(const std::string& name);

// Throws Failure when the file is the medium of an item of any gallery, under this name or another.
void RefuseMediaFile(Galleries& galleries, const std::filesystem::path& file);

}  // namespace qfc::host
