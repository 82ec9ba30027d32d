#pragma once

#include "hosts/qfc/cli/Console.h"
#include "hosts/qfc/commands/EffectsPlan.h"
#include "hosts/qfc/library/EffectRemoval.h"
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
    std::vector<ScannedEffect> unseen;    // Nobody knows whether it is.
    std::vector<EffectsPlan::Left> left;  // Plugins without an effect, and effects that were left out.
    std::vector<EffectsPlan::Left> failed;
    std::vector<EffectsPlan::Left> unknown;  // Files that could not be looked at, through no fault of theirs.
    std::vector<std::string> refused;        // Files with an effect that could not be stored.
    EffectRemoval removal;                   // Of effects that their files lost.
    std::vector<std::string> notLast;        // Folders that have what was added elsewhere than last.
    bool isInterrupted = false;
};

// Of the item, as shown.
std::string PathOf(const EffectOutcome& outcome);

// Tells it, and gives the exit code.
int ReportScan(const ScanResult& result, const Console& console);

}  // namespace qfc::host
