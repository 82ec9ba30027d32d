#pragma once

#include "platform/Export.h"

// A lock on a mutex handle for the length of a scope; a null handle makes the whole object do nothing. Belongs to the
// thread that made it.
class QFCLIB_API MutexLocker {
public:
    // Waits without time limit. The handle is borrowed.
    explicit MutexLocker(void* hMutex);
    ~MutexLocker();
    MutexLocker(const MutexLocker&) = delete;
    // Takes over the handle only: it neither waits for the new mutex nor releases the old one.
    MutexLocker& operator=(const MutexLocker& other);

private:
    void* m_hMutex;
};
