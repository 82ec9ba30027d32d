#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/EffectsText.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/EffectRemoval.h"
#include "hosts/qfc/library/FailedEffects.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

namespace qfc::host {
namespace {

void Tell(const EffectRemoval& removal, const Console& console) {
    for (const std::string& path : removal.effects) console.Say("removed " + path);
    for (const std::string& path : removal.folders) console.Say("removed the empty folder " + path);
    for (const std::string& kept : removal.kept) console.Complain("cannot remove " + kept);
}

// What is known after the removal. Nothing when it cannot be read; what went is told all the same.
std::optional<EffectCatalogue> LookAgain(Galleries& galleries, EffectRemoval& removal) {
    try {
        return std::optional<EffectCatalogue>(std::in_place, galleries);
    } catch (const Failure& failure) {
        removal.kept.push_back(std::string("what cannot be looked at: ") + failure.what());
        return std::nullopt;
    }
}

Json RemovalJson(const EffectRemoval& removal) {
    return {{"removed", removal.effects}, {"prunedFolders", removal.folders}, {"failed", removal.kept}};
}

}  // namespace

int Run(const EffectsRemoveOptions& options, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    const EffectCatalogue before(galleries);
    const KnownFile* file = FindEffectFile(before, options.file);
    if (file == nullptr) throw Failure("no effects of a file " + options.file);
    const std::string path = file->path;
    const Interrupt interrupt;  // Items that go take their links along.
    EffectRemoval removal = RemoveEffects(galleries, {*file});
    const auto after = LookAgain(galleries, removal);
    if (after && after->Find(path) != nullptr) removal.kept.push_back("the records of " + path);
    if (removal.kept.empty()) ForgetFailure(path);
    Tell(removal, console);
    Json json{{"file", path}};
    json.update(RemovalJson(removal));
    console.ShowJson(json);
    return removal.kept.empty() ? kDone : kFailed;
}

int Run(const EffectsClearOptions&, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    const EffectCatalogue before(galleries);
    std::vector<KnownFile> all;
    for (const auto& [path, file] : before.Files()) all.push_back(file);
    const Interrupt interrupt;  // As above.
    EffectRemoval removal = RemoveEffects(galleries, all);
    // Comes last, and only behind the others: by itself it leaves the places of items in folders behind, for ever. It
    // takes what no record could name.
    if (!removal.areRecordsKept && !ClearTransitionAndFilter()) removal.kept.emplace_back("the rest of the records");
    const auto after = LookAgain(galleries, removal);
    std::size_t cleared = all.size();
    if (after) {
        for (const auto& [path, file] : after->Files()) removal.kept.push_back("effects of " + path);
        cleared -= std::min(cleared, after->Files().size());
    }
    if (removal.kept.empty()) ForgetAllFailures();
    Tell(removal, console);
    if (after) console.Say(Counted(cleared, "file") + " cleared");
    Json json{{"files", cleared}};
    json.update(RemovalJson(removal));
    console.ShowJson(json);
    return removal.kept.empty() ? kDone : kFailed;
}

}  // namespace qfc::host
