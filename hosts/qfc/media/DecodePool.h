#pragma once

#include "hosts/qfc/media/DecodedMedia.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace qfc::host {

// Decodes many files on several threads and hands the results out in the order of the files. At most `window` files
// are decoded or waiting to be taken, so memory stays bounded however many files there are. Next belongs to one thread;
// the rest is internal. The destructor ends work that is under way and waits for its threads.
class DecodePool {
public:
    using DecodeFunction = std::function<DecodedMedia(const std::string& path, TimeLimit limit)>;

    struct Settings {
        unsigned threads = 0;    // 0: as many as the machine has cores
        std::size_t window = 0;  // 0: four for each thread
        std::chrono::seconds timePerFile = kTimePerFile;
        DecodeFunction decode = DecodeMedia;
    };

    // Nothing new is begun once the flag is up, and what is under way ends soon. The flag outlives the pool.
    DecodePool(std::vector<std::string> paths, const std::atomic<bool>& cancelled, Settings settings);
    ~DecodePool();
    DecodePool(const DecodePool&) = delete;
    DecodePool& operator=(const DecodePool&) = delete;

    // Waits for the next file's result. Nothing once all were handed out or the flag is up.
    std::optional<DecodedMedia> Next();

private:
    void Work();
    std::optional<std::size_t> Begin();
    DecodedMedia Decode(const std::string& path) const;

    // Set once in the constructor.
    const std::vector<std::string> m_paths;
    const std::atomic<bool>& m_cancelled;
    Settings m_settings;

    // Raised by the flag or the destructor; interrupts decoding.
    std::atomic<bool> m_stop{false};

    // Guarded by m_mutex.
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_begun = 0;
    std::size_t m_taken = 0;
    std::map<std::size_t, DecodedMedia> m_done;
    std::size_t m_ended = 0;  // threads

    std::vector<std::thread> m_threads;
};

}  // namespace qfc::host
