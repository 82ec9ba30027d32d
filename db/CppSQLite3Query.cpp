#include "db/CppSQLite3Query.h"

#include "db/CppSQLite3DetachedRows.h"
#include "db/CppSQLite3Exception.h"

#include <cstring>
#include <sqlite3.h>
#include <utility>

namespace {

// The only reason why a cell that is not NULL has no text, or bytes but no address.
[[noreturn]] void ThrowNoMemory() { throw CppSQLite3Exception(SQLITE_NOMEM, sqlite3_errstr(SQLITE_NOMEM)); }

}  // namespace

CppSQLite3Query::CppSQLite3Query() = default;

CppSQLite3Query::CppSQLite3Query(sqlite3* pDB, sqlite3_stmt* pVM, bool bEof, bool bOwnVM)
    : m_pDB(pDB), m_pVM(pVM), m_bEof(bEof), m_nCols(sqlite3_column_count(pVM)), m_bOwnVM(bOwnVM) {}

CppSQLite3Query::CppSQLite3Query(CppSQLite3Query&& other) noexcept { Take(other); }

CppSQLite3Query& CppSQLite3Query::operator=(CppSQLite3Query&& other) noexcept {
    if (this != &other) {
        FinalizeQuietly();
        Take(other);
    }
    return *this;
}

CppSQLite3Query::~CppSQLite3Query() { FinalizeQuietly(); }

void CppSQLite3Query::Take(CppSQLite3Query& other) noexcept {
    m_pDB = other.m_pDB;
    m_pVM = std::exchange(other.m_pVM, nullptr);
    m_bEof = other.m_bEof;
    m_nCols = other.m_nCols;
    m_bOwnVM = other.m_bOwnVM;
    m_pRows = std::move(other.m_pRows);
}

void CppSQLite3Query::nextRow() {
    CheckVM();
    if (m_pRows) {
        if (!m_pRows->IsEmpty()) m_pRows->Pop();
        m_bEof = m_pRows->IsEmpty();
        return;
    }
    const int nStep = sqlite3_step(m_pVM);
    if (nStep == SQLITE_ROW) return;
    if (nStep == SQLITE_DONE) {
        m_bEof = true;
        return;
    }
    const int nResult = sqlite3_finalize(std::exchange(m_pVM, nullptr));
    throw CppSQLite3Exception(nResult, sqlite3_errmsg(m_pDB));
}

int CppSQLite3Query::fieldIndex(const char* szField) const {
    CheckVM();
    for (int nField = 0; szField != nullptr && nField < m_nCols; ++nField) {
        const char* szName = m_pRows ? m_pRows->Name(nField) : sqlite3_column_name(m_pVM, nField);
        if (szName != nullptr && std::strcmp(szField, szName) == 0) return nField;
    }
    throw CppSQLite3Exception(CPPSQLITE_ERROR, "Invalid field name requested");
}

int CppSQLite3Query::fieldType(int nField) const {
    CheckField(nField);
    return m_pRows ? m_pRows->Type(nField) : sqlite3_column_type(m_pVM, nField);
}

int CppSQLite3Query::getIntField(int nField, int nNullValue) const {
    if (fieldType(nField) == SQLITE_NULL) return nNullValue;
    return m_pRows ? m_pRows->Int(nField) : sqlite3_column_int(m_pVM, nField);
}

int CppSQLite3Query::getIntField(const char* szField, int nNullValue) const {
    return getIntField(fieldIndex(szField), nNullValue);
}

std::int64_t CppSQLite3Query::getInt64Field(int nField, std::int64_t nNullValue) const {
    if (fieldType(nField) == SQLITE_NULL) return nNullValue;
    return m_pRows ? m_pRows->Int64(nField) : sqlite3_column_int64(m_pVM, nField);
}

std::int64_t CppSQLite3Query::getInt64Field(const char* szField, std::int64_t nNullValue) const {
    return getInt64Field(fieldIndex(szField), nNullValue);
}

const char* CppSQLite3Query::getStringField(int nField, const char* szNullValue) const {
    if (fieldType(nField) == SQLITE_NULL) return szNullValue;
    const char* szText =
        m_pRows ? m_pRows->Text(nField) : reinterpret_cast<const char*>(sqlite3_column_text(m_pVM, nField));
    if (szText == nullptr) ThrowNoMemory();
    return szText;
}

const char* CppSQLite3Query::getStringField(const char* szField, const char* szNullValue) const {
    return getStringField(fieldIndex(szField), szNullValue);
}

const unsigned char* CppSQLite3Query::getBlobField(int nField, int& nLen) const {
    CheckField(nField);
    if (m_pRows) return m_pRows->Blob(nField, nLen);
    // The length first: asking for it may convert the cell, and would invalidate a pointer taken before.
    nLen = sqlite3_column_bytes(m_pVM, nField);
    const auto* pBytes = static_cast<const unsigned char*>(sqlite3_column_blob(m_pVM, nField));
    if (pBytes == nullptr && nLen > 0) ThrowNoMemory();
    return pBytes;
}

const unsigned char* CppSQLite3Query::getBlobField(const char* szField, int& nLen) const {
    return getBlobField(fieldIndex(szField), nLen);
}

void CppSQLite3Query::finalize() {
    m_pRows.reset();
    if (m_pVM == nullptr || !m_bOwnVM) return;
    const int nResult = sqlite3_finalize(std::exchange(m_pVM, nullptr));
    if (nResult != SQLITE_OK) throw CppSQLite3Exception(nResult, sqlite3_errmsg(m_pDB));
}

void CppSQLite3Query::detach() {
    CheckVM();
    if (m_pRows) return;
    std::unique_ptr<qfc::DetachedRows> pRows;
    try {
        pRows = std::make_unique<qfc::DetachedRows>(m_pVM);
        for (; !m_bEof; nextRow()) pRows->Append(m_pVM);
    } catch (...) {
        FinalizeQuietly();
        throw;
    }
    finalize();
    m_pVM = nullptr;
    m_pRows = std::move(pRows);
    m_bEof = m_pRows->IsEmpty();
}

void CppSQLite3Query::CheckVM() const {
    if (m_pVM == nullptr && m_pRows == nullptr) {
        throw CppSQLite3Exception(CPPSQLITE_ERROR, "Null Virtual Machine pointer");
    }
}

void CppSQLite3Query::CheckField(int nField) const {
    CheckVM();
    if (nField < 0 || nField > m_nCols - 1) {
        throw CppSQLite3Exception(CPPSQLITE_ERROR, "Invalid field index requested");
    }
}

void CppSQLite3Query::FinalizeQuietly() noexcept {
    m_pRows.reset();
    if (m_pVM != nullptr && m_bOwnVM) sqlite3_finalize(std::exchange(m_pVM, nullptr));
}
