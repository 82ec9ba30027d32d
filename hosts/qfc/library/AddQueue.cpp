#include "hosts/qfc/library/AddQueue.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/ItemPayloads.h"
#include "hosts/qfc/library/Placement.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace qfc::host {
namespace {

constexpr std::size_t kMostOnTheWay = 64;
// A path without a component names no folder: the add succeeds, does nothing, and its callback comes.
constexpr const char* kNoFolder = "\\";
// The library waits a minute for another process that writes; only a longer silence asks for a new marker.
constexpr std::chrono::seconds kSilence{90};
// A look at the database is worth it when there is news of this part of what it reads; so all looks of an import
// together read no more than about this many times what it adds.
constexpr std::size_t kWorthLooking = 16;

}  // namespace

AddQueue::AddQueue(CQGallery& gallery) : m_gallery(gallery), m_callbackName("qfc.AddQueue") {
    QFCLibraryManager::fnRegister_QFCLibCallBack(ToCString(m_callbackName),
                                                 [this](QFCLibCallbackParam* param) { return OnCallback(*param); });
}

AddQueue::~AddQueue() {
    Settle();
    QFCLibraryManager::fnUnRegister_QFCLibCallBack(ToCString(m_callbackName));
}

void AddQueue::Add(std::unique_ptr<CQItem> item, CQFolder& folder, const Target& target) {
    Pending pending;
    pending.outcome = {false,        ToText(item->GetFileName()),        ToText(item->GetItemName()),
                       target.shown, std::as_const(*item).GetUniqueID(), folder.GetDBId()};
    pending.item = std::move(item);
    pending.folder = &folder;
    m_isSettled = false;
    m_filled.insert(&folder);
    {
        Lock lock(m_mutex);
        WaitUntilFewer(lock, kMostOnTheWay);
    }
    Queue(std::move(pending), target.stored);
}

void AddQueue::Settle() {
    m_isSettled = true;
    {
        Lock lock(m_mutex);
        if (m_pending.empty()) return;
    }
    QueueMarker();
    Lock lock(m_mutex);
    WaitUntilFewer(lock, 1);
}

std::vector<AddQueue::Outcome> AddQueue::TakeOutcomes() {
    {
        const Lock lock(m_mutex);
        m_held.insert(m_held.end(), m_outcomes.begin(), m_outcomes.end());
        m_outcomes.clear();
    }
    if (!m_isSettled && m_held.size() <= m_rowsRead / kWorthLooking) return {};
    LookAtPlacements(m_held);
    return std::exchange(m_held, {});
}

std::vector<CQFolder*> AddQueue::MendOrders() {
    std::vector<CQFolder*> folders;
    std::ranges::copy_if(std::exchange(m_filled, {}), std::back_inserter(folders),
                         [](CQFolder* folder) { return !MendItemOrder(*folder); });
    return folders;
}

void AddQueue::LookAtPlacements(std::vector<Outcome>& outcomes) {
    std::map<int, std::optional<std::set<GUID>>> folders;
    m_rowsRead = 0;
    for (Outcome& outcome : outcomes) {
        if (outcome.stored == false) continue;
        const auto [folder, isNew] = folders.try_emplace(outcome.folderRow);
        if (isNew) {
            folder->second = StoredItemSet(*m_gallery.GetDBTools(), outcome.folderRow);
            m_rowsRead += folder->second ? folder->second->size() : 0;
        }
        if (folder->second && !folder->second->contains(outcome.guid)) {
            outcome.stored = false;
        } else if (!folder->second || !outcome.stored) {
            outcome.stored = folder->second ? IsItemStored(*m_gallery.GetDBTools(), outcome.guid) : std::nullopt;
        }
    }
}

bool AddQueue::Queue(Pending pending, const std::string& folderPath) {
    CQItem* item = pending.item.get();
    const std::uint64_t number = pending.number = m_nextNumber++;
    {
        const Lock lock(m_mutex);
        m_pending.push_back(std::move(pending));
    }
    if (QFCLibraryManager::fnAddItemAsync(ToHandle(&m_gallery), {ToCString(folderPath)}, item, 0)) return true;
    const Lock lock(m_mutex);
    const auto refused = std::ranges::find(m_pending, number, &Pending::number);
    if (refused == m_pending.end()) return false;
    if (refused->folder != nullptr) m_outcomes.push_back(refused->outcome);
    m_pending.erase(refused);
    return false;
}

// A library that takes no marker executes nothing any more.
void AddQueue::QueueMarker() {
    Pending marker;
    marker.item = std::make_unique<CQItem>();
    marker.outcome.guid = std::as_const(*marker.item).GetUniqueID();
    if (Queue(std::move(marker), kNoFolder)) return;
    const Lock lock(m_mutex);
    Conclude(m_nextNumber);
}

int AddQueue::OnCallback(const QFCLibCallbackParam& param) {
    const Lock lock(m_mutex);
    const auto found =
        std::ranges::find_if(m_pending, [&](const Pending& pending) { return pending.outcome.guid == param.guidItem; });
    if (found != m_pending.end()) Conclude(found->number);
    return 1;
}

// On the worker, or with the service stopped; m_mutex held.
void AddQueue::Conclude(std::uint64_t upTo) {
    while (!m_pending.empty() && m_pending.front().number <= upTo) ConcludeFront();
    m_concluded.notify_all();
}

void AddQueue::ConcludeFront() {
    Pending& pending = m_pending.front();
    const bool isMarker = pending.folder == nullptr;
    const bool taken = !isMarker && StandsIn(*pending.folder, pending.outcome.guid);
    if (taken) {
        ReleasePayloads(*pending.item);
        static_cast<void>(pending.item.release());  // The gallery's now.
        pending.outcome.stored = HoldsItem(*pending.folder, pending.outcome.guid);
    } else {
        // The operation may still look at the item while its callbacks run, so it lives on a little.
        m_refused.push_back(std::move(pending.item));
    }
    if (!isMarker) m_outcomes.push_back(pending.outcome);
    m_pending.pop_front();
}

// A silence may be adds that failed, or a disk that stalls: the marker tells, however long that takes.
void AddQueue::WaitUntilFewer(Lock& lock, std::size_t count) {
    while (!m_concluded.wait_for(lock, kSilence, [&] { return m_pending.size() < count; })) {
        lock.unlock();
        QueueMarker();
        lock.lock();
    }
}

}  // namespace qfc::host
