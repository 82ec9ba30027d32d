#pragma once

#include "db/EffectRecords.h"
#include "hosts/qfc/effects/ProbeReport.h"

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

class CQItem;

namespace qfc::host {

// Of what was learned of an effect: its item, and what the store keeps of it. Functions without state; any thread.

// The effect and where it comes from.
struct EffectSource {
    const ProbedEffect& effect;
    const ProbeReport& report;  // Of its file.
    std::string path;
};

// With its GUID, and its payloads: the black box says everything about it as JSON, the bitmap is the thumbnail, the
// film of a transition has its frames. Null without memory.
std::unique_ptr<CQItem> MakeEffectItem(const EffectSource& source);

// The file, with this one filter.
DS_Filter_File_Record MakeFilterRecord(const EffectSource& source);
DS_Transition_Record MakeTransitionRecord(const EffectSource& source);

// Filters of the file; and filters and transitions.
std::size_t CountFilters(const ProbeReport& report);

nlohmann::ordered_json ParameterValueJson(const ParameterValue& value);
// Everything about an effect but its pictures.
nlohmann::ordered_json EffectJson(const EffectSource& source);

// What a black box says of an effect, for people; all at their defaults when it is not of an effect.
struct EffectFacts {
    std::string name;
    std::size_t effectsInFile = 0;
    std::string detail;    // "3 parameters", or that its picture shows nothing of it
    std::string progress;  // "by position", which is a parameter then
};
// The black box itself, an empty object when it is not of an effect; what stands in it may be of any kind.
nlohmann::ordered_json EffectBox(CQItem& item);
// Both read the item's black box, and let go of its payloads.
EffectFacts EffectFactsOf(CQItem& item);

}  // namespace qfc::host
