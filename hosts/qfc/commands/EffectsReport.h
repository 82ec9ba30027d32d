#pragma once

#include "hosts/qfc/cli/Console.h"
#include "hosts/qfc/commands/EffectsPlan.h"
#include "hosts/qfc/library/EffectWriter.h"

#include <string>
#include <vector>

namespace qfc::host {

struct ScannedEffect {
    EffectOutcome outcome;
    const char* what = "";  // "added", "updated", "moved"
};

// What came of a scan.
struct ScanResult {
    EffectsPlan plan;
    std::vector<ScannedEffect> done;      // What is stored now.
    std::vector<EffectsPlan::Left> left;  // Plugins without an effect, and effects that were left out.
    std::vector<EffectsPlan::Left> failed;
    std::vector<EffectsPlan::Left> unknown;  // Files that could not be looked at, through no fault of theirs.
    std::vector<std::string> refused;        // Files with an effect that could not be stored.
    std::vector<std::string> removed;        // Effects that their files lost, by path.
    std::vector<std::string> pruned;         // Folders that went with them.
    std::vector<std::string> kept;           // What could not be removed.
    std::vector<std::string> notLast;        // Folders that have what was added elsewhere than last.
    bool isInterrupted = false;
};

// Tells it, and gives the exit code.
int ReportScan(const ScanResult& result, const Console& console);

}  // namespace qfc::host
