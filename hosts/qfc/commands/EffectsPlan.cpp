#include "hosts/qfc/commands/EffectsPlan.h"

#include "hosts/qfc/library/EffectItem.h"
#include "hosts/qfc/library/EffectNames.h"
#include "hosts/qfc/library/FailedEffects.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Text.h"
#include "items/CQItem.h"

#include <algorithm>
#include <map>
#include <set>

namespace qfc::host {
namespace {

bool IsWhole(const KnownEffect& effect, const std::string& path, const FileStamp& stamp) {
    return effect.isRecorded && effect.item != nullptr && effect.stamp == stamp &&
           ToText(effect.item->GetFileName()) == path;
}

// The rows of filters are counted by that of their file; only the items know how many transitions it has.
bool HasAll(const KnownFile& file) {
    const auto filters = std::ranges::count(file.effects, false, &KnownEffect::isTransition);
    if (filters != file.filterCount.value_or(0)) return false;
    const auto transition = std::ranges::find(file.effects, true, &KnownEffect::isTransition);
    return transition == file.effects.end() || EffectFactsOf(*transition->item).effectsInFile == file.effects.size();
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
            m_plan.problems.push_back({file.path, "its name is not UTF-8"});
            return;
        }
        const std::string other = Other(file.path);
        if (!other.empty()) {
            m_plan.skipped.push_back({file.path, "the same effect as " + other});
            return;
        }
        Decide(file.path);
    }

    EffectsPlan Plan() { return std::move(m_plan); }

private:
    // A living file that the effects of this name belong to.
    std::string Other(const std::string& path) {
        for (const KnownFile* known : m_catalogue.SameName(BaseNameOf(path))) {
            if (known->path != path && known->HasRecords() && !IsFileGone(known->path)) return known->path;
        }
        const auto [first, isNew] = m_met.emplace(BaseNameOf(path), path);
        return isNew ? "" : first->second;
    }

    void Decide(const std::string& path) {
        const KnownFile* known = m_catalogue.Find(path);
        const bool isAlone = Predecessors(m_catalogue, path).size() == (known != nullptr ? 1U : 0U);
        const FileStamp stamp = StampOf(path);
        if (known != nullptr && isAlone && IsUnchanged(*known, stamp)) {
            m_plan.unchanged.push_back(path);
            return;
        }
        const auto failure = RecallFailure(path);
        const bool isFailed = known != nullptr && isAlone && known->IsFailed() && failure && failure->stamp == stamp;
        if (isFailed && !m_retry) {
            m_plan.failedBefore.push_back({path, failure->reason});
        } else {
            m_plan.probed.push_back(path);
        }
    }

    const EffectCatalogue& m_catalogue;
    const bool m_retry;
    EffectsPlan m_plan;
    std::map<std::string, std::string> m_met;  // Paths by base name.
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
