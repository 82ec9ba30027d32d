#pragma once

#include "items/CQItem.h"
#include "platform/framework/Types.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace qfc::bench {

// Bytes that compress about as well as a small real thumbnail: gradients with noise on them.
std::vector<unsigned char> MakePayload(std::size_t size);

// The started service on a data folder of its own. One per process; used from the main thread, the counter excepted.
class BenchLibrary {
public:
    static BenchLibrary& Get();
    ~BenchLibrary();

    // The folder all files of this run live in, with a closing slash.
    const std::string& Folder() const { return m_folder; }
    ULONGLONG Gallery() const { return m_gallery; }
    // A fresh empty folder below the gallery, as a path.
    CString NewFolder();
    // How many asynchronous adds have called back.
    long Finished() const { return m_finished; }

private:
    BenchLibrary();

    std::string m_folder;
    ULONGLONG m_gallery = 0;
    int m_folders = 0;
    std::atomic<long> m_finished = 0;
};

// An item with the payload as its black box; the gallery owns it once it is added.
std::unique_ptr<CQItem> MakeItem(const std::vector<unsigned char>& payload);

}  // namespace qfc::bench
