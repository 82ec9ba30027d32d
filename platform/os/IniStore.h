#pragma once

#include "platform/os/IniFile.h"

#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace qfc {

class IniDocument;

// Profile files on disk, by native path. What was read is kept and taken again while inode, size and times of the file
// are the same. Any thread.

// Null, with the last error set, when there is no such file. Takes no lock that a writer holds. A file that changed
// less than about two seconds before `now` is read in any case.
std::shared_ptr<const IniDocument> OpenProfile(const std::string& path, ProfileTexts texts,
                                               std::time_t now = std::time(nullptr));

// Gives `change` the file as it is, an empty one when there is none, and puts what it returns in its place; nothing
// means nothing to do. It is asked before anybody is waited for, and again then. Writers, of other processes too, come
// one after the other. False with the last error set.
using ProfileChange = std::function<std::optional<std::string>(const IniDocument&)>;
bool ChangeProfile(const std::string& path, ProfileTexts texts, const ProfileChange& change);

}  // namespace qfc
