#include "hosts/qfc/effects/WorkBudget.h"

#include <algorithm>
#include <ctime>

namespace qfc::host {

double WorkBudget::Spent() const {
    using Seconds = std::chrono::duration<double>;
    timespec processor{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &processor);
    const double real = Seconds(std::chrono::steady_clock::now() - m_begin).count();
    const double worked = static_cast<double>(processor.tv_sec) + static_cast<double>(processor.tv_nsec) / 1e9;
    return std::max(real, worked) / Seconds(m_limit).count();
}

}  // namespace qfc::host
