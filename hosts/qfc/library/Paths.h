#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qfc::host {

// Paths as the user types them. Pure text; any thread.

// The components of a path. A backslash separates; slashes do only when the text holds no backslash. Runs of
// separators count once.
std::vector<std::string> SplitPath(const std::string& text);

std::string JoinPath(const std::vector<std::string>& components);

// The path with one more component.
std::string Below(const std::string& path, const std::string& name);

// The row number in "#12"; nothing for another text.
std::optional<int> RowNumber(const std::string& text);

// Texts of the library are UTF-8: others would come back changed, and never be found again.
bool IsUtf8(std::string_view text);
// Throws WrongUsage for a text that is not.
void RequireUtf8(const std::string& text);

// A name that can be reached by a path again; throws WrongUsage for an empty one, one with a backslash and one that is
// not UTF-8.
void RequireName(const std::string& name);

}  // namespace qfc::host
