#pragma once

#include "platform/Export.h"

#include <functional>
#include <string>

// The two folders everything starts from. The per-user data folder: what the host set, else the environment's
// QFCLIB_DATA_DIR, else $XDG_DATA_HOME/Orvel/Cinelume/, else ~/.local/share/Orvel/Cinelume/. The host folder: what the
// host set, else QFCLIB_HOST_DIR, else that of the running executable. Both end with a slash and are in the ANSI code
// page. Every function may be called from any thread.

// Fills the buffer with the data folder, which is made when it is missing; 1, or 0 when it does not fit or there is no
// buffer. The last two arguments choose nothing here.
QFCLIB_API int GetAppDataFolder(char* buffer, int size, int, int);

namespace qfc {

std::string HostFolder();

// The path of a file in a folder beside the host, with a backslash before its name; there or not. Empty when it has
// more than 259 bytes. The first call settles the host folder for all later ones.
std::string HostDataFile(const char* folder, const char* name);

// Each returns false, and changes nothing, once FreezePlaces has answered or for an empty path. A relative path counts
// from the working folder of this moment.
QFCLIB_API bool SetDataFolder(const char* path);
QFCLIB_API bool SetHostFolder(const char* path);

// GetAppDataFolder for the path of the library: when it answers 1, both folders stay where they are from then on. Also
// 0 for a folder that does not suit; it is asked for while other threads wait, and may not ask for places itself.
int FreezePlaces(char* buffer, int size, const std::function<bool(const char*)>& suits = nullptr);

}  // namespace qfc
