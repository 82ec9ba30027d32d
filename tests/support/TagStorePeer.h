#pragma once

#include "tags/CLibTagsMgr.h"

#include <memory>
#include <mutex>

namespace qfc {

// The private side of the tag store.
class TagStorePeer {
public:
    // A store beside the one of the process.
    static std::shared_ptr<CLibTagsMgr> NewStore() {
        return {new CLibTagsMgr, [](CLibTagsMgr* store) { delete store; }};
    }
    // Holds the mutex of the updates.
    static std::unique_lock<std::mutex> Lock(CLibTagsMgr& store) { return std::unique_lock(store.m_mutex); }
    static std::unique_lock<std::mutex> TryLock(CLibTagsMgr& store) {
        return std::unique_lock(store.m_mutex, std::try_to_lock);
    }
    // As if the files had never been read.
    static void ForgetFiles(CLibTagsMgr& store) {
        store.m_presets.clear();
        store.m_categoryTemplate.clear();
    }
};

}  // namespace qfc
