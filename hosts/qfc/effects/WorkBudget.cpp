#include "hosts/qfc/effects/WorkBudget.h"

#include <algorithm>
#include <ctime>

namespace qfc::host {

double WorkBudget::Spent() const {
    using Seconds = std::chrono::duration<double>;
    constexpr double kLastOfRealTime = 0.85;
    const Seconds limit = m_limit, real = std::chrono::steady_clock::now() - m_begin;
    if (real >= kLastOfRealTime * limit) return 1;
    timespec processor{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &processor);
    const Seconds worked = std::chrono::seconds(processor.tv_sec) + std::chrono::nanoseconds(processor.tv_nsec);
    return std::min(1.0, worked / limit);
}

}  // namespace qfc::host
