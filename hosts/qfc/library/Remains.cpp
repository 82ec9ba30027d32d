#include "hosts/qfc/library/Remains.h"

namespace qfc::host {

void Remains::Note(const std::string& what, std::optional<bool> isStored) {
    if (isStored == true) stored.push_back(what);
    if (!isStored) unseen.push_back(what);
}

void Remains::Add(const Remains& more) {
    stored.insert(stored.end(), more.stored.begin(), more.stored.end());
    unseen.insert(unseen.end(), more.unseen.begin(), more.unseen.end());
}

std::vector<std::string> Remains::Lines() const {
    std::vector<std::string> lines;
    for (const std::string& what : stored) lines.push_back("cannot remove " + what);
    for (const std::string& what : unseen) lines.push_back("cannot tell whether " + what + " is removed");
    return lines;
}

}  // namespace qfc::host
