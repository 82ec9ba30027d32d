#pragma once

#include "db/CppSQLite3Exception.h"
#include "db/CppSQLite3Query.h"
#include "platform/framework/CString.h"
#include "platform/framework/Guid.h"
#include "platform/text/CodePages.h"

#include <cstddef>
#include <optional>

// How cells become values of the model, for everybody who reads rows: a column that is missing, and a cell that is
// NULL, give the default. Throw as the query does; used by its thread.
namespace qfc::cell {

// -1 for a column that is missing.
inline int IndexOf(const CppSQLite3Query& query, const char* column) {
    try {
        return query.fieldIndex(column);
    } catch (const CppSQLite3Exception&) {
        return -1;
    }
}

inline int Int(const CppSQLite3Query& query, int index, int missing) {
    return index < 0 ? missing : query.getIntField(index, missing);
}

// The bytes as stored.
inline CString Text(const CppSQLite3Query& query, int index, const CString& missing) {
    return index < 0 ? missing : CString(query.getStringField(index, missing));
}

// Stored UTF-8, in the ANSI code page; the default is not converted.
inline CString NameText(const CppSQLite3Query& query, int index, const CString& missing) {
    const char* stored = index < 0 ? nullptr : query.getStringField(index, nullptr);
    return stored != nullptr ? CDBStringHelper::UTF_82ASCII(stored) : missing;
}

// Empty unless the cell holds 16 bytes. Columns of GUIDs are untyped, and only the length is tested: a text of 16 bytes
// is taken as well.
inline std::optional<GUID> Guid(const CppSQLite3Query& query, int index) {
    if (index < 0) return std::nullopt;
    int length = 0;
    const unsigned char* bytes = query.getBlobField(index, length);
    return GuidFromBytes(bytes, length > 0 ? static_cast<std::size_t>(length) : 0);
}

}  // namespace qfc::cell
