#pragma once

#include "platform/framework/Guid.h"

#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

class CQFolder;
class CQGallery;
class CQItem;
struct QFCLibCallbackParam;

namespace qfc::host {

// Adds items to folders of one gallery on the library's worker, at most 64 of them on the way at a time. The worker's
// callback looks whether the folder really holds the item, and then lets go of its payloads: what is stored need not
// stay in memory. Whether the database places it there too is looked at by the folder, before anything is told. Until
// Settle has returned nobody but the worker may read or change the tree.
//
// An add that fails raises no callback. But adds are executed in the order they are queued, so a callback also tells
// that everything queued before it has had its turn; a marker that no folder takes is queued behind the last one.
// Main thread, except for the callback.
class AddQueue {
public:
    struct Outcome {
        std::optional<bool> stored = false;  // Nothing when the library does not tell.
        std::string file;
        std::string name;
        std::string folder;  // Path, as shown.
        GUID guid{};
        int folderRow = -1;
    };

    // The path of the folder, as the library knows it and as it is shown.
    struct Target {
        std::string stored;
        std::string shown;
    };

    explicit AddQueue(CQGallery& gallery);
    // Settles first.
    ~AddQueue();
    AddQueue(const AddQueue&) = delete;
    AddQueue& operator=(const AddQueue&) = delete;

    // Waits while 64 are on the way.
    void Add(std::unique_ptr<CQItem> item, CQFolder& folder, const Target& target);
    // Returns when every add has had its turn.
    void Settle();
    // What has become known, in the order of the adds. Looking into a folder reads all of it, so outcomes are held back
    // until they are worth it; once all has settled everything is told.
    std::vector<Outcome> TakeOutcomes();
    // After Settle: puts what was added behind what was there, in the database, too. Gives the folders whose stored
    // order is another one afterwards.
    std::vector<CQFolder*> MendOrders();

private:
    struct Pending {
        std::uint64_t number = 0;
        std::unique_ptr<CQItem> item;  // Ours until the folder holds it.
        CQFolder* folder = nullptr;    // Null for a marker.
        Outcome outcome;
    };
    using Lock = std::unique_lock<std::mutex>;

    int OnCallback(const QFCLibCallbackParam& param);
    // False when the library does not take it.
    bool Queue(Pending pending, const std::string& folderPath);
    void QueueMarker();
    void Conclude(std::uint64_t upTo);
    void ConcludeFront();
    void WaitUntilFewer(Lock& lock, std::size_t count);
    void LookAtPlacements(std::vector<Outcome>& outcomes);

    // Set once in the constructor.
    CQGallery& m_gallery;
    std::string m_callbackName;

    // Main thread only.
    std::uint64_t m_nextNumber = 0;
    bool m_isSettled = false;
    std::vector<Outcome> m_held;   // Not looked at in the database yet.
    std::size_t m_rowsRead = 0;    // By the last look.
    std::set<CQFolder*> m_filled;  // Their stored order was not looked at yet.

    // Guarded by m_mutex, which is never held while the library is called to queue or register.
    std::mutex m_mutex;
    std::condition_variable m_concluded;
    std::list<Pending> m_pending;  // In the order queued.
    std::vector<Outcome> m_outcomes;
    std::vector<std::unique_ptr<CQItem>> m_refused;  // Items that no folder took.
};

}  // namespace qfc::host
