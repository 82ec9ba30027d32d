#pragma once

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
    // Drops everything: chosen, deferred, ordinary, synchronous. Nothing of it is executed or signalled, each
    // is marked as dropped.
    void Clear();
    // Takes all synchronous operations out, in order of arrival.
    std::list<Operation> TakeAllSync();

private:
    void Refill();

    // They die in the opposite order.
    std::list<Operation> m_sync;
    std::list<Operation> m_dispatch;  // Asynchronous operations already chosen.
    std::list<Operation> m_async;
    std::list<Operation> m_deferred;
};

}  // namespace qfc
