#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qfc {

class IniDocument;

// The text of a profile file after a change: everything that the change does not touch stays. Nothing when there is
// nothing to change. Names and values are texts of those who ask. Any thread.
std::optional<std::string> WithValue(const IniDocument& document, std::string_view section, std::string_view key,
                                     std::string_view value);
std::optional<std::string> WithoutKey(const IniDocument& document, std::string_view section, std::string_view key);
// Comments of the section stay.
std::optional<std::string> WithoutSection(const IniDocument& document, std::string_view section);

}  // namespace qfc
