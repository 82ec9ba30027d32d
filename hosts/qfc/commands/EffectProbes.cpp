#include "hosts/qfc/commands/EffectProbes.h"

#include <utility>

namespace qfc::host {
namespace {

constexpr std::size_t kAtATime = 2;

}  // namespace

EffectProbes::EffectProbes(std::vector<std::string> paths, const std::atomic<bool>& stop)
    : m_paths(std::move(paths)), m_stop(stop) {
    while (m_begun < m_paths.size() && m_running.size() < kAtATime) Begin();
}

void EffectProbes::Begin() {
    const std::string& path = m_paths[m_begun++];
    m_running.push_back(std::async(std::launch::async, [this, &path] {
        ProbeSettings settings;
        settings.stop = &m_stop;
        return ProbeFile(path, settings);
    }));
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
