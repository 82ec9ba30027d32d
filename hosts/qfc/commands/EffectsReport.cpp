#include "hosts/qfc/commands/EffectsReport.h"

#include "hosts/qfc/cli/Exit.h"

#include <map>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

Json LeftJson(const std::vector<EffectsPlan::Left>& left) {
    Json json = Json::array();
    for (const EffectsPlan::Left& one : left) json.push_back({{"file", one.path}, {"reason", one.reason}});
    return json;
}

Json EffectJson(const EffectOutcome& outcome) {
    return {{"guid", GuidToText(outcome.guid)},
            {"kind", outcome.isTransition ? "transition" : "filter"},
            {"name", outcome.name},
            {"folder", outcome.folder},
            {"file", outcome.file}};
}

Json AsJson(const ScanResult& result) {
    Json json{{"added", Json::array()}, {"updated", Json::array()}, {"moved", Json::array()}};
    for (const ScannedEffect& done : result.done) json[done.what].push_back(EffectJson(done.outcome));
    json["unseen"] = Json::array();
    for (const ScannedEffect& unseen : result.unseen) json["unseen"].push_back(EffectJson(unseen.outcome));
    std::vector<EffectsPlan::Left> skipped = result.left;
    skipped.insert(skipped.end(), result.plan.skipped.begin(), result.plan.skipped.end());
    json["unchanged"] = result.plan.unchanged;
    json["skipped"] = LeftJson(skipped);
    json["failed"] = LeftJson(result.failed);
    json["unknown"] = LeftJson(result.unknown);
    json["failedBefore"] = LeftJson(result.plan.failedBefore);
    json["removed"] = result.removal.effects;
    json["prunedFolders"] = result.removal.folders;
    json["notStored"] = result.refused;
    json["notRemoved"] = result.removal.remains.stored;
    json["removalUnseen"] = result.removal.remains.unseen;
    json["itemsLeft"] = result.removal.itemsLeft;
    json["notLast"] = result.notLast;
    json["problems"] = LeftJson(result.plan.problems);
    json["interrupted"] = result.isInterrupted;
    return json;
}

std::string Summary(const ScanResult& result) {
    std::map<std::string, std::size_t> counts;
    for (const ScannedEffect& done : result.done) ++counts[done.what];
    std::string summary = Counted(counts["added"], "effect") + " added";
    const auto say = [&](std::size_t count, const std::string& what) {
        if (count > 0) summary += ", " + std::to_string(count) + " " + what;
    };
    say(counts["updated"], "updated");
    say(counts["moved"], "moved");
    say(result.unseen.size(), "not seen");
    say(result.removal.effects.size(), "removed");
    if (!result.plan.unchanged.empty()) summary += ", " + Counted(result.plan.unchanged.size(), "file") + " unchanged";
    say(result.left.size() + result.plan.skipped.size(), "skipped");
    say(result.failed.size(), "failed");
    say(result.plan.failedBefore.size(), "failed before");
    say(result.unknown.size(), "not looked at");
    say(result.refused.size(), "not stored");
    return summary;
}

bool IsUseful(const EffectsPlan& plan) {
    return !plan.probed.empty() || !plan.unchanged.empty() || !plan.failedBefore.empty() || !plan.skipped.empty();
}

// Broken plugins are the plugins' fault; what could not be looked at or stored is ours, and that known effects vanished
// is for somebody to know.
bool IsSound(const ScanResult& result) {
    return result.refused.empty() && result.unseen.empty() && result.removal.IsWhole() &&
           result.removal.effects.empty() && result.unknown.empty() && result.notLast.empty() && !result.isInterrupted;
}

}  // namespace

std::string PathOf(const EffectOutcome& outcome) {
    return outcome.folder + (outcome.folder.empty() ? "" : "\\") + outcome.name;
}

int ReportScan(const ScanResult& result, const Console& console) {
    console.ShowJson(AsJson(result));
    for (const ScannedEffect& done : result.done) console.Say(std::string(done.what) + " " + PathOf(done.outcome));
    for (const std::string& path : result.removal.effects) console.Say("removed " + path);
    for (const std::string& path : result.removal.folders) console.Say("removed the empty folder " + path);
    for (const auto& left : result.left) console.Say("skipped " + left.path + ": " + left.reason);
    for (const auto& left : result.plan.skipped) console.Say("skipped " + left.path + ": " + left.reason);
    for (const auto& left : result.plan.failedBefore) console.Say("failed before: " + left.path + ": " + left.reason);
    for (const ScannedEffect& unseen : result.unseen) {
        const EffectOutcome& outcome = unseen.outcome;
        console.Complain("cannot tell whether " + PathOf(outcome) + " of " + outcome.file + " is " + unseen.what);
    }
    for (const std::string& line : result.removal.Lines()) console.Complain(line);
    for (const std::string& path : result.notLast) console.Complain("cannot put what was added last in " + path);
    // Louder than what a scan is meant for.
    const std::string vanished = Counted(result.removal.effects.size(), "effect") + " of the library vanished";
    if (!result.removal.effects.empty()) console.Complain(vanished + ": the files have them no more, or failed");
    if (result.isInterrupted) {
        console.Complain("interrupted: " + Summary(result));
    } else {
        console.Say(Summary(result));
    }
    if (!IsUseful(result.plan) && result.plan.problems.empty()) console.Complain("no effect files found");
    return IsUseful(result.plan) && IsSound(result) ? kDone : kFailed;
}

}  // namespace qfc::host
