#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qfc::host {

struct ProbedEffect;

// The folders that effects go into, as the shipped table "EffectFolders.ini" beside the program has them. Does not
// change once it is made; any thread.
class EffectFolders {
public:
    // Throws Failure when the table is not there: all effects would make one heap.
    EffectFolders();

    // The components of the folder for an effect of a file of that base name.
    std::vector<std::string> FolderOf(const ProbedEffect& effect, const std::string& baseName) const;

private:
    struct Table {
        std::map<std::string, std::string> names;
        std::vector<std::pair<std::string, std::string>> keywords;
    };

    Table m_filters;
    Table m_transitions;
};

}  // namespace qfc::host
