#include "service/LibraryOperation.h"

#include "platform/os/Sync.h"

LibraryOperation::LibraryOperation() : m_hEvent(CreateEventA(nullptr, 1, 0, nullptr)) {}

LibraryOperation::~LibraryOperation() {
    if (m_hEvent != nullptr) CloseHandle(m_hEvent);
}

bool LibraryOperation::AwaitEnd() const {
    m_nEnd.wait(kQueued);
    return m_nEnd == kExecuted;
}

void LibraryOperation::End(int nHow) {
    m_nEnd = nHow;
    m_nEnd.notify_all();
}

void LibraryOperation::FillCallbackParam(QFCLibCallbackParam& param) {
    param.hGallery = m_hGallery;
    param.guidItem = GUID_NULL;
    param.nFolderId = -1;
}
