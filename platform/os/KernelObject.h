#pragma once

#include "platform/framework/Types.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace qfc {

// What a handle stands for. Objects live as long as their handle or a wait on them. All members may be called from any
// thread.
class KernelObject {
public:
    KernelObject() = default;
    virtual ~KernelObject() = default;
    KernelObject(const KernelObject&) = delete;
    KernelObject& operator=(const KernelObject&) = delete;

    // A WAIT_ result.
    virtual DWORD Wait(DWORD milliseconds) = 0;

protected:
    // Waits for `ready` under the lock; false when the time is over.
    template <class Ready>
    bool WaitFor(std::unique_lock<std::mutex>& lock, DWORD milliseconds, Ready ready);

    std::mutex m_mutex;
    std::condition_variable m_changed;
};

// Recursive for its owning thread, which alone may release it. Between threads that wait there is no order.
class MutexObject final : public KernelObject, public std::enable_shared_from_this<MutexObject> {
public:
    DWORD Wait(DWORD milliseconds) override;
    // False, and nothing changed, when the calling thread is not the owner.
    bool Release();

private:
    friend class OwnedMutexes;
    void Abandon();

    // Guarded by m_mutex.
    std::thread::id m_owner;
    unsigned m_depth = 0;
    bool m_abandoned = false;

    // Owning thread only: the chain of what it owns. The reference keeps an owned mutex alive without its handle.
    MutexObject* m_nextOwned = nullptr;
    std::shared_ptr<MutexObject> m_self;
};

// Signalled or not: the base of events and threads.
class SignalObject : public KernelObject {
public:
    SignalObject(bool staysSignalled, bool signalled) : m_stays(staysSignalled), m_signalled(signalled) {}
    DWORD Wait(DWORD milliseconds) override;
    void Set();
    void Reset();

private:
    const bool m_stays;
    bool m_signalled;  // guarded by m_mutex
};

class EventObject final : public SignalObject {
public:
    using SignalObject::SignalObject;
};

// Signalled once the thread's procedure has returned.
class ThreadObject final : public SignalObject {
public:
    ThreadObject() : SignalObject(true, false) {}
};

// Makes a handle, which CloseHandle ends.
HANDLE OpenHandle(std::shared_ptr<KernelObject> object);
// Null when the handle is null or closed.
std::shared_ptr<KernelObject> ObjectOf(HANDLE handle);

// Gives up what the calling thread still owns. A thread that ends does it by itself; called earlier where the end of
// the thread is about to be signalled.
void AbandonOwnedMutexes();

}  // namespace qfc
