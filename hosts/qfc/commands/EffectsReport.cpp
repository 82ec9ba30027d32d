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

Json AsJson(const ScanResult& result) {
    Json json{{"added", Json::array()}, {"updated", Json::array()}, {"moved", Json::array()}};
    for (const ScannedEffect& done : result.done) {
        json[done.what].push_back({{"guid", GuidToText(done.outcome.guid)},
                                   {"kind", done.outcome.isTransition ? "transition" : "filter"},
                                   {"name", done.outcome.name},
                                   {"folder", done.outcome.folder},
                                   {"file", done.outcome.file}});
    }
    std::vector<EffectsPlan::Left> skipped = result.left;
    skipped.insert(skipped.end(), result.plan.skipped.begin(), result.plan.skipped.end());
    json["unchanged"] = result.plan.unchanged;
    json["skipped"] = LeftJson(skipped);
    json["failed"] = LeftJson(result.failed);
    json["unknown"] = LeftJson(result.unknown);
    json["failedBefore"] = LeftJson(result.plan.failedBefore);
    json["removed"] = result.removed;
    json["prunedFolders"] = result.pruned;
    json["notStored"] = result.refused;
    json["notRemoved"] = result.kept;
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
    say(result.removed.size(), "removed");
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
    return result.refused.empty() && result.kept.empty() && result.removed.empty() && result.unknown.empty() &&
           result.notLast.empty() && !result.isInterrupted;
}

}  // namespace

int ReportScan(const ScanResult& result, const Console& console) {
    console.ShowJson(AsJson(result));
    for (const ScannedEffect& done : result.done) {
        const std::string& folder = done.outcome.folder;
        console.Say(std::string(done.what) + " " + folder + (folder.empty() ? "" : "\\") + done.outcome.name);
    }
    for (const std::string& path : result.removed) console.Say("removed " + path);
    for (const std::string& path : result.pruned) console.Say("removed the empty folder " + path);
    for (const auto& left : result.left) console.Say("skipped " + left.path + ": " + left.reason);
    for (const auto& left : result.plan.skipped) console.Say("skipped " + left.path + ": " + left.reason);
    for (const auto& left : result.plan.failedBefore) console.Say("failed before: " + left.path + ": " + left.reason);
    for (const std::string& kept : result.kept) console.Complain("cannot remove " + kept);
    for (const std::string& path : result.notLast) console.Complain("cannot put what was added last in " + path);
    // Louder than what a scan is meant for.
    const std::string vanished = Counted(result.removed.size(), "effect") + " of the library vanished";
    if (!result.removed.empty()) console.Complain(vanished + ": the files have them no more, or failed");
    if (result.isInterrupted) {
        console.Complain("interrupted: " + Summary(result));
    } else {
        console.Say(Summary(result));
    }
    if (!IsUseful(result.plan) && result.plan.problems.empty()) console.Complain("no effect files found");
    return IsUseful(result.plan) && IsSound(result) ? kDone : kFailed;
}

}  // namespace qfc::host
