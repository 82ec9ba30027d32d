#include "db/DBTools.h"
#include "db/DBToolsGuard.h"
#include "db/EffectRecords.h"

// Effect files, filters and transitions under the guard.

// What was read before a failure stays in the list, and nothing older ever does.
bool DBTools::LoadFilterFiles(std::vector<DS_Filter_File_Record>& files) {
    files.clear();
    return Guarded([&] { return DBToolsInternal::LoadFilterFiles(files); });
}

bool DBTools::LoadTransitions(std::vector<DS_Transition_Record>& transitions) {
    transitions.clear();
    return Guarded([&] { return DBToolsInternal::LoadTransitions(transitions); });
}

bool DBTools::SaveFilterFile(const DS_Filter_File_Record& file) {
    return Guarded([&] { return DBToolsInternal::WriteFilterFile(file); });
}

bool DBTools::DeleteFilterFile(const CString& fileName) {
    return Guarded([&] { return DBToolsInternal::DeleteFilterFileRows(fileName); });
}

bool DBTools::SaveTransition(const DS_Transition_Record& transition) {
    return Guarded([&] { return DBToolsInternal::WriteTransition(transition); });
}

bool DBTools::DeleteTransitionFile(const CString& fileName) {
    return Guarded([&] { return DBToolsInternal::DeleteTransitionRows(fileName); });
}

bool DBTools::ClearFiltersAndTransitions() {
    return Guarded([&] { return DBToolsInternal::ClearEffects(); });
}

bool DBTools::DeleteFilterFiles(std::span<const DS_Filter_File_Record> files) {
    return Guarded([&] { return DBToolsInternal::DeleteFilterFileRows(files); });
}

bool DBTools::DeleteTransitionFiles(std::span<const DS_Transition_Record> transitions) {
    return Guarded([&] { return DBToolsInternal::DeleteTransitionRows(transitions); });
}
