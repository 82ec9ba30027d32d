#include "hosts/qfc/effects/WorkBudget.h"

#include <algorithm>
#include <ctime>
#include <utility>

namespace qfc::host {

namespace {

using Seconds = std::chrono::duration<double>;

constexpr double kUntilRealTimeCounts = 0.85;

Seconds PartOf(Seconds begin, Seconds end, std::size_t pieces) {
    return std::max(end - begin, Seconds::zero()) / static_cast<double>(std::max<std::size_t>(pieces, 1));
}

}  // namespace

WorkBudget::WorkBudget(std::chrono::milliseconds limit, ReadClocks read) : m_read(std::move(read)) {
    m_begin = {Seconds::zero(), m_read().real};
    m_end = {limit, m_begin.real + kUntilRealTimeCounts * Seconds(limit)};
}

WorkBudget::WorkBudget(ReadClocks read, Clocks begin, Clocks end)
    : m_read(std::move(read)), m_begin(begin), m_end(end) {}

WorkBudget WorkBudget::Part(std::size_t pieces) const {
    const Clocks now = m_read();
    return {m_read,
            now,
            {now.processor + PartOf(now.processor, m_end.processor, pieces),
             now.real + PartOf(now.real, m_end.real, pieces)}};
}

double WorkBudget::Spent() const {
    const Clocks now = m_read();
    if (now.real >= m_end.real || now.processor >= m_end.processor) return 1;
    return (now.processor - m_begin.processor) / (m_end.processor - m_begin.processor);
}

WorkBudget::Clocks WorkBudget::ClocksOfProcess() {
    timespec processor{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &processor);
    return {std::chrono::seconds(processor.tv_sec) + std::chrono::nanoseconds(processor.tv_nsec),
            std::chrono::steady_clock::now().time_since_epoch()};
}

}  // namespace qfc::host
