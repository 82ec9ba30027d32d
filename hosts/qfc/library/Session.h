#pragma once

#include <string>

namespace qfc::host {

// Chooses where the library lies; before the first Session of the process. Throws Failure when that is not possible.
void UseDataFolder(const std::string& folder);

// The full path of the library file, there or not. Throws Failure when it is too long for the library.
std::string LibraryPath();

// The same for the file of settings.
std::string SettingsPath();

// A running library service. The destructor closes every open gallery, since galleries point into the database, and
// then stops the service. One at a time, on the main thread.
class Session {
public:
    // Throws Failure when the library cannot be opened.
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

}  // namespace qfc::host
