#include "db/CppSQLite3Statement.h"

#include "db/CppSQLite3Exception.h"

#include <sqlite3.h>
#include <utility>

namespace {

void CheckBound(int nResult, const char* szMessage) {
    if (nResult != SQLITE_OK) throw CppSQLite3Exception(nResult, szMessage);
}

}  // namespace

CppSQLite3Statement::CppSQLite3Statement() = default;

CppSQLite3Statement::CppSQLite3Statement(sqlite3* pDB, sqlite3_stmt* pVM) : m_pDB(pDB), m_pVM(pVM) {}

CppSQLite3Statement::CppSQLite3Statement(CppSQLite3Statement&& other) noexcept
    : m_bOwnVM(other.m_bOwnVM), m_pDB(other.m_pDB), m_pVM(std::exchange(other.m_pVM, nullptr)) {}

CppSQLite3Statement& CppSQLite3Statement::operator=(CppSQLite3Statement&& other) noexcept {
    if (this != &other) {
        FinalizeQuietly();
        m_bOwnVM = other.m_bOwnVM;
        m_pDB = other.m_pDB;
        m_pVM = std::exchange(other.m_pVM, nullptr);
    }
    return *this;
}

CppSQLite3Statement::~CppSQLite3Statement() { FinalizeQuietly(); }

void CppSQLite3Statement::bind(int nParam, const char* szValue) {
    CheckVM();
    CheckBound(sqlite3_bind_text(m_pVM, nParam, szValue != nullptr ? szValue : "", -1, SQLITE_TRANSIENT),
               "Error binding string param");
}

void CppSQLite3Statement::bind(int nParam, int nValue) {
    CheckVM();
    CheckBound(sqlite3_bind_int(m_pVM, nParam, nValue), "Error binding int param");
}

void CppSQLite3Statement::bind(int nParam, const unsigned char* blobValue, int nLen) {
    CheckVM();
    const bool bReadable = nLen == 0 || (nLen > 0 && blobValue != nullptr);
    // SQLite takes an absent pointer for NULL and leaves a negative length undefined.
    const void* pBytes = blobValue != nullptr ? static_cast<const void*>(blobValue) : "";
    CheckBound(bReadable ? sqlite3_bind_blob(m_pVM, nParam, pBytes, nLen, SQLITE_TRANSIENT) : SQLITE_MISUSE,
               "Error binding blob param");
}

int CppSQLite3Statement::execDML() {
    CheckReady();
    if (sqlite3_step(m_pVM) != SQLITE_DONE) ResetAndThrow();
    const int nChanges = sqlite3_changes(m_pDB);
    const int nResult = sqlite3_reset(m_pVM);
    if (nResult != SQLITE_OK) throw CppSQLite3Exception(nResult, sqlite3_errmsg(m_pDB));
    return nChanges;
}

CppSQLite3Query CppSQLite3Statement::execQuery() {
    CheckReady();
    const int nStep = sqlite3_step(m_pVM);
    if (nStep != SQLITE_DONE && nStep != SQLITE_ROW) ResetAndThrow();
    m_bOwnVM = false;
    return CppSQLite3Query(m_pDB, std::exchange(m_pVM, nullptr), nStep == SQLITE_DONE);
}

void CppSQLite3Statement::finalize() {
    if (m_pVM == nullptr) return;
    const int nResult = sqlite3_finalize(std::exchange(m_pVM, nullptr));
    if (nResult != SQLITE_OK) throw CppSQLite3Exception(nResult, sqlite3_errmsg(m_pDB));
}

void CppSQLite3Statement::CheckReady() const {
    if (m_pDB == nullptr) throw CppSQLite3Exception(CPPSQLITE_ERROR, "Database not open");
    CheckVM();
}

void CppSQLite3Statement::CheckVM() const {
    if (m_pVM == nullptr) throw CppSQLite3Exception(CPPSQLITE_ERROR, "Null Virtual Machine pointer");
}

void CppSQLite3Statement::FinalizeQuietly() noexcept {
    if (m_pVM != nullptr && m_bOwnVM) sqlite3_finalize(std::exchange(m_pVM, nullptr));
}

void CppSQLite3Statement::ResetAndThrow() {
    const int nResult = sqlite3_reset(m_pVM);
    throw CppSQLite3Exception(nResult, sqlite3_errmsg(m_pDB));
}
