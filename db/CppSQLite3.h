#pragma once

// The SQLite access layer: one connection, its statements, their rows, and the one exception they throw.
#include "db/CppSQLite3DB.h"         // IWYU pragma: export
#include "db/CppSQLite3Exception.h"  // IWYU pragma: export
#include "db/CppSQLite3Query.h"      // IWYU pragma: export
#include "db/CppSQLite3Statement.h"  // IWYU pragma: export
