#pragma once

#include "platform/Export.h"
#include "platform/framework/Types.h"

#include <string>
#include <string_view>

// Files as the interface names them. Paths are in the ANSI code page and pass through qfc::NativePath. Every function
// may be called from any thread. Results are 1 and 0, the reason in GetLastError().

// 1 for files and for folders.
QFCLIB_API int PathFileExistsA(const char* path);

// The copy appears whole or not at all and is writable even when the source is not. Overwrites unless `failIfExists`;
// a read-only target is never overwritten.
QFCLIB_API int CopyFileA(const char* source, const char* target, int failIfExists);

QFCLIB_API int DeleteFileA(const char* path);

// Folder for temporary files with a closing separator. The length without NUL, or the size needed when `size` is too
// small.
QFCLIB_API DWORD GetTempPathA(DWORD size, char* buffer);

// Writes "<folder>/<prefix><hex>.tmp" (three characters of the prefix, up to four upper-case digits) to a buffer of
// MAX_PATH bytes. With `unique` 0 picks a free number and creates the empty file; otherwise only forms the name.
// The number used, or 0: the folder is missing or longer than MAX_PATH - 14, or nothing is free.
QFCLIB_API UINT GetTempFileNameA(const char* folder, const char* prefix, UINT unique, char* buffer);

namespace qfc {

// The spelling under which the operating system finds the path, in UTF-8. A path that exists literally is taken as it
// is; otherwise backslashes separate like slashes, and the components "Orvel.dat" and "orvel.dat" stand for whichever
// exists.
QFCLIB_API std::string NativePath(const char* path);

// What follows takes native paths.

// Copies to a temporary name beside the target, syncs, renames, syncs the folder: a crash leaves the old target or the
// new one. Without `replace` a target that exists, were it made this moment by another process, fails the copy. False
// leaves no trace, unless only the last sync failed: then the copy is there, but not known to outlive a power cut.
bool CopyFileDurably(const std::string& source, const std::string& target, bool replace = true);

// Puts a file of these bytes in the place of `target`, whose permissions and group it keeps, and whose owner where it
// can, by way of "<target>.new": a crash leaves the old file or the new one. Only one writer of a target at a time.
// False leaves no trace, unless only the last sync failed; also where the group has rights of its own and cannot be
// kept.
bool WriteFileDurably(const std::string& target, std::string_view bytes);

// Renames over `target` and syncs the folder. False: not known to be durable; either nothing was renamed, or the sync
// failed behind the rename.
bool RenameDurably(const std::string& from, const std::string& to);
// The same, but fails where `to` is there already. A file system that knows neither such a rename nor second names of a
// file is asked for the name just before.
bool RenameDurablyToNew(const std::string& from, const std::string& to);

// The file that a path means, there or not: while the path names a link, what the link says. Folders on the way may
// still be links; a link that leads nowhere but to links stays one.
std::string WithoutLinks(const std::string& path);

// The folder part of a path with its slash; "./" for a bare name.
std::string FolderOf(const std::string& path);

// Makes the folder and those above it that are missing; true when it is there afterwards.
bool MakeFolders(const std::string& folder);

}  // namespace qfc
