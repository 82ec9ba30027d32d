#pragma once

#include "hosts/qfc/cli/Options.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace qfc::host {

// Options and arguments that several commands have. Each writes what was given to the value named, which must live as
// long as the command.

inline constexpr const char* kGalleryHelp = "Gallery by id or name (default: Media)";
inline constexpr const char* kOnlyGalleryHelp = "Only this gallery, by id or name (default: all)";
inline constexpr const char* kItemHelp = "Item: a path below the gallery (A\\B\\name) or a GUID";
inline constexpr const char* kFolderHelp = "Folder: a path below the gallery (A\\B, or A/B) or #row";

// --gallery.
void AddGallery(CLI::App* app, std::string& gallery, const std::string& help = kGalleryHelp);
// A word that must be given.
CLI::Option* AddPlace(CLI::App* app, const std::string& name, std::string& value, const std::string& help);
// Words that must be given, one or more.
void AddPlaces(CLI::App* app, const std::string& name, std::vector<std::string>& values, const std::string& help);
// --tag and --any; and what is wrong with --any alone is thrown as WrongUsage.
void AddTagFilter(CLI::App* app, std::vector<std::string>& tags, bool& any);
void RequireTagForAny(bool any, const std::vector<std::string>& tags);
// A key to sort by.
void AddSortKey(CLI::App* app, const std::string& flag, std::optional<SortKey>& key, const std::string& help);

// Checks: what is wrong with a count, or with the name of a gallery, category or folder; empty when nothing is.
std::string OneOrMore(const std::string& text);
std::string SomeGallery(const std::string& text);
std::string SomeCategory(const std::string& text);
std::string SomeFolder(const std::string& text);

}  // namespace qfc::host
