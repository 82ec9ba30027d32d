#pragma once

#include <chrono>

namespace qfc::host {

// How much of its time this process has used, as processor time of all threads: that hardly depends on what else runs
// on the machine. Only shortly before the real time ends, too, does that count: then all of it is used. Measuring ends
// early when it runs short, so that slow effects still give an answer. One thread.
class WorkBudget {
public:
    explicit WorkBudget(std::chrono::milliseconds limit) : m_limit(limit) {}

    // From 0, to 1 when the process is about to be ended.
    double Spent() const;
    bool IsSpent(double share) const { return Spent() >= share; }

private:
    std::chrono::milliseconds m_limit;
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};

}  // namespace qfc::host
