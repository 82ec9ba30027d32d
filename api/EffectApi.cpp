#include "api/EffectApi.h"

#include "db/DBTools.h"
#include "service/EntrySteps.h"

#include <algorithm>

namespace {

// On the service database, which a stop does not close meanwhile.
template <typename Work>
bool OnCurrentDatabase(Work&& work) {
    const qfc::EntrySteps::DatabaseUse database;
    return database.Get() != nullptr && work(*database.Get());
}

}  // namespace

bool GetFilterRecord(std::vector<DS_Filter_File_Record>& files) {
    return OnCurrentDatabase([&](DBTools& tools) { return tools.LoadFilterFiles(files); });
}

bool GetTransitionRecord(std::vector<DS_Transition_Record>& transitions) {
    return OnCurrentDatabase([&](DBTools& tools) { return tools.LoadTransitions(transitions); });
}

bool SaveFilterRecord(const DS_Filter_File_Record& file) {
    const bool bNamed = std::none_of(file.filters.begin(), file.filters.end(),
                                     [](const qfc::FilterEntry& filter) { return filter.guidItem == GUID_NULL; });
    return bNamed && OnCurrentDatabase([&](DBTools& tools) { return tools.SaveFilterFile(file); });
}

bool DeleteFilter(std::vector<DS_Filter_File_Record>& files) {
    return OnCurrentDatabase([&](DBTools& tools) { return tools.DeleteFilterFiles(files); });
}

bool ClearTransitionAndFilter() {
    return OnCurrentDatabase([&](DBTools& tools) { return tools.ClearFiltersAndTransitions(); });
}
