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
    kBadRowNumber,
    kLinkWithoutTag,
    kLinkWithoutItem,
    kTagWithoutCategory,
    kWriteAheadLog,
};

// A short name such as "relation-without-item"; valid for ever.
QFCLIB_API const char* LibraryFindingName(LibraryFindingKind kind);

struct LibraryFinding {
    LibraryFindingKind kind;
    std::string row;       // Which row: a GUID, a folder's row number, a gallery id, or a table; empty for the file.
    std::string sentence;  // For people, in English.
};

}  // namespace qfc

// Looks a library file over and never writes, to it or beside it: opened read-only, SQLite's own check first, then what
// the tables say about each other. Nothing is appended for a sound library; findings come grouped in the order of their
// kinds; a table that cannot be read to its end is named once, where that is met first. Two findings come alone: that a
// crash left the file unfinished (the next start of the library recovers it), and that another tool made it write ahead
// to a log (to look at such a file would leave the log's files beside it). Links without item and tags without category
// are no damage: removing a tagged item, clearing a library and deleting a category leave them. 1: examined. 0, and
// nothing appended: no file at the path (ANSI code page), no database, busy with a writer for longer than a reader
// waits, not readable, or no memory. Any thread.
QFCLIB_API int fnCheckLibrary(const char* path, std::vector<qfc::LibraryFinding>& findings);
