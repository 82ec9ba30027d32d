#include "platform/os/Thread.h"

#include "platform/os/KernelObject.h"
#include "platform/os/Sync.h"

#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

namespace qfc {

struct WorkerThread::State {
    enum class Gate { Closed, Open, Cancelled };

    State() = default;
    ~State() {
        if (handle != nullptr) CloseHandle(handle);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    // The outcome of the gate: true to run the procedure.
    bool AwaitGate() {
        std::unique_lock lock(mutex);
        gateChanged.wait(lock, [this] { return gate != Gate::Closed; });
        return gate == Gate::Open;
    }

    // What the gate was before; an open or cancelled gate stays as it is.
    Gate MoveGate(Gate to) {
        const std::lock_guard lock(mutex);
        const Gate before = gate;
        if (gate == Gate::Closed) gate = to;
        gateChanged.notify_all();
        return before;
    }

    std::mutex mutex;
    std::condition_variable gateChanged;
    Gate gate = Gate::Closed;  // guarded by mutex
    std::shared_ptr<ThreadObject> ended = std::make_shared<ThreadObject>();
    HANDLE handle = nullptr;
    std::thread thread;
};

// Everything that can fail for want of memory comes before the thread: once it is started nothing may fail any more.
WorkerThread::WorkerThread(Procedure procedure, void* argument) {
    if (procedure == nullptr) return;
    try {
        auto state = std::make_unique<State>();
        state->handle = OpenHandle(state->ended);
        state->thread = std::thread([procedure, argument, state = state.get()] {
            if (state->AwaitGate()) procedure(argument);
            AbandonOwnedMutexes();
            state->ended->Set();
        });
        m_state = std::move(state);
    } catch (const std::system_error&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
}

WorkerThread::~WorkerThread() {
    if (m_state == nullptr) return;
    m_state->MoveGate(State::Gate::Cancelled);
    m_state->thread.join();
}

bool WorkerThread::IsCreated() const { return m_state != nullptr; }

DWORD WorkerThread::Resume() {
    if (m_state == nullptr) return 0xFFFFFFFF;
    return m_state->MoveGate(State::Gate::Open) == State::Gate::Closed ? 1 : 0;
}

HANDLE WorkerThread::Handle() const { return m_state != nullptr ? m_state->handle : nullptr; }

}  // namespace qfc
