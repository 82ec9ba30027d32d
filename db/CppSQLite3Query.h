#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace qfc {
class DetachedRows;
}

// A forward-only cursor over the rows of a statement, move-only, standing on the first row (or at the end) when it is
// handed out. Column names are matched exactly, with case. Used by one thread at a time, together with its connection,
// unless it is detached: then it is bound to no connection and any one thread may read it.
class QFCLIB_API CppSQLite3Query {
public:
    // No statement, at the end, no columns.
    CppSQLite3Query();
    CppSQLite3Query(sqlite3* pDB, sqlite3_stmt* pVM, bool bEof, bool bOwnVM = true);
    CppSQLite3Query(CppSQLite3Query&& other) noexcept;
    // Finalises what this query held, swallowing any error, before it takes the other's.
    CppSQLite3Query& operator=(CppSQLite3Query&& other) noexcept;
    CppSQLite3Query(const CppSQLite3Query&) = delete;
    CppSQLite3Query& operator=(const CppSQLite3Query&) = delete;
    virtual ~CppSQLite3Query();

    bool eof() const { return m_bEof; }
    // Throws when SQLite fails; the statement is gone then and every further access throws.
    void nextRow();

    int fieldIndex(const char* szField) const;
    // SQLite's type code of the cell in the current row; 5 is NULL.
    int fieldType(int nField) const;

    // The null value stands for NULL cells only; other types are converted as SQLite does.
    int getIntField(int nField, int nNullValue = 0) const;
    int getIntField(const char* szField, int nNullValue = 0) const;
    // The same in 64 bits: what a row number may really be; see qfc::RowNumber.
    std::int64_t getInt64Field(int nField, std::int64_t nNullValue = 0) const;
    std::int64_t getInt64Field(const char* szField, std::int64_t nNullValue = 0) const;
    // The text is valid until the next row or the finalising.
    const char* getStringField(int nField, const char* szNullValue = "") const;
    const char* getStringField(const char* szField, const char* szNullValue = "") const;
    // Null and length 0 for NULL and for empty cells. Valid until the next row or the finalising.
    const unsigned char* getBlobField(int nField, int& nLen) const;
    const unsigned char* getBlobField(const char* szField, int& nLen) const;

    void finalize();

    // Takes the current row and all that follow into memory and finalises the statement, so that nothing holds the
    // database any more. Everything reads as before: types, names, NULLs, conversions, validity of pointers. A row's
    // memory is freed when the cursor passes it. Throws, with the statement gone, when a row cannot be read or kept.
    void detach();

private:
    void CheckVM() const;
    void CheckField(int nField) const;
    void FinalizeQuietly() noexcept;
    void Take(CppSQLite3Query& other) noexcept;

    sqlite3* m_pDB = nullptr;  // Not owned.
    sqlite3_stmt* m_pVM = nullptr;
    bool m_bEof = true;
    int m_nCols = 0;
    bool m_bOwnVM = false;
    std::unique_ptr<qfc::DetachedRows> m_pRows;  // Set once detached; then there is no statement.
};
