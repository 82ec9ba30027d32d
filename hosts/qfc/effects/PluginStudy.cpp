#include "hosts/qfc/effects/PluginStudy.h"

#include "hosts/qfc/effects/PictureMath.h"
#include "hosts/qfc/effects/PluginInstance.h"
#include "hosts/qfc/effects/PluginTexts.h"
#include "hosts/qfc/effects/TransitionStudy.h"

#include <optional>
#include <utility>

namespace qfc::host {

namespace {

Picture Middle(const Picture& photograph) {
    return Part(photograph, (photograph.width - kStudySize.width) / 2, (photograph.height - kStudySize.height) / 2,
                kStudySize);
}

// Why an effect is none for the library, if so. The interface asks hosts to leave alone what they do not know.
std::optional<std::string> WhyLeftOut(const PluginInfo& info) {
    if (info.apiVersion < 0 || info.apiVersion > FREI0R_MAJOR_VERSION)
        return "made for the unknown version " + std::to_string(info.apiVersion) + " of the plugin interface";
    if (info.pluginType == F0R_PLUGIN_TYPE_SOURCE) return "a generator";
    if (info.pluginType == F0R_PLUGIN_TYPE_MIXER3) return "a mixer of three pictures";
    if (info.pluginType != F0R_PLUGIN_TYPE_FILTER && info.pluginType != F0R_PLUGIN_TYPE_MIXER2)
        return "of the unknown type " + std::to_string(info.pluginType);
    if (info.colourModel < F0R_COLOR_MODEL_BGRA8888 || info.colourModel > F0R_COLOR_MODEL_PACKED32)
        return "of the unknown colour model " + std::to_string(info.colourModel);
    return std::nullopt;
}

ProbedEffect Described(const PluginInfo& info, int index) {
    ProbedEffect effect;
    effect.isTransition = info.pluginType == F0R_PLUGIN_TYPE_MIXER2;
    effect.index = static_cast<std::uint16_t>(index);
    effect.name = info.name;
    effect.author = info.author;
    effect.explanation = info.explanation;
    effect.majorVersion = info.majorVersion;
    effect.minorVersion = info.minorVersion;
    effect.pluginType = static_cast<std::uint8_t>(info.pluginType);
    effect.colourModel = static_cast<std::uint8_t>(info.colourModel);
    effect.apiVersion = static_cast<std::uint32_t>(info.apiVersion);
    return effect;
}

class Study {
public:
    Study(const std::filesystem::path& file, const SamplePhotographs& photographs, const WorkBudget& budget)
        : m_name(CleanPluginText(file.stem().c_str())), m_photographs(photographs), m_budget(budget), m_plugin(file) {}

    ProbeReport Run() {
        ProbeReport report;
        for (int index = 0; index < m_plugin.EffectCount(); ++index) {
            m_plugin.Choose(index);
            const PluginInfo info = m_plugin.Info();
            if (const auto why = WhyLeftOut(info)) {
                if (!report.reason.empty()) report.reason += "; ";
                report.reason += m_plugin.EffectCount() == 1 ? *why : "effect " + std::to_string(index) + ": " + *why;
            } else {
                // None of them may use the time that those behind it need.
                const auto left = static_cast<std::size_t>(m_plugin.EffectCount() - index);
                report.effects.push_back(Measured(info, index, m_budget.Part(left)));
            }
        }
        m_plugin.End();
        report.reason = CleanPluginText(report.reason.c_str());
        report.outcome = report.effects.empty() ? ProbeReport::Outcome::Skipped : ProbeReport::Outcome::Effects;
        return report;
    }

private:
    ProbedEffect Measured(const PluginInfo& info, int index, const WorkBudget& budget) {
        ProbedEffect effect = Described(info, index);
        if (effect.name.empty()) effect.name = m_name.empty() ? "?" : m_name;
        const PluginFunctions& functions = m_plugin.Functions();
        if (effect.isTransition ? !functions.update2 : !functions.update && !functions.update2)
            throw PluginError("it has no function that makes pictures");
        effect.parameters = m_plugin.Parameters(info.parameterCount);
        ReadDefaults(effect);
        if (effect.isTransition) {
            StudyTransition(m_plugin, Middle(m_photographs.first), Middle(m_photographs.second), budget, effect);
        } else {
            StudyFilter(m_plugin, m_photographs.first, budget, effect);
        }
        return effect;
    }

    void ReadDefaults(ProbedEffect& effect) const {
        const PluginInstance instance(m_plugin, effect.colourModel, kStudySize);
        int index = 0;
        for (ProbedParameter& parameter : effect.parameters)
            parameter.defaultValue = instance.Parameter(index++, parameter.type);
    }

    std::string m_name;
    const SamplePhotographs& m_photographs;
    const WorkBudget& m_budget;
    PluginFile m_plugin;
};

}  // namespace

ProbeReport StudyPlugin(const std::filesystem::path& file, const SamplePhotographs& photographs,
                        const WorkBudget& budget) {
    ProbeReport failed;
    try {
        return Study(file, photographs, budget).Run();
    } catch (const std::exception& error) {
        failed.reason = CleanPluginText(error.what());
    } catch (...) {
        // Plugins may be written in C++, too.
        failed.reason = "it throws an exception";
    }
    return failed;
}

}  // namespace qfc::host
