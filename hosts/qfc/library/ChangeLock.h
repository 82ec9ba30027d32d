#pragma once

namespace qfc::host {

// Keeps every other qfc from changing the library while it lives: two imports side by side would both find a file
// missing and both add it. The lock is a file beside the library that is never removed, since a name that another
// process waits at must stay the same file; the system lets go of it when a process ends, however it ends. Looking
// takes no lock. Main thread, made before the Session.
class ChangeLock {
public:
    // Throws Failure when another qfc is changing the library. Where the file cannot be made, nothing in that folder
    // can be changed either, and the change itself will say so.
    ChangeLock();
    ~ChangeLock();
    ChangeLock(const ChangeLock&) = delete;
    ChangeLock& operator=(const ChangeLock&) = delete;

private:
    int m_file = -1;
};

}  // namespace qfc::host
