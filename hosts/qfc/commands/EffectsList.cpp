#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/EffectsText.h"
#include "hosts/qfc/library/FailedEffects.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

std::string Line(const KnownFile& file, const KnownEffect& effect, const std::vector<std::string>& paths) {
    std::string line = fmt::format("{:<10}  {}", KindOf(effect), paths.empty() ? NameOf(effect) : paths.front());
    line += "  " + file.path;
    if (IsFileGone(file.path)) line += "  [missing]";
    if (effect.item == nullptr) line += "  [no item]";
    if (effect.facts.noVisibleEffect) line += "  [no visible effect at its defaults]";
    if (!effect.isRecorded) line += "  [no record]";
    return line;
}

Json ListEffects(Galleries& galleries, const EffectCatalogue& catalogue, const Console& console) {
    Json json = Json::array();
    for (const auto& [path, file] : catalogue.Files()) {
        for (const KnownEffect& effect : file.effects) {
            json.push_back(KnownEffectJson(galleries, file, effect));
            console.Show(Line(file, effect, PathsOf(galleries, effect)));
        }
    }
    return json;
}

Json ListFailed(const EffectCatalogue& catalogue, const Console& console) {
    Json json = Json::array();
    for (const auto& [path, file] : catalogue.Files()) {
        if (!file.IsFailed()) continue;
        const auto failure = RecallFailure(path);
        const std::string reason = failure ? failure->reason : "";
        const bool isMissing = IsFileGone(path);
        json.push_back({{"file", path}, {"missing", isMissing}, {"reason", reason}});
        console.Show(path + (reason.empty() ? "" : ": " + reason) + (isMissing ? "  [missing]" : ""));
    }
    return json;
}

}  // namespace

int Run(const EffectsListOptions& options, const Console& console) {
    const Session session;
    Galleries galleries(session);
    const EffectCatalogue catalogue(galleries);
    const Json json = options.failed ? ListFailed(catalogue, console) : ListEffects(galleries, catalogue, console);
    console.ShowJson(json);
    if (json.empty()) throw Failure(options.failed ? "no effect file has failed" : "no effects");
    return kDone;
}

}  // namespace qfc::host
