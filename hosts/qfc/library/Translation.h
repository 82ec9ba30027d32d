#pragma once

#include <string>
#include <vector>

namespace qfc::host {

class Galleries;

// Names in other languages. The library asks once a process whether it is to translate, so each of these comes before
// anything else looks at a name. Main thread.

// Turns translation on or off in the application ini of the data folder, from now on. Throws Failure when it cannot be
// stored there.
void SwitchTranslation(bool on);

// What to tell when the settings have the library write each name that it shows over its translation, as a collecting
// that was killed leaves them; empty when they do not.
std::string CollectingWarning();

struct CollectedNames {
    std::string file;
    std::vector<std::string> written;  // As "section: name".
    std::vector<std::string> refused;
    std::size_t already = 0;  // Of these a translation is there; it is not touched.
};

// Has the library write the names of folders and items that have no translation yet into the translation file, for
// people to translate them there. Throws Failure when there is no place for that file.
CollectedNames CollectNames(Galleries& galleries);

}  // namespace qfc::host
