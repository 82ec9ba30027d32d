#pragma once

class DBTools;

// The process-wide current database: the one the library service has open. Not owned here. Any thread.
namespace qfc {

// Null withdraws it. Its owner withdraws it before deleting it.
void SetCurrentDBTools(DBTools* tools);
DBTools* CurrentDBTools();
// Compares addresses and touches nothing behind them. Kept: true for null while there is none.
bool IsCurrentDBTools(const DBTools* tools);

}  // namespace qfc
