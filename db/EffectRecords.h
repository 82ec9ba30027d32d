#pragma once

#include "platform/framework/CString.h"
#include "platform/framework/Guid.h"
#include "platform/framework/Types.h"

#include <vector>

// What the library keeps of effect files, so that effects can be listed without opening them: plain values that own
// their blocks; a copy copies these, too. The blocks belong to whoever runs the effects and come back byte for byte
// (api/EffectBlocks.h has one layout for them). Each object belongs to one thread at a time.

namespace qfc {

// The sizes in which the two blocks of a filter are written: shorter ones are filled up with zeros, longer ones cut.
inline constexpr std::size_t kFilterDescriptorSize = 8;
inline constexpr std::size_t kFilterTableSize = 456;

// One filter of a file.
struct FilterEntry {
    std::vector<BYTE> descriptor;
    std::vector<BYTE> table;
    GUID guidItem = GUID_NULL;  // Of the library item; all zero: that of the item it is given with.
};

}  // namespace qfc

// One filter file. It may hold several filters, each an item of its own.
// Names are bound without conversion. A library whose texts are UTF-8, as the shipped template's are, keeps any bytes;
// one made without template keeps texts only, and refuses a name whose bytes are no UTF-8.
struct DS_Filter_File_Record {
    CString strFileName;   // The key; stored as given.
    int nFilterCount = 0;  // As the file says; may differ from the number of entries.
    std::vector<qfc::FilterEntry> filters;
    int bInLibrary = 1;  // 0: deleting the record leaves galleries alone. Not stored, loads give 1.
};

// One transition.
struct DS_Transition_Record {
    CString strFileName;           // As above; several transitions may come from one file.
    std::vector<BYTE> descriptor;  // Of any length; without bytes it is stored, but never loaded.
    GUID guidItem = GUID_NULL;     // Of the library item; all zero: that of the item it is given with.
    int bInLibrary = 1;            // As above.
};
