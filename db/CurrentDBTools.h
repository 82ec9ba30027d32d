#pragma once

#include "platform/Export.h"

class DBTools;

// The process-wide current database: the one the library service has open. Not owned here. Any thread.
namespace qfc {

// Null withdraws it. Its owner withdraws it before deleting it.
QFCLIB_API void SetCurrentDBTools(DBTools* tools);
QFCLIB_API DBTools* CurrentDBTools();
// False for null. Compares addresses and touches nothing behind them.
QFCLIB_API bool IsCurrentDBTools(const DBTools* tools);

}  // namespace qfc
