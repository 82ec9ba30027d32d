#pragma once

#include <condition_variable>
#include <mutex>

namespace qfc {

// Lets threads use the service database while it is open, and closes it to newcomers before waiting for those inside,
// so that a stop ends however many keep coming. Any thread; nothing is locked while somebody is inside.
class DatabaseGate {
public:
    // False while closed; otherwise Leave follows.
    bool Enter();
    void Leave();

    void Open();
    // From the call on nobody enters; returns when everybody has left.
    void Close();

private:
    std::mutex m_guard;
    std::condition_variable m_left;
    int m_nInside = 0;
    bool m_bOpen = false;
};

}  // namespace qfc
