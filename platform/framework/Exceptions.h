#pragma once

#include "platform/Export.h"
#include "platform/framework/CObject.h"

// The exceptions of the framework. They are thrown as pointers; whoever catches one ends it with Delete(), never with
// delete. An exception belongs to the thread that catches it.
class QFCLIB_API CException : public CObject {
    DECLARE_DYNAMIC(CException)

public:
    void Delete();

protected:
    explicit CException(int autoDelete = 1) : m_bAutoDelete(autoDelete) {}

private:
    int m_bAutoDelete;  // 0 for the shared object that is thrown when there is no memory for a new one
};

class QFCLIB_API CMemoryException : public CException {
    DECLARE_DYNAMIC(CMemoryException)

public:
    explicit CMemoryException(int autoDelete = 1) : CException(autoDelete) {}
};

// An argument outside what the function takes, an index or a position that does not exist among them.
class QFCLIB_API CInvalidArgException : public CException {
    DECLARE_DYNAMIC(CInvalidArgException)
};

class QFCLIB_API CNotSupportedException : public CException {
    DECLARE_DYNAMIC(CNotSupportedException)
};

[[noreturn]] QFCLIB_API void AfxThrowMemoryException();
[[noreturn]] QFCLIB_API void AfxThrowInvalidArgException();
[[noreturn]] QFCLIB_API void AfxThrowNotSupportedException();
