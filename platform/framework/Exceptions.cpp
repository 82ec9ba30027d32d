#include "platform/framework/Exceptions.h"

IMPLEMENT_DYNAMIC(CException, CObject)
IMPLEMENT_DYNAMIC(CMemoryException, CException)
IMPLEMENT_DYNAMIC(CInvalidArgException, CException)
IMPLEMENT_DYNAMIC(CNotSupportedException, CException)

void CException::Delete() {
    if (m_bAutoDelete != 0) delete this;
}

void AfxThrowMemoryException() {
    // Made beforehand: there may be no memory for another one.
    static CMemoryException shared(0);
    throw &shared;
}

void AfxThrowInvalidArgException() { throw new CInvalidArgException; }

void AfxThrowNotSupportedException() { throw new CNotSupportedException; }
