#pragma once

#include "platform/Export.h"

// Copies a library as it stands at one moment, also while it is in use, by an online backup from a read-only
// connection: the source is never changed. The copy is made under a temporary name beside the target, synced and
// renamed, so the target is the old file, if there was one, or the whole copy. Paths in the ANSI code page. Nobody may
// have the old target open. 1, or 0 and no trace left: no source, no database, one that needs recovery first or writes
// ahead to a log, no room or memory, the target is the source, or a journal or log with content lies beside the target
// (it would be applied to the copy; open the target once, or delete both). Should the folder fail to sync behind the
// rename, 0 comes with the whole copy in place: it is not known to outlive a power cut. Any thread.
QFCLIB_API int fnSnapshotLibrary(const char* source, const char* target);
