#pragma once

#include <string>
#include <vector>

namespace qfc::host {

// What came of the tags of a library that was emptied.
struct ClearedTags {
    std::vector<std::string> categories;  // That went, as "100:My tags".
    std::vector<std::string> left;        // What had to go and is still there, for people; empty when nothing is.
};

// After the library was emptied, while no Session runs: takes the tags of own galleries, which would pass to the next
// gallery with that id, and all links, since no item is there any more that they could belong to. The tags of
// predefined galleries stay. What cannot be taken stops nothing else, and what cannot be read is left, too. Who calls
// it holds an Interrupt: some tags go for a moment, with their links, and come back. Main thread.
ClearedTags ClearTags();

}  // namespace qfc::host
