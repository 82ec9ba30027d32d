#pragma once

#include "db/CppSQLite3Query.h"
#include "platform/Export.h"

struct sqlite3;
struct sqlite3_stmt;

// One compiled statement with its bound parameters, move-only. Bound text and bytes are copied. There is no binding of
// NULL: an absent text is bound as the empty text, absent bytes as a blob of length 0. Used by one thread at a time,
// together with its connection.
class QFCLIB_API CppSQLite3Statement {
public:
    CppSQLite3Statement();
    CppSQLite3Statement(sqlite3* pDB, sqlite3_stmt* pVM);
    CppSQLite3Statement(CppSQLite3Statement&& other) noexcept;
    CppSQLite3Statement& operator=(CppSQLite3Statement&& other) noexcept;
    CppSQLite3Statement(const CppSQLite3Statement&) = delete;
    CppSQLite3Statement& operator=(const CppSQLite3Statement&) = delete;
    virtual ~CppSQLite3Statement();

    // Parameters count from 1.
    void bind(int nParam, const char* szValue);
    void bind(int nParam, int nValue);
    void bind(int nParam, const unsigned char* blobValue, int nLen);

    // Runs a statement without rows and answers the number of rows changed. The statement stays compiled, with its
    // bindings, ready to run again.
    int execDML();
    // The compiled statement goes to the query; this object is empty afterwards. When the run fails it is kept here.
    CppSQLite3Query execQuery();

    void finalize();

private:
    void CheckReady() const;
    void CheckVM() const;
    void FinalizeQuietly() noexcept;
    [[noreturn]] void ResetAndThrow();

    bool m_bOwnVM = true;
    sqlite3* m_pDB = nullptr;  // Not owned.
    sqlite3_stmt* m_pVM = nullptr;
};
