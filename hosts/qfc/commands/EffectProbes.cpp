#include "hosts/qfc/commands/EffectProbes.h"

#include <exception>
#include <system_error>
#include <utility>

namespace qfc::host {
namespace {

constexpr std::size_t kAtATime = 2;

// What is thrown is no plugin's fault.
ProbeReport Probed(const std::string& path, const std::atomic<bool>& stop) {
    try {
        ProbeSettings settings;
        settings.stop = &stop;
        return ProbeFile(path, settings);
    } catch (const std::exception& error) {
        ProbeReport report;
        report.outcome = ProbeReport::Outcome::Unknown;
        report.reason = error.what();
        return report;
    }
}

}  // namespace

EffectProbes::EffectProbes(std::vector<std::string> paths, const std::atomic<bool>& stop)
    : m_paths(std::move(paths)), m_stop(stop) {
    while (m_begun < m_paths.size() && m_running.size() < kAtATime) Begin();
}

void EffectProbes::Begin() {
    const std::string& path = m_paths[m_begun++];
    const auto probe = [this, &path] { return Probed(path, m_stop); };
    try {
        m_running.push_back(std::async(std::launch::async, probe));
    } catch (const std::system_error&) {
        // No thread is to be had: whoever waits for the report does the work.
        m_running.push_back(std::async(std::launch::deferred, probe));
    }
}

std::optional<ProbeReport> EffectProbes::Next() {
    if (m_running.empty()) return std::nullopt;
    std::future<ProbeReport> first = std::move(m_running.front());
    m_running.pop_front();
    ProbeReport report = first.get();
    if (m_begun < m_paths.size()) Begin();
    return report;
}

}  // namespace qfc::host
