#pragma once

#include "platform/Export.h"

#include <exception>
#include <memory>

// The code of an error that the access layer found itself; every other code is SQLite's.
inline constexpr int CPPSQLITE_ERROR = 1000;

// The only error report of the SQLite access layer, thrown by value. Its text is formatted once, when it is built:
// code name, code in square brackets, colon, blank, message. An exception belongs to the thread that catches it.
class QFCLIB_API CppSQLite3Exception : public std::exception {
public:
    // An absent message leaves nothing behind the blank. bFreeMsg: the message came from SQLite, which releases it
    // here.
    CppSQLite3Exception(int nErrCode, char* szErrMess, bool bFreeMsg = true);
    CppSQLite3Exception(int nErrCode, const char* szErrMess);
    CppSQLite3Exception(const CppSQLite3Exception& other);
    CppSQLite3Exception& operator=(const CppSQLite3Exception& other);
    ~CppSQLite3Exception() override;

    int errorCode() const { return m_nErrCode; }
    // Owned by the exception.
    const char* errorMessage() const { return m_szErrMess.get(); }
    const char* what() const noexcept override { return m_szErrMess.get(); }

    // The name in the table of codes, "UNKNOWN_ERROR" for every other number.
    static const char* errorCodeAsString(int nErrCode);

private:
    int m_nErrCode;
    std::unique_ptr<char[]> m_szErrMess;
};
