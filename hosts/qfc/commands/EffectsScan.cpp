#include "api/QFCLib.h"
#include "hosts/qfc/Progress.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/EffectProbes.h"
#include "hosts/qfc/commands/EffectsPlan.h"
#include "hosts/qfc/commands/EffectsReport.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/EffectFolders.h"
#include "hosts/qfc/library/EffectNames.h"
#include "hosts/qfc/library/EffectRemoval.h"
#include "hosts/qfc/library/EffectWriter.h"
#include "hosts/qfc/library/FailedEffects.h"
#include "hosts/qfc/library/Text.h"

#include <algorithm>
#include <map>
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
    Scanning(Galleries& galleries, EffectCatalogue& catalogue, EffectsPlan plan, const Interrupt& interrupt,
             const Console& console)
        : m_galleries(galleries),
          m_catalogue(catalogue),
          m_interrupt(interrupt),
          m_console(console),
          m_writer(galleries),
          m_progress(stdout, plan.probed.size() + plan.waiting.size(), console.IsJson() || console.IsQuiet()) {
        m_result.plan = std::move(plan);
    }

    const ScanResult& Go() {
        for (const auto& problem : m_result.plan.problems) Complain(problem.path, problem.reason);
        Probe(m_result.plan.probed);
        std::vector<std::string> waiting = m_result.plan.waiting;
        while (!waiting.empty() && !m_interrupt.IsRaised()) {
            // What the scan has done so far is to be known to what comes now.
            m_writer.Settle();
            if (!LookAgain(waiting)) break;
            Probe(TakeNext(waiting));
        }
        m_writer.Settle();
        m_progress.Clear();
        Verify();
        m_result.isInterrupted = m_interrupt.IsRaised();
        return m_result;
    }

private:
    void Probe(const std::vector<std::string>& paths) {
        EffectProbes probes(paths, m_interrupt.Flag());
        for (const std::string& path : paths) {
            const auto report = probes.Next();
            if (!report || report->outcome == ProbeReport::Outcome::Stopped) break;
            m_progress.Step(BaseNameOf(path));
            try {
                Take(path, *report);
            } catch (const Failure& failure) {
                NoteRefused(path, failure.what());
            }
        }
    }

    // Otherwise nobody knows what the files would be to the library, and they are left alone.
    bool LookAgain(const std::vector<std::string>& waiting) {
        try {
            m_catalogue = EffectCatalogue(m_galleries);
            return true;
        } catch (const Failure& failure) {
            for (const std::string& path : waiting) NoteUnknown(path, failure.what());
            return false;
        }
    }

    // The first file of each name that nobody owns the effects of yet.
    std::vector<std::string> TakeNext(std::vector<std::string>& waiting) {
        std::vector<std::string> next;
        std::set<std::string> names;
        std::erase_if(waiting, [&](const std::string& path) {
            const auto owner = m_owners.find(BaseNameOf(path));
            if (owner != m_owners.end()) {
                m_progress.Step(BaseNameOf(path));
                m_result.left.push_back({path, "the same effect as " + owner->second});
                return true;
            }
            if (!names.insert(BaseNameOf(path)).second) return false;
            next.push_back(path);
            return true;
        });
        return next;
    }

    void Take(const std::string& path, const ProbeReport& report) {
        using Outcome = ProbeReport::Outcome;
        const KnownFile* known = m_catalogue.Find(path);
        const bool hasEffects = known != nullptr && !known->effects.empty();
        // Nobody loses effects because the machine had no time for their file, were it moved.
        const bool isKnown = std::ranges::any_of(Predecessors(m_catalogue, path),
                                                 [](const KnownFile* file) { return !file->effects.empty(); });
        const bool isUnknown = report.outcome == Outcome::Unknown || (report.isStarved && isKnown);
        if (report.outcome == Outcome::Effects || (isUnknown && hasEffects)) m_owners.emplace(BaseNameOf(path), path);
        if (isUnknown) {
            NoteUnknown(path, report.reason);
            return;
        }
        const std::vector<const KnownFile*> before = Before(path, report);
        RemoveVanished(before, path, report);
        if (report.outcome != Outcome::Failed) ForgetFailure(path);
        switch (report.outcome) {
            case Outcome::Effects:
                if (!report.reason.empty()) m_result.left.push_back({path, report.reason});
                for (const ProbedEffect& effect : report.effects) Store({effect, report, path}, before);
                break;
            case Outcome::Skipped:
                RememberSkipped(path, {report.stamp, report.reason});
                m_result.left.push_back({path, report.reason});
                break;
            default:
                NoteFailed(path, report);
                break;
        }
        DropRows(before, path, report);
    }

    // What the library has of the file. Effects move to it from files that are gone only if it has some itself: the
    // others may be on a disk that is away.
    std::vector<const KnownFile*> Before(const std::string& path, const ProbeReport& report) const {
        std::vector<const KnownFile*> files = Predecessors(m_catalogue, path);
        std::erase_if(files, [&](const KnownFile* file) {
            return file->path != path && !file->effects.empty() && report.outcome != ProbeReport::Outcome::Effects;
        });
        return files;
    }

    // What the file does not hold any more, or holds as another kind, goes with its item. The rows of the other effects
    // go as well, and come back with what follows; those of other programs would not.
    void RemoveVanished(const std::vector<const KnownFile*>& before, const std::string& path,
                        const ProbeReport& report) {
        std::vector<KnownFile> vanished;
        for (const KnownFile* file : before) {
            if (HasForeignEffects(*file)) continue;
            KnownFile rest = *file;
            std::erase_if(rest.effects, [&](const KnownEffect& known) { return IsStill(report, known, path); });
            if (!rest.effects.empty()) vanished.push_back(std::move(rest));
        }
        if (vanished.empty()) return;
        m_writer.Settle();
        m_result.removal.Append(RemoveEffects(m_galleries, vanished));
        m_writer.ForgetFolders();
    }

    void Store(const EffectSource& source, const std::vector<const KnownFile*>& before) {
        const KnownEffect* known = Among(before, source);
        const bool isKnown = known != nullptr && known->item != nullptr;
        const bool isMoved = isKnown && ToText(known->item->GetFileName()) != source.path;
        m_whats[EffectGuid(BaseNameOf(source.path), source.effect.index)] = isMoved   ? "moved"
                                                                            : isKnown ? "updated"
                                                                                      : "added";
        try {
            if (isKnown) {
                m_writer.Update(*known, source);
            } else {
                m_writer.Add(source, m_folders.FolderOf(source.effect, BaseNameOf(source.path)));
            }
        } catch (const Failure& failure) {
            // The file's other effects may go elsewhere.
            NoteRefused(source.path, failure.what());
        }
    }

    void NoteFailed(const std::string& path, const ProbeReport& report) {
        DS_Filter_File_Record file;
        file.strFileName = ToCString(path);
        if (!SaveFilterRecord(file)) NoteRefused(path);
        RememberFailure(path, {report.stamp, report.reason});
        m_result.failed.push_back({path, report.reason});
        Complain(path, report.reason);
    }

    // Rows of files that moved, and a row of this one that says nothing any more.
    void DropRows(const std::vector<const KnownFile*>& before, const std::string& path, const ProbeReport& report) {
        const bool hasRow = report.outcome == ProbeReport::Outcome::Failed || CountFilters(report) > 0;
        std::vector<DS_Filter_File_Record> rows;
        for (const KnownFile* file : before) {
            if (!file->filterCount || (file->path == path && hasRow) || HasForeignEffects(*file)) continue;
            DS_Filter_File_Record row;
            row.strFileName = ToCString(file->path);
            rows.push_back(std::move(row));
            if (file->path != path) ForgetFailure(file->path);
        }
        if (rows.empty() || DeleteFilter(rows)) return;
        m_result.removal.remains.stored.push_back("the row of a file that moved to " + path);
    }

    void Verify() {
        std::vector<EffectOutcome>& outcomes = m_writer.Outcomes();
        m_result.notLast = VerifyEffects(m_galleries, outcomes);
        for (const EffectOutcome& outcome : outcomes) {
            if (outcome.isStored == false) {
                NoteRefused(outcome.file, "cannot be stored in the library" + RestOf(outcome));
            } else {
                (outcome.isStored ? m_result.done : m_result.unseen).push_back({outcome, m_whats[outcome.guid]});
            }
        }
    }

    // What there is of an effect that is not stored.
    static std::string RestOf(const EffectOutcome& outcome) {
        if (outcome.isItemLeft) return "; " + PathOf(outcome) + " stands there without its parameters, scan again";
        return outcome.isFolderLeft ? "; the new folder " + outcome.folder + " is empty" : "";
    }

    void NoteRefused(const std::string& path, const std::string& reason = "cannot be stored in the library") {
        m_result.refused.push_back(path);
        Complain(path, reason);
    }

    void NoteUnknown(const std::string& path, const std::string& reason) {
        m_result.unknown.push_back({path, reason});
        Complain(path, reason);
    }

    void Complain(const std::string& path, const std::string& reason) {
        m_progress.Clear();
        m_console.Complain(path + ": " + reason);
    }

    Galleries& m_galleries;
    EffectCatalogue& m_catalogue;
    const Interrupt& m_interrupt;
    const Console& m_console;
    const EffectFolders m_folders;
    EffectWriter m_writer;
    Progress m_progress;
    std::map<GUID, const char*> m_whats;
    std::map<std::string, std::string> m_owners;  // Files by base name that others of the name stand behind.
    ScanResult m_result;
};

}  // namespace

int Run(const EffectsScanOptions& options, const Console& console) {
    const Interrupt interrupt;
    const Walk walk = WalkFiles(options.paths, &interrupt.Flag());
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    EffectCatalogue catalogue(galleries);
    // The worker gives added items the tags that the data beside the program want for them; both are read before.
    QFCLibraryManager::fnLoadLibTag();
    CLibTagsMgr::GetLibTagMgr()->GeneratePresetTagData();
    Scanning scanning(galleries, catalogue, PlanScan(walk, catalogue, options.retry), interrupt, console);
    return ReportScan(scanning.Go(), console);
}

}  // namespace qfc::host
