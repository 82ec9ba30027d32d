#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/effects/ProbeReport.h"
#include "hosts/qfc/library/EffectItem.h"

#include <filesystem>
#include <nlohmann/json.hpp>

namespace qfc::host {

// Opens no library.
int Run(const EffectsProbeOptions& options, const Console& console) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::canonical(options.file, error);
    if (error) throw Failure(options.file + ": " + error.message());
    const ProbeReport report = ProbeFile(path);
    if (report.outcome != ProbeReport::Outcome::Effects) throw Failure(path.string() + ": " + report.reason);
    Json json{{"file", path.string()}, {"effects", Json::array()}};
    for (const ProbedEffect& effect : report.effects) {
        json["effects"].push_back(EffectJson({effect, report, path.string()}));
        console.Show(std::string(effect.isTransition ? "transition" : "filter") + "  " + effect.name);
        for (const auto& [key, value] : json["effects"].back().items()) {
            if (key != "kind" && key != "name") console.Show("    " + key + "  " + value.dump());
        }
    }
    console.ShowJson(json);
    if (!report.reason.empty()) console.Say(report.reason);
    return kDone;
}

}  // namespace qfc::host
