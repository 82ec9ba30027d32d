#include "hosts/qfc/library/ReadSession.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/Text.h"

#include <cstdint>

namespace qfc::host {

ReadSession::ReadSession(const std::string& file)
    : m_session(QFCLibraryManager::StartDbSession4ImportLib(ToCString(file))) {}

ReadSession::~ReadSession() {
    if (IsOpen()) QFCLibraryManager::EndDbSession4ImportLib(m_session);
}

// The library's handle of a session is the address of its tools.
DBTools& ReadSession::Tools() const { return *reinterpret_cast<DBTools*>(static_cast<std::uintptr_t>(m_session)); }

}  // namespace qfc::host
