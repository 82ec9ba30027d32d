#pragma once

#include "db/DBTools.h"
#include "platform/framework/CString.h"

#include <memory>

// Where the library of the service lies, and how it is opened. Any thread.
namespace qfc {

// The file's name, without folder.
inline constexpr char kLibraryName[] = "CinelumeDatabase.db";

// Fixes both folders and answers the path in the data folder. Empty, and nothing is fixed, when the folder does not fit
// the interface's buffer or no database can be opened under the path.
CString FixLibraryPath();

enum class MissingLibrary { kSeed, kLeaveEmpty };

// Opens the library. One that is missing is made, as a copy of the template beside the host if so wanted and there is
// one; whatever goes wrong with that, it starts empty. Null when it cannot be opened.
std::unique_ptr<DBTools> OpenLibrary(const CString& strPath, MissingLibrary missing);

}  // namespace qfc
