#include "api/QFCLib.h"
#include "hosts/qfc/Progress.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/EffectProbes.h"
#include "hosts/qfc/commands/EffectsPlan.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/EffectFolders.h"
#include "hosts/qfc/library/EffectNames.h"
#include "hosts/qfc/library/EffectRemoval.h"
#include "hosts/qfc/library/EffectWriter.h"
#include "hosts/qfc/library/FailedEffects.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

namespace qfc::host {
namespace {

// Of a file's effects, those that it has in the library already.
const KnownEffect* Among(const std::vector<const KnownFile*>& files, const EffectSource& source) {
    const GUID guid = EffectGuid(BaseNameOf(source.path), source.effect.index);
    for (const KnownFile* file : files) {
        for (const KnownEffect& known : file->effects) {
            if (known.guid == guid && known.isTransition == source.effect.isTransition) return &known;
        }
    }
    return nullptr;
}

bool IsStill(const ProbeReport& report, const KnownEffect& known, const std::string& path) {
    return std::ranges::any_of(report.effects, [&](const ProbedEffect& effect) {
        return known.isTransition == effect.isTransition && known.guid == EffectGuid(BaseNameOf(path), effect.index);
    });
}

// Runs one scan and keeps what came of it.
class Scanning {
public:
    Scanning(Galleries& galleries, const EffectCatalogue& catalogue, EffectsPlan plan, const Interrupt& interrupt,
             const Console& console)
        : m_galleries(galleries),
          m_catalogue(catalogue),
          m_plan(std::move(plan)),
          m_interrupt(interrupt),
          m_console(console),
          m_writer(galleries),
          m_progress(stdout, m_plan.probed.size(), console.IsJson() || console.IsQuiet()) {}

    void Go() {
        for (const auto& problem : m_plan.problems) Complain(problem.path, problem.reason);
        EffectProbes probes(m_plan.probed, m_interrupt.Flag());
        for (const std::string& path : m_plan.probed) {
            const auto report = probes.Next();
            if (!report || report->outcome == ProbeReport::Outcome::Stopped) break;
            m_progress.Step(BaseNameOf(path));
            Take(path, *report);
        }
        m_writer.Settle();
        m_progress.Clear();
        Verify();
    }

    int Report() const;

private:
    struct Done {
        EffectWriter::Outcome outcome;
        const char* what;
    };

    void Take(const std::string& path, const ProbeReport& report) {
        const std::vector<const KnownFile*> before = Predecessors(m_catalogue, path);
        RemoveVanished(before, path, report);
        if (report.outcome != ProbeReport::Outcome::Failed) ForgetFailure(path);
        switch (report.outcome) {
            case ProbeReport::Outcome::Effects:
                if (!report.reason.empty()) m_left.push_back({path, report.reason});
                for (const ProbedEffect& effect : report.effects) Store({effect, report, path}, before);
                break;
            case ProbeReport::Outcome::Skipped:
                m_left.push_back({path, report.reason});
                break;
            default:
                NoteFailed(path, report);
                break;
        }
        DropRows(before, path, report);
    }

    // What the file does not hold any more, or holds as another kind, goes with its item. The rows of the other effects
    // go as well, and come back with what follows.
    void RemoveVanished(const std::vector<const KnownFile*>& before, const std::string& path,
                        const ProbeReport& report) {
        std::vector<KnownFile> vanished;
        for (const KnownFile* file : before) {
            KnownFile rest = *file;
            std::erase_if(rest.effects, [&](const KnownEffect& known) { return IsStill(report, known, path); });
            if (!rest.effects.empty()) vanished.push_back(std::move(rest));
        }
        if (vanished.empty()) return;
        m_writer.Settle();
        const EffectRemoval removal = RemoveEffects(m_galleries, vanished);
        m_writer.ForgetFolders();
        Append(m_removed, removal.effects);
        Append(m_pruned, removal.folders);
        Append(m_kept, removal.kept);
    }

    void Store(const EffectSource& source, const std::vector<const KnownFile*>& before) {
        const KnownEffect* known = Among(before, source);
        const bool isKnown = known != nullptr && known->item != nullptr;
        const bool isMoved = isKnown && ToText(known->item->GetFileName()) != source.path;
        m_whats[EffectGuid(BaseNameOf(source.path), source.effect.index)] = isMoved   ? "moved"
                                                                            : isKnown ? "updated"
                                                                                      : "added";
        if (isKnown) {
            m_writer.Update(*known, source);
        } else {
            m_writer.Add(source, m_folders.FolderOf(source.effect, BaseNameOf(source.path)));
        }
    }

    void NoteFailed(const std::string& path, const ProbeReport& report) {
        DS_Filter_File_Record file;
        file.strFileName = ToCString(path);
        if (!SaveFilterRecord(file)) m_kept.push_back("cannot store that " + path + " failed");
        RememberFailure(path, {report.stamp, report.reason});
        m_failed.push_back({path, report.reason});
        Complain(path, report.reason);
    }

    // Rows of files that moved, and a row of this one that says nothing any more.
    void DropRows(const std::vector<const KnownFile*>& before, const std::string& path, const ProbeReport& report) {
        const bool hasRow = report.outcome == ProbeReport::Outcome::Failed || CountFilters(report) > 0;
        std::vector<DS_Filter_File_Record> rows;
        for (const KnownFile* file : before) {
            if (!file->filterCount || (file->path == path && hasRow)) continue;
            DS_Filter_File_Record row;
            row.strFileName = ToCString(file->path);
            rows.push_back(std::move(row));
            if (file->path != path) ForgetFailure(file->path);
        }
        if (!rows.empty() && !DeleteFilter(rows)) m_kept.push_back("the row of a file that moved to " + path);
    }

    void Verify();

    void Complain(const std::string& path, const std::string& reason) {
        m_progress.Clear();
        m_console.Complain(path + ": " + reason);
    }
    static void Append(std::vector<std::string>& to, const std::vector<std::string>& from) {
        to.insert(to.end(), from.begin(), from.end());
    }
    Json AsJson() const;
    std::string Summary() const;

    Galleries& m_galleries;
    const EffectCatalogue& m_catalogue;
    const EffectsPlan m_plan;
    const Interrupt& m_interrupt;
    const Console& m_console;
    const EffectFolders m_folders;
    EffectWriter m_writer;
    Progress m_progress;
    std::map<GUID, const char*> m_whats;
    std::vector<Done> m_done;
    std::vector<EffectsPlan::Left> m_left;
    std::vector<EffectsPlan::Left> m_failed;
    std::vector<std::string> m_refused;
    std::vector<std::string> m_removed;
    std::vector<std::string> m_pruned;
    std::vector<std::string> m_kept;
};

// The items were seen when they had their turn; the records and the placements are looked at once, for all.
void Scanning::Verify() {
    std::vector<EffectWriter::Outcome>& outcomes = m_writer.Outcomes();
    if (outcomes.empty()) return;
    const EffectCatalogue now(m_galleries);
    std::map<int, std::set<GUID>> placed;
    for (const EffectWriter::Outcome& outcome : outcomes) {
        const KnownFile* file = now.Find(outcome.file);
        bool isThere = outcome.isStored && file != nullptr;
        isThere = isThere && std::ranges::any_of(file->effects, [&](const KnownEffect& known) {
                      return known.guid == outcome.guid && known.isRecorded && known.item != nullptr;
                  });
        if (isThere && outcome.folderRow != -1) {
            const auto [folder, isNew] = placed.try_emplace(outcome.folderRow);
            CQGallery& gallery = *m_galleries.Find(outcome.isTransition ? kTransitionsGallery : kFiltersGallery);
            if (isNew) folder->second = StoredItemSet(*gallery.GetDBTools(), outcome.folderRow);
            isThere = folder->second.contains(outcome.guid);
        }
        if (isThere) {
            m_done.push_back({outcome, m_whats[outcome.guid]});
        } else {
            m_refused.push_back(outcome.file);
            m_console.Complain(outcome.file + ": cannot be stored in the library");
        }
    }
}

Json LeftJson(const std::vector<EffectsPlan::Left>& left) {
    Json json = Json::array();
    for (const EffectsPlan::Left& one : left) json.push_back({{"file", one.path}, {"reason", one.reason}});
    return json;
}

Json Scanning::AsJson() const {
    Json json{{"added", Json::array()}, {"updated", Json::array()}, {"moved", Json::array()}};
    for (const Done& done : m_done) {
        json[done.what].push_back({{"guid", GuidToText(done.outcome.guid)},
                                   {"kind", done.outcome.isTransition ? "transition" : "filter"},
                                   {"name", done.outcome.name},
                                   {"folder", done.outcome.folder},
                                   {"file", done.outcome.file}});
    }
    std::vector<EffectsPlan::Left> skipped = m_left;
    skipped.insert(skipped.end(), m_plan.skipped.begin(), m_plan.skipped.end());
    json["unchanged"] = m_plan.unchanged;
    json["skipped"] = LeftJson(skipped);
    json["failed"] = LeftJson(m_failed);
    json["failedBefore"] = LeftJson(m_plan.failedBefore);
    json["removed"] = m_removed;
    json["prunedFolders"] = m_pruned;
    json["notStored"] = m_refused;
    json["notRemoved"] = m_kept;
    json["problems"] = LeftJson(m_plan.problems);
    json["interrupted"] = m_interrupt.IsRaised();
    return json;
}

std::string Scanning::Summary() const {
    std::map<std::string, std::size_t> counts;
    for (const Done& done : m_done) ++counts[done.what];
    std::string summary = Counted(counts["added"], "effect") + " added";
    const auto say = [&](std::size_t count, const std::string& what) {
        if (count > 0) summary += ", " + std::to_string(count) + " " + what;
    };
    say(counts["updated"], "updated");
    say(counts["moved"], "moved");
    say(m_removed.size(), "removed");
    if (!m_plan.unchanged.empty()) summary += ", " + Counted(m_plan.unchanged.size(), "file") + " unchanged";
    say(m_left.size() + m_plan.skipped.size(), "skipped");
    say(m_failed.size(), "failed");
    say(m_plan.failedBefore.size(), "failed before");
    say(m_refused.size(), "not stored");
    return summary;
}

int Scanning::Report() const {
    m_console.ShowJson(AsJson());
    for (const Done& done : m_done) {
        const std::string& folder = done.outcome.folder;
        m_console.Say(std::string(done.what) + " " + folder + (folder.empty() ? "" : "\\") + done.outcome.name);
    }
    for (const std::string& path : m_removed) m_console.Say("removed " + path);
    for (const std::string& path : m_pruned) m_console.Say("removed the empty folder " + path);
    for (const auto& left : m_left) m_console.Say("skipped " + left.path + ": " + left.reason);
    for (const auto& left : m_plan.skipped) m_console.Say("skipped " + left.path + ": " + left.reason);
    for (const auto& left : m_plan.failedBefore) m_console.Say("failed before: " + left.path + ": " + left.reason);
    for (const std::string& kept : m_kept) m_console.Complain("cannot remove " + kept);
    if (m_interrupt.IsRaised()) {
        m_console.Complain("interrupted: " + Summary());
    } else {
        m_console.Say(Summary());
    }
    // Broken plugins are the plugins' fault; what could not be stored is ours.
    const bool isUseful =
        !m_plan.probed.empty() || !m_plan.unchanged.empty() || !m_plan.failedBefore.empty() || !m_plan.skipped.empty();
    if (!isUseful && m_plan.problems.empty()) m_console.Complain("no effect files found");
    return isUseful && m_refused.empty() && m_kept.empty() && !m_interrupt.IsRaised() ? kDone : kFailed;
}

}  // namespace

int Run(const EffectsScanOptions& options, const Console& console) {
    const Interrupt interrupt;
    const Walk walk = WalkFiles(options.paths, &interrupt.Flag());
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    const EffectCatalogue catalogue(galleries);
    // The worker gives added items the tags that the data beside the program want for them; both are read before.
    QFCLibraryManager::fnLoadLibTag();
    CLibTagsMgr::GetLibTagMgr()->GeneratePresetTagData();
    Scanning scanning(galleries, catalogue, PlanScan(walk, catalogue, options.retry), interrupt, console);
    scanning.Go();
    return scanning.Report();
}

}  // namespace qfc::host
