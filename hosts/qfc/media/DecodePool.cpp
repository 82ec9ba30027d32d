#include "hosts/qfc/media/DecodePool.h"

#include <algorithm>
#include <exception>
#include <system_error>

namespace qfc::host {

DecodePool::DecodePool(std::vector<std::string> paths, const std::atomic<bool>& cancelled, Settings settings)
    : m_paths(std::move(paths)), m_cancelled(cancelled), m_settings(std::move(settings)) {
    if (m_settings.threads == 0) m_settings.threads = std::max(1u, std::thread::hardware_concurrency());
    if (m_settings.window == 0) m_settings.window = std::size_t{m_settings.threads} * 4;
    try {
        for (unsigned i = 0; i < m_settings.threads; ++i) {
            m_threads.emplace_back([this] { Work(); });
        }
    } catch (const std::system_error&) {
        // Fewer threads than wished for do the work as well, only slower.
        if (m_threads.empty()) throw;
    }
}

DecodePool::~DecodePool() {
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads) thread.join();
}

// Waits until the window has room; nothing when no file is left to begin.
std::optional<std::size_t> DecodePool::Begin() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] {
        return m_stop || m_cancelled || m_begun == m_paths.size() || m_begun - m_taken < m_settings.window;
    });
    if (m_stop || m_cancelled || m_begun == m_paths.size()) return std::nullopt;
    return m_begun++;
}

DecodedMedia DecodePool::Decode(const std::string& path) const {
    try {
        return m_settings.decode(path, TimeLimit(m_settings.timePerFile, &m_cancelled, &m_stop));
    } catch (const std::exception& error) {
        DecodedMedia broken;
        broken.path = path;
        broken.error = error.what();
        return broken;
    }
}

void DecodePool::Work() {
    while (const std::optional<std::size_t> number = Begin()) {
        DecodedMedia media = Decode(m_paths[*number]);
        {
            const std::lock_guard lock(m_mutex);
            m_done.emplace(*number, std::move(media));
        }
        m_changed.notify_all();
    }
    {
        const std::lock_guard lock(m_mutex);
        ++m_ended;
    }
    m_changed.notify_all();
}

std::optional<DecodedMedia> DecodePool::Next() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] {
        return m_cancelled || m_taken == m_paths.size() || m_done.contains(m_taken) || m_ended == m_threads.size();
    });
    if (m_cancelled) return std::nullopt;
    auto result = m_done.extract(m_taken);
    if (result.empty()) return std::nullopt;
    ++m_taken;
    lock.unlock();
    m_changed.notify_all();
    return std::move(result.mapped());
}

}  // namespace qfc::host
