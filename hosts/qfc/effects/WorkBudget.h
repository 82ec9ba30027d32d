#pragma once

#include <chrono>
#include <cstddef>
#include <functional>

namespace qfc::host {

// How much of its time this process has used, as processor time of all threads: that hardly depends on what else runs
// on the machine. Only shortly before the real time ends, too, does that count: then all of it is used. Measuring ends
// early when it runs short, so that slow effects still give an answer. One thread.
class WorkBudget {
public:
    struct Clocks {
        std::chrono::duration<double> processor, real;
    };
    using ReadClocks = std::function<Clocks()>;

    // Processor time counts from the start of the process, real time from now.
    explicit WorkBudget(std::chrono::milliseconds limit, ReadClocks read = ClocksOfProcess);

    // For one of `pieces` pieces of work that are still to be done: an equal part of what is left now, of both times.
    // What one piece leaves, those behind it get.
    WorkBudget Part(std::size_t pieces) const;

    // From 0, to 1 when it is used up.
    double Spent() const;
    bool IsSpent(double share) const { return Spent() >= share; }

private:
    WorkBudget(ReadClocks read, Clocks begin, Clocks end);
    static Clocks ClocksOfProcess();

    ReadClocks m_read;
    Clocks m_begin, m_end;
};

}  // namespace qfc::host
