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
    for (const std::string& line : removal.Lines()) console.Complain(line);
}

// What is known after the removal. Nothing when it cannot be read; what went is told all the same.
std::optional<EffectCatalogue> LookAgain(Galleries& galleries) {
    try {
        return std::optional<EffectCatalogue>(std::in_place, galleries);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

// Neither the records have anything of the file, nor the galleries.
bool IsCleared(const KnownFile& file, const EffectRemoval& removal, const EffectCatalogue& after) {
    return after.Find(file.path) == nullptr && std::ranges::none_of(file.effects, [&](const KnownEffect& effect) {
               return removal.notGone.contains(effect.guid);
           });
}

// Of the clearing of these files, what was seen of it.
std::size_t CountCleared(const std::vector<KnownFile>& files, const std::optional<EffectCatalogue>& after,
                         EffectRemoval& removal) {
    if (!after) {
        removal.remains.unseen.emplace_back("every effect");
        return 0;
    }
    for (const auto& [path, file] : after->Files()) removal.remains.stored.push_back("effects of " + path);
    const auto isCleared = [&](const KnownFile& file) { return IsCleared(file, removal, *after); };
    return static_cast<std::size_t>(std::ranges::count_if(files, isCleared));
}

Json RemovalJson(const EffectRemoval& removal) {
    return {{"removed", removal.effects},
            {"prunedFolders", removal.folders},
            {"failed", removal.remains.stored},
            {"unseen", removal.remains.unseen},
            {"itemsLeft", removal.itemsLeft}};
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
    const auto after = LookAgain(galleries);
    if (!after) removal.remains.unseen.push_back("every record of " + path);
    if (after && after->Find(path) != nullptr) removal.remains.stored.push_back("the records of " + path);
    if (removal.IsWhole()) ForgetFailure(path);
    Tell(removal, console);
    Json json{{"file", path}};
    json.update(RemovalJson(removal));
    console.ShowJson(json);
    return removal.IsWhole() ? kDone : kFailed;
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
    if (!removal.areRecordsKept && !ClearTransitionAndFilter()) {
        removal.remains.stored.emplace_back("the rest of the records");
    }
    const auto after = LookAgain(galleries);
    const std::size_t cleared = CountCleared(all, after, removal);
    if (removal.IsWhole()) ForgetAllFailures();
    Tell(removal, console);
    if (after) console.Say(Counted(cleared, "file") + " cleared");
    Json json{{"files", cleared}};
    json.update(RemovalJson(removal));
    console.ShowJson(json);
    return removal.IsWhole() ? kDone : kFailed;
}

}  // namespace qfc::host
