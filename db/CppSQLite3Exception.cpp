#include "db/CppSQLite3Exception.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <sqlite3.h>

namespace {

struct CodeName {
    int code;
    const char* name;
};

constexpr std::array<CodeName, 29> kCodeNames{{
    {0, "SQLITE_OK"},          {1, "SQLITE_ERROR"},     {2, "SQLITE_INTERNAL"},  {3, "SQLITE_PERM"},
    {4, "SQLITE_ABORT"},       {5, "SQLITE_BUSY"},      {6, "SQLITE_LOCKED"},    {7, "SQLITE_NOMEM"},
    {8, "SQLITE_READONLY"},    {9, "SQLITE_INTERRUPT"}, {10, "SQLITE_IOERR"},    {11, "SQLITE_CORRUPT"},
    {12, "SQLITE_NOTFOUND"},   {13, "SQLITE_FULL"},     {14, "SQLITE_CANTOPEN"}, {15, "SQLITE_PROTOCOL"},
    {16, "SQLITE_EMPTY"},      {17, "SQLITE_SCHEMA"},   {18, "SQLITE_TOOBIG"},   {19, "SQLITE_CONSTRAINT"},
    {20, "SQLITE_MISMATCH"},   {21, "SQLITE_MISUSE"},   {22, "SQLITE_NOLFS"},    {23, "SQLITE_AUTH"},
    {24, "SQLITE_FORMAT"},     {25, "SQLITE_RANGE"},    {100, "SQLITE_ROW"},     {101, "SQLITE_DONE"},
    {1000, "CPPSQLITE_ERROR"},
}};

std::unique_ptr<char[]> FormatError(int code, const char* message) {
    const char* text = message != nullptr ? message : "";
    // Room for the longest name, the longest code and the punctuation.
    const std::size_t size = std::strlen(text) + 50;
    auto formatted = std::make_unique<char[]>(size);
    std::snprintf(formatted.get(), size, "%s[%d]: %s", CppSQLite3Exception::errorCodeAsString(code), code, text);
    return formatted;
}

std::unique_ptr<char[]> CopyText(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    auto copy = std::make_unique<char[]>(size);
    std::memcpy(copy.get(), text, size);
    return copy;
}

}  // namespace

CppSQLite3Exception::CppSQLite3Exception(int nErrCode, char* szErrMess, bool bFreeMsg)
    : m_nErrCode(nErrCode), m_szErrMess(FormatError(nErrCode, szErrMess)) {
    if (bFreeMsg) sqlite3_free(szErrMess);
}

CppSQLite3Exception::CppSQLite3Exception(int nErrCode, const char* szErrMess)
    : m_nErrCode(nErrCode), m_szErrMess(FormatError(nErrCode, szErrMess)) {}

CppSQLite3Exception::CppSQLite3Exception(const CppSQLite3Exception& other)
    : std::exception(other), m_nErrCode(other.m_nErrCode), m_szErrMess(CopyText(other.m_szErrMess.get())) {}

CppSQLite3Exception& CppSQLite3Exception::operator=(const CppSQLite3Exception& other) {
    m_szErrMess = CopyText(other.m_szErrMess.get());
    m_nErrCode = other.m_nErrCode;
    return *this;
}

CppSQLite3Exception::~CppSQLite3Exception() = default;

const char* CppSQLite3Exception::errorCodeAsString(int nErrCode) {
    for (const CodeName& entry : kCodeNames) {
        if (entry.code == nErrCode) return entry.name;
    }
    return "UNKNOWN_ERROR";
}
