#pragma once

#include "platform/Export.h"
#include "platform/framework/CString.h"
#include "platform/framework/Types.h"

#include <cstddef>

// Texts that a module of the host has for folder ids, such as the names of the predefined galleries in the language of
// its surface. A module is any value but null that the host hands to functions with an HINSTANCE. Any thread.
namespace qfc {

struct ModuleString {
    UINT id;
    const char* text;  // In the ANSI code page; copied. Null and empty are no text.
};

// Takes the place of the table that the module had; no strings take it away. False for a null module.
QFCLIB_API bool SetModuleStrings(HINSTANCE module, const ModuleString* strings, std::size_t count);

// At most 260 bytes, characters whole; empty when the module has no such text.
CString ModuleText(HINSTANCE module, UINT id);

}  // namespace qfc
