#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qfc::host {

// What the library still has of what was to go, by the looks that were taken afterwards. A look that fails says nothing
// of the thing: it is neither there nor gone.
struct Remains {
    std::vector<std::string> stored;  // Still there.
    std::vector<std::string> unseen;  // Nobody knows.

    bool IsEmpty() const { return stored.empty() && unseen.empty(); }
    // Of what a look came to; nothing when it failed.
    void Note(const std::string& what, std::optional<bool> isStored);
    void Add(const Remains& more);
    // "cannot remove F\a", "cannot tell whether F\b is removed".
    std::vector<std::string> Lines() const;
};

}  // namespace qfc::host
