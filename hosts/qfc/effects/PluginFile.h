#pragma once

#include "hosts/qfc/effects/ProbeReport.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" {
#include <frei0r.h>
}

namespace qfc::host {

// A file that is no plugin, or one that does not keep to the interface. The text is one line for people.
class PluginError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The functions of a plugin; `update` is null in mixers, `update2` in filters and sources that do not have it.
struct PluginFunctions {
    decltype(&f0r_init) init = nullptr;
    decltype(&f0r_deinit) deinit = nullptr;
    decltype(&f0r_get_plugin_info) pluginInfo = nullptr;
    decltype(&f0r_get_param_info) parameterInfo = nullptr;
    decltype(&f0r_construct) construct = nullptr;
    decltype(&f0r_destruct) destruct = nullptr;
    decltype(&f0r_set_param_value) setParameter = nullptr;
    decltype(&f0r_get_param_value) getParameter = nullptr;
    decltype(&f0r_update) update = nullptr;
    decltype(&f0r_update2) update2 = nullptr;
    int (*effectCount)() = nullptr;
    void (*chooseEffect)(int) = nullptr;
};

// What a plugin says of the effect that is chosen, as far as it can be used.
struct PluginInfo {
    int pluginType = 0;
    int colourModel = 0;
    int apiVersion = 0;
    int majorVersion = 0;
    int minorVersion = 0;
    std::string name;
    std::string author;
    std::string explanation;
    int parameterCount = 0;
};

// A plugin, loaded into this process for as long as it runs: belongs into a process of its own. A file may hold more
// than one effect (README.md of this room). One thread.
class PluginFile {
public:
    // Loads the file and starts it. Throws PluginError.
    explicit PluginFile(const std::filesystem::path& file);

    const PluginFunctions& Functions() const { return m_functions; }
    int EffectCount() const { return m_effectCount; }

    // From now on the plugin speaks of this effect. No instance may be alive.
    void Choose(int index) const;
    PluginInfo Info() const;
    // Names, types and explanations of so many parameters, with no defaults: these are an instance's. Throws
    // PluginError when a type is unknown.
    std::vector<ProbedParameter> Parameters(int count) const;

    // Tells the plugin that it ends. It stays loaded, since threads of it may still run.
    void End();

private:
    PluginFunctions m_functions;
    int m_effectCount = 1;
};

}  // namespace qfc::host
