#pragma once

#include <atomic>
#include <chrono>

namespace qfc::host {

// How long work on one file may take, and the flags that end it early. Read by FFmpeg's interrupt callbacks and between
// packets. The flags, if any, outlive the object. A value; any thread may ask it.
class TimeLimit {
public:
    using Clock = std::chrono::steady_clock;
    using Flag = std::atomic<bool>;

    explicit TimeLimit(Clock::duration budget, const Flag* cancelled = nullptr, const Flag* stopped = nullptr)
        : m_end(Clock::now() + budget), m_cancelled(cancelled), m_stopped(stopped) {}

    // A limit for a part of the work: at most `budget` from now, and never past this limit's end.
    TimeLimit Part(Clock::duration budget) const {
        TimeLimit part(budget, m_cancelled, m_stopped);
        if (m_end < part.m_end) part.m_end = m_end;
        return part;
    }

    bool IsCancelled() const { return IsUp(m_cancelled) || IsUp(m_stopped); }
    bool IsOver() const { return IsCancelled() || Clock::now() >= m_end; }

private:
    static bool IsUp(const Flag* flag) { return flag && flag->load(std::memory_order_relaxed); }

    Clock::time_point m_end;
    const Flag* m_cancelled;
    const Flag* m_stopped;
};

}  // namespace qfc::host
