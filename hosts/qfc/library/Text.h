#pragma once

#include "platform/framework/CString.h"

#include <string>

namespace qfc::host {

// Between the library's strings and ours: the same bytes both ways.
inline std::string ToText(const CString& text) { return std::string(text.View()); }
inline CString ToCString(const std::string& text) { return CString(std::string_view(text)); }

}  // namespace qfc::host
