#pragma once

#include "tests/support/TempFolder.h"

#include <filesystem>
#include <string>

namespace qfc::test {

// A folder that fills with plugins. What a plugin is, its name says: what stands before the first '-' is one of the
// kinds in plugins/Effects.cpp and plugins/Misdeeds.cpp, and the whole, without ".so", is the name of its effect.
class EffectPlugins {
public:
    std::string Make(const std::string& name) const {
        const std::string path = m_folder / (name + ".so");
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::filesystem::copy_file(QFC_TEST_PLUGIN, path, std::filesystem::copy_options::overwrite_existing);
        return path;
    }
    const TempFolder& Folder() const { return m_folder; }

private:
    TempFolder m_folder;
};

}  // namespace qfc::test
