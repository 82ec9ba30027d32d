#include "service/OperationQueues.h"

#include "service/LibraryOperation.h"

#include <utility>

namespace qfc {

namespace {

constexpr int kPassesPerRefill = 3;
constexpr int kOrdinaryPerPass = 4;
constexpr int kDeferredPerPass = 1;

using Operations = std::list<OperationQueues::Operation>;

OperationQueues::Operation TakeFront(Operations& operations) {
    OperationQueues::Operation operation = std::move(operations.front());
    operations.pop_front();
    return operation;
}

void MoveFront(Operations& from, Operations& to, int atMost) {
    for (int moved = 0; moved < atMost && !from.empty(); ++moved) to.splice(to.end(), from, from.begin());
}

void Drop(Operations& operations) noexcept {
    for (const OperationQueues::Operation& operation : operations) {
        if (operation != nullptr) operation->NoteDropped();
    }
    operations.clear();
}

}  // namespace

void OperationQueues::PushSync(Operation operation) { m_sync.push_back(std::move(operation)); }

void OperationQueues::PushAsync(Operation operation, bool bDeferred) {
    (bDeferred ? m_deferred : m_async).push_back(std::move(operation));
}

OperationQueues::Operation OperationQueues::Take() {
    if (!m_sync.empty()) return TakeSync();
    if (m_dispatch.empty()) Refill();
    return m_dispatch.empty() ? nullptr : TakeFront(m_dispatch);
}

OperationQueues::Operation OperationQueues::TakeSync() {
    if (m_nSyncBeforeEnd != kNoEnd && m_nSyncBeforeEnd != 0) --m_nSyncBeforeEnd;
    return TakeFront(m_sync);
}

void OperationQueues::Refill() {
    for (int pass = 0; pass < kPassesPerRefill; ++pass) {
        MoveFront(m_async, m_dispatch, kOrdinaryPerPass);
        MoveFront(m_deferred, m_dispatch, kDeferredPerPass);
    }
}

void OperationQueues::DropAsync() noexcept {
    for (Operations* const pOperations : {&m_dispatch, &m_deferred, &m_async}) Drop(*pOperations);
    m_nSyncBeforeEnd = kNoEnd;
}

void OperationQueues::Clear() {
    DropAsync();
    Drop(m_sync);
}

}  // namespace qfc
