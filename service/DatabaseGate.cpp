#include "service/DatabaseGate.h"

namespace qfc {

bool DatabaseGate::Enter() {
    const std::scoped_lock lock(m_guard);
    if (m_bOpen) ++m_nInside;
    return m_bOpen;
}

void DatabaseGate::Leave() {
    const std::scoped_lock lock(m_guard);
    if (--m_nInside == 0) m_left.notify_all();
}

void DatabaseGate::Open() {
    const std::scoped_lock lock(m_guard);
    m_bOpen = true;
}

void DatabaseGate::Close() {
    std::unique_lock lock(m_guard);
    m_bOpen = false;
    m_left.wait(lock, [this] { return m_nInside == 0; });
}

}  // namespace qfc
