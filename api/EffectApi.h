#pragma once

#include "db/EffectRecords.h"
#include "platform/Export.h"

#include <vector>

// The store of filters and transitions, read and written on the calling thread in the service database. Any thread,
// callbacks included. Each is false, and nothing happens, while the service is stopped.

// Replace the contents of the vector. What was read before a failure stays in it. Entries and transitions without
// bytes, or whose item is no GUID, are left out.
QFCLIB_API bool GetFilterRecord(std::vector<DS_Filter_File_Record>& files);
QFCLIB_API bool GetTransitionRecord(std::vector<DS_Transition_Record>& transitions);

// Writes a record without its items: of a file that could not be read, for instance. Entries that name no item are
// refused: false, and nothing is written.
QFCLIB_API bool SaveFilterRecord(const DS_Filter_File_Record& file);

// Deletes the files with their filters, all or none. Items and galleries are not touched: QFCLibraryManager's
// fnDeleteFilter does that.
QFCLIB_API bool DeleteFilter(std::vector<DS_Filter_File_Record>& files);

// Empties the store and takes rows and payloads of its items. Their placements in folders stay, and so do the items in
// memory: delete the records with the manager's functions first to be rid of these.
QFCLIB_API bool ClearTransitionAndFilter();
