#pragma once

#include "platform/Export.h"

#include <string>
#include <vector>

namespace qfc {

enum class LibraryFindingKind {
    kNeedsRecovery,
    kDamagedFile,
    kNoLibrary,
    kRelationWithoutItem,
    kRelationWithoutFolder,
    kItemWithoutFolder,
    kPayloadWithoutItem,
    kPayloadUnreadable,
    kFolderWithoutParent,
    kFolderCycle,
    kGalleryIdTwice,
    kBadGuid,
};

// A short name such as "relation-without-item"; valid for ever.
QFCLIB_API const char* LibraryFindingName(LibraryFindingKind kind);

struct LibraryFinding {
    LibraryFindingKind kind;
    std::string row;       // Which row: a GUID, a folder's row number, a gallery id, or a table; empty for the file.
    std::string sentence;  // For people, in English.
};

}  // namespace qfc

// Looks a library file over and never writes to it: opened read-only, SQLite's own check first, then what the tables
// say about each other. Nothing is appended for a sound library; findings come grouped in the order of their kinds.
// A file that a crash left unfinished gives the one finding that it needs recovery: the next start of the library
// recovers it. 1: examined. 0: no file at the path (ANSI code page), it cannot be read, or it is no database.
// Any thread; waits like every reader for a process that is writing.
QFCLIB_API int fnCheckLibrary(const char* path, std::vector<qfc::LibraryFinding>& findings);
