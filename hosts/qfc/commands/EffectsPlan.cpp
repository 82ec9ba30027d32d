#include "hosts/qfc/commands/EffectsPlan.h"

#include "hosts/qfc/library/EffectItem.h"
#include "hosts/qfc/library/EffectNames.h"
#include "hosts/qfc/library/FailedEffects.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Text.h"
#include "items/CQItem.h"

#include <algorithm>
#include <set>

namespace qfc::host {
namespace {

bool IsWhole(const KnownEffect& effect, const std::string& path, const FileStamp& stamp) {
    return effect.isRecorded && effect.item != nullptr && effect.stamp == stamp &&
           ToText(effect.item->GetFileName()) == path;
}

// The rows of filters are counted by that of their file; how many transitions there are beside them, or filters beside
// these, only the items know, and each of them does.
bool HasAll(const KnownFile& file) {
    const auto filters = std::ranges::count(file.effects, false, &KnownEffect::isTransition);
    return filters == file.filterCount.value_or(0) &&
           EffectFactsOf(*file.effects.front().item).effectsInFile == file.effects.size();
}

bool IsUnchanged(const KnownFile& file, const FileStamp& stamp) {
    const auto whole = [&](const KnownEffect& effect) { return IsWhole(effect, file.path, stamp); };
    return !file.effects.empty() && std::ranges::all_of(file.effects, whole) && HasAll(file);
}

class Planning {
public:
    Planning(const EffectCatalogue& catalogue, bool retry) : m_catalogue(catalogue), m_retry(retry) {}

    void Take(const WalkedFile& file) {
        const bool isNamed = file.folders.empty();
        if (!isNamed && !file.name.ends_with(".so")) return;
        if (!IsUtf8(file.path)) {
            m_plan.problems.push_back({file.path, "its path is not UTF-8"});
        } else if (const KnownFile* owner = Owner(file.path)) {
            m_owned.push_back({file.path, owner->path});
        } else {
            Decide(file.path);
        }
    }

    EffectsPlan Plan() {
        for (const EffectsPlan::Left& owned : m_owned) Wait(owned);
        return std::move(m_plan);
    }

private:
    // A living file that the effects of this name belong to.
    const KnownFile* Owner(const std::string& path) const {
        for (const KnownFile* known : m_catalogue.SameName(BaseNameOf(path))) {
            const bool isOther = known->path != path && known->HasRecords() && !HasForeignEffects(*known);
            if (isOther && !IsFileGone(known->path)) return known;
        }
        return nullptr;
    }

    void Decide(const std::string& path) {
        const KnownFile* known = m_catalogue.Find(path);
        if (known != nullptr && HasForeignEffects(*known)) {
            m_plan.skipped.push_back({path, "the library has effects of it that another program stored"});
            return;
        }
        std::vector<const KnownFile*> gone = Predecessors(m_catalogue, path);
        std::erase_if(gone, [&](const KnownFile* file) { return file == known || HasForeignEffects(*file); });
        const FileStamp stamp = StampOf(path);
        if (known != nullptr && gone.empty() && IsUnchanged(*known, stamp)) {
            m_plan.unchanged.push_back(path);
            return;
        }
        // Rows of failed files that are gone go with the next report.
        const bool isAlone = std::ranges::none_of(gone, &KnownFile::IsFailed);
        if (!m_retry && isAlone && IsLeft(path, known, stamp)) return;
        const bool isFirst = m_probedNames.insert(BaseNameOf(path)).second;
        (isFirst ? m_plan.probed : m_plan.waiting).push_back(path);
    }

    // What nothing came of, and nothing would come of now.
    bool IsLeft(const std::string& path, const KnownFile* known, const FileStamp& stamp) {
        const bool isFailed = known != nullptr && known->IsFailed();
        if (known != nullptr && !isFailed) return false;
        const auto before = isFailed ? RecallFailure(path) : RecallSkipped(path);
        if (!before || before->stamp != stamp) return false;
        (isFailed ? m_plan.failedBefore : m_plan.skipped).push_back({path, before->reason});
        return true;
    }

    // Its turn comes when its owner turns out to have failed.
    void Wait(const EffectsPlan::Left& owned) {
        if (std::ranges::find(m_plan.probed, owned.reason) != m_plan.probed.end()) {
            m_plan.waiting.push_back(owned.path);
        } else {
            m_plan.skipped.push_back({owned.path, "the same effect as " + owned.reason});
        }
    }

    const EffectCatalogue& m_catalogue;
    const bool m_retry;
    EffectsPlan m_plan;
    std::set<std::string> m_probedNames;
    std::vector<EffectsPlan::Left> m_owned;  // With the file that owns the effects.
};

}  // namespace

std::vector<const KnownFile*> Predecessors(const EffectCatalogue& catalogue, const std::string& path) {
    std::vector<const KnownFile*> files = catalogue.SameName(BaseNameOf(path));
    std::erase_if(files, [&](const KnownFile* file) {
        const bool isRecorded = file->HasRecords() || file->filterCount;
        return file->path != path && isRecorded && !IsFileGone(file->path);
    });
    return files;
}

EffectsPlan PlanScan(const Walk& walk, const EffectCatalogue& catalogue, bool retry) {
    Planning planning(catalogue, retry);
    for (const WalkedFile& file : walk.files) planning.Take(file);
    EffectsPlan plan = planning.Plan();
    for (const WalkProblem& problem : walk.problems) plan.problems.push_back({problem.path, problem.text});
    return plan;
}

}  // namespace qfc::host
