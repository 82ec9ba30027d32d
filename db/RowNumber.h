#pragma once

#include "db/CppSQLite3Query.h"
#include "db/DbRecords.h"
#include "db/SqliteCodes.h"

#include <cstdint>
#include <limits>
#include <optional>

namespace qfc {

// The row number in a cell of the current row, kNoFolder for NULL. Empty when the cell holds no integer, or one beyond
// 32 bits: cut to its low half it would be the number of another row. Throws as the query does.
inline std::optional<int> RowNumber(const CppSQLite3Query& query, int field) {
    const int type = query.fieldType(field);
    if (type == sqlite::kTypeNull) return kNoFolder;
    const std::int64_t number = query.getInt64Field(field);
    const bool fits = number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
    if (type != sqlite::kTypeInteger || !fits) return std::nullopt;
    return static_cast<int>(number);
}

inline std::optional<int> RowNumber(const CppSQLite3Query& query, const char* column) {
    return RowNumber(query, query.fieldIndex(column));
}

}  // namespace qfc
