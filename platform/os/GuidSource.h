#pragma once

#include "platform/Export.h"
#include "platform/framework/Guid.h"
#include "platform/framework/Types.h"

#include <string_view>

// Fills in a fresh random GUID. 0 on success, E_POINTER (0x80004003 as a signed number) for null. Any thread.
QFCLIB_API LONG CoCreateGuid(GUID* guid);

namespace qfc {

// The GUID of a name within a space of names: the same two always give the same one. Any thread.
GUID GuidOfName(const GUID& space, std::string_view name);

}  // namespace qfc
