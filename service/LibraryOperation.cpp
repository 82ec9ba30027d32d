#include "service/LibraryOperation.h"

#include "platform/os/Sync.h"

LibraryOperation::LibraryOperation() : m_hEvent(CreateEventA(nullptr, 1, 0, nullptr)) {}

LibraryOperation::~LibraryOperation() {
    if (m_hEvent != nullptr) CloseHandle(m_hEvent);
}

void LibraryOperation::FillCallbackParam(QFCLibCallbackParam& param) {
    param.hGallery = m_hGallery;
    param.guidItem = GUID_NULL;
    param.nFolderId = -1;
}
