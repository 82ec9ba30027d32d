#pragma once

#include "platform/Export.h"
#include "platform/framework/Guid.h"
#include "platform/framework/Types.h"

// Fills in a fresh random GUID. 0 on success, E_POINTER (0x80004003 as a signed number) for null. Any thread.
QFCLIB_API LONG CoCreateGuid(GUID* guid);
