#pragma once

#include <atomic>

namespace qfc::host {

// While one lives, the first Ctrl-C (request to terminate, closed terminal) raises a flag instead of ending the
// process, and says so on a terminal; a second one ends it as usual. One at a time, on the main thread; the flag may be
// read by any thread.
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    const std::atomic<bool>& Flag() const;
    bool IsRaised() const { return Flag().load(); }
};

}  // namespace qfc::host
