#pragma once

#include "db/CppSQLite3.h"
#include "db/DBToolsInternal.h"
#include "db/SqliteCodes.h"

#include <climits>
#include <cstddef>
#include <new>
#include <span>

// The bodies of the one statement pattern of DBToolsInternal, for its own sources.
namespace qfc::statement {

inline void Bind(CppSQLite3Statement& statement, int parameter, int value) { statement.bind(parameter, value); }

inline void Bind(CppSQLite3Statement& statement, int parameter, const CString& text) {
    statement.bind(parameter, text.GetString());
}

inline void Bind(CppSQLite3Statement& statement, int parameter, std::span<const std::byte> bytes) {
    const int length = bytes.size() <= INT_MAX ? static_cast<int>(bytes.size()) : -1;
    statement.bind(parameter, reinterpret_cast<const unsigned char*>(bytes.data()), length);
}

inline void Bind(CppSQLite3Statement& statement, int parameter, const GUID& guid) {
    Bind(statement, parameter, std::span<const std::byte>(GuidBytes(guid)));
}

template <typename... Values>
CppSQLite3Statement Compile(CppSQLite3DB& db, const char* sql, const Values&... values) {
    CppSQLite3Statement compiled = db.compileStatement(sql);
    int parameter = 0;
    (Bind(compiled, ++parameter, values), ...);
    return compiled;
}

}  // namespace qfc::statement

// Runs nothing once SQLite has rolled the transaction of the operation back by itself: what ran then would stay.
// Otherwise runs the work, once more when the schema changed under it (another process made a table), and answers
// whether it went through without an exception of the access layer and without running out of memory.
template <typename Work>
bool DBToolsInternal::Attempt(Work&& work) {
    if (!HasConnection()) return false;
    for (bool bRetried = false;; bRetried = true) {
        if (Connection().isInTransaction() && Connection().isAutocommit()) return false;
        try {
            work();
            return true;
        } catch (const CppSQLite3Exception& error) {
            m_nErrorCode = error.errorCode();
            if (bRetried || m_nErrorCode != qfc::sqlite::kSchema) return false;
        } catch (const std::bad_alloc&) {
            m_nErrorCode = qfc::sqlite::kNoMem;
            return false;
        }
    }
}

template <typename... Values>
bool DBToolsInternal::Run(const char* sql, const Values&... values) {
    return Attempt([&] { qfc::statement::Compile(Connection(), sql, values...).execDML(); });
}

template <typename... Values>
bool DBToolsInternal::Select(const char* sql, CppSQLite3Query& query, const Values&... values) {
    return Attempt([&] { query = qfc::statement::Compile(Connection(), sql, values...).execQuery(); });
}

template <typename... Values>
bool DBToolsInternal::Look(const char* sql, bool& bFound, const Values&... values) {
    CppSQLite3Query query;
    if (!Select(sql, query, values...)) return false;
    bFound = !query.eof();
    return true;
}
