#include "hosts/qfc/effects/PluginFile.h"

#include "hosts/qfc/effects/PluginTexts.h"

#include <dlfcn.h>

namespace qfc::host {

namespace {

template <typename Function>
void Find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
}

template <typename Function>
void Need(void* library, const char* name, Function& function) {
    Find(library, name, function);
    if (!function) throw PluginError(std::string("no plugin: it has no function ") + name);
}

PluginFunctions FunctionsOf(void* library) {
    PluginFunctions functions;
    Need(library, "f0r_init", functions.init);
    Need(library, "f0r_deinit", functions.deinit);
    Need(library, "f0r_get_plugin_info", functions.pluginInfo);
    Need(library, "f0r_get_param_info", functions.parameterInfo);
    Need(library, "f0r_construct", functions.construct);
    Need(library, "f0r_destruct", functions.destruct);
    Need(library, "f0r_set_param_value", functions.setParameter);
    Need(library, "f0r_get_param_value", functions.getParameter);
    Find(library, "f0r_update", functions.update);
    Find(library, "f0r_update2", functions.update2);
    Find(library, "qfc_effect_count", functions.effectCount);
    Find(library, "qfc_choose_effect", functions.chooseEffect);
    return functions;
}

}  // namespace

PluginFile::PluginFile(const std::filesystem::path& file) {
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        const char* const error = dlerror();
        throw PluginError("cannot be loaded: " + CleanPluginText(error));
    }
    m_functions = FunctionsOf(library);
    // Kept: the result is not looked at, since the interface gives it no meaning.
    m_functions.init();
    if (!m_functions.effectCount || !m_functions.chooseEffect) return;
    m_effectCount = m_functions.effectCount();
    if (m_effectCount < 1 || m_effectCount > static_cast<int>(kMostEffects))
        throw PluginError("it announces " + std::to_string(m_effectCount) + " effects");
}

void PluginFile::Choose(int index) const {
    if (m_functions.effectCount && m_functions.chooseEffect) m_functions.chooseEffect(index);
}

PluginInfo PluginFile::Info() const {
    f0r_plugin_info_t info{};
    m_functions.pluginInfo(&info);
    PluginInfo result;
    result.pluginType = info.plugin_type;
    result.colourModel = info.color_model;
    result.apiVersion = info.frei0r_version;
    result.majorVersion = info.major_version;
    result.minorVersion = info.minor_version;
    result.name = CleanPluginText(info.name);
    result.author = CleanPluginText(info.author);
    result.explanation = CleanPluginText(info.explanation);
    result.parameterCount = info.num_params;
    return result;
}

std::vector<ProbedParameter> PluginFile::Parameters(int count) const {
    if (count < 0 || count > static_cast<int>(kMostParameters))
        throw PluginError("it announces " + std::to_string(count) + " parameters");
    std::vector<ProbedParameter> parameters;
    for (int i = 0; i < count; ++i) {
        f0r_param_info_t info{};
        m_functions.parameterInfo(&info, i);
        if (info.type < parameter_type::kSwitch || info.type > parameter_type::kText)
            throw PluginError("parameter " + std::to_string(i) + " has the unknown type " + std::to_string(info.type));
        ProbedParameter parameter;
        parameter.name = CleanPluginText(info.name);
        parameter.explanation = CleanPluginText(info.explanation);
        parameter.type = static_cast<std::uint8_t>(info.type);
        parameters.push_back(std::move(parameter));
    }
    return parameters;
}

void PluginFile::End() { m_functions.deinit(); }

}  // namespace qfc::host
