#pragma once

#include <cstddef>
#include <limits>
#include <list>
#include <memory>

class LibraryOperation;

namespace qfc {

// The service's four lists of operations and the rule by which the worker takes from them. Knows no thread and no lock:
// its owner holds the service mutex around every call.
class OperationQueues {
public:
    using Operation = std::shared_ptr<LibraryOperation>;

    void PushSync(Operation operation);
    // Deferred operations are served at one fifth of the rate of the others while both are waiting.
    void PushAsync(Operation operation, bool bDeferred);

    // Synchronous operations first, in order of arrival; then asynchronous ones, chosen in batches of at most 15: four
    // ordinary and one deferred, three times. Empty when nothing is queued.
    Operation Take();

    // Ordinary asynchronous operations that are not chosen yet.
    std::size_t CountAsync() const { return m_async.size(); }
    bool IsSyncEmpty() const { return m_sync.empty(); }
    std::size_t CountSync() const { return m_sync.size(); }
    // What is synchronous and queued by now is the last to be run; without a mark all is.
    void MarkEndOfSync() { m_nSyncBeforeEnd = m_sync.size(); }
    // Whether no synchronous operation before the mark is left.
    bool IsSyncDone() const { return m_sync.empty() || m_nSyncBeforeEnd == 0; }
    // Drops everything: chosen, deferred, ordinary, synchronous. Nothing of it is executed or signalled, each
    // is marked as dropped.
    void Clear();
    // Drops everything but the synchronous operations, and the mark. Needs no memory.
    void DropAsync() noexcept;

private:
    static constexpr std::size_t kNoEnd = std::numeric_limits<std::size_t>::max();

    void Refill();
    Operation TakeSync();

    // They die in the opposite order.
    std::list<Operation> m_sync;
    std::size_t m_nSyncBeforeEnd = kNoEnd;  // Of m_sync, from the front.
    std::list<Operation> m_dispatch;        // Asynchronous operations already chosen.
    std::list<Operation> m_async;
    std::list<Operation> m_deferred;
};

}  // namespace qfc
