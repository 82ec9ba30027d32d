#pragma once

#include <string>

class DBTools;

namespace qfc::host {

// A connection of its own to a library file, to read what is stored there whatever the objects in memory hold. Ended by
// the destructor; galleries loaded through it are closed before. Main thread, while a Session runs.
class ReadSession {
public:
    explicit ReadSession(const std::string& file);
    ~ReadSession();
    ReadSession(const ReadSession&) = delete;
    ReadSession& operator=(const ReadSession&) = delete;

    bool IsOpen() const { return m_session != 0; }
    // Only of an open one.
    DBTools& Tools() const;

private:
    unsigned long long m_session;
};

}  // namespace qfc::host
