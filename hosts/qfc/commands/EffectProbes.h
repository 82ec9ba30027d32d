#pragma once

#include "hosts/qfc/effects/ProbeReport.h"

#include <atomic>
#include <deque>
#include <future>
#include <optional>
#include <string>
#include <vector>

namespace qfc::host {

// Probes many files, two at a time, and hands the reports out in the order of the files. One thread uses it.
class EffectProbes {
public:
    // Once the flag is up, probes that are under way end soon; it outlives this object.
    EffectProbes(std::vector<std::string> paths, const std::atomic<bool>& stop);

    // Waits for the next file's report. Nothing once all were handed out. What kept a file from being
    // probed stands in a report of an unknown outcome.
    std::optional<ProbeReport> Next();

private:
    void Begin();

    const std::vector<std::string> m_paths;
    const std::atomic<bool>& m_stop;
    std::size_t m_begun = 0;
    std::deque<std::future<ProbeReport>> m_running;  // Ending it waits for them.
};

}  // namespace qfc::host
