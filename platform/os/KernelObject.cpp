#include "platform/os/KernelObject.h"

#include "platform/os/Sync.h"

#include <chrono>
#include <utility>

namespace qfc {

// The mutexes that the calling thread owns. The head is a plain pointer because mutexes may still be taken, on the main
// thread, after the thread's own objects are gone; those are then no longer followed.
class OwnedMutexes {
public:
    static void Add(MutexObject& mutex) {
        thread_local const AtThreadEnd abandon;
        static_cast<void>(abandon);
        if (threadEnds) return;
        mutex.m_self = mutex.shared_from_this();
        mutex.m_nextOwned = std::exchange(head, &mutex);
    }

    static void Remove(MutexObject& mutex) {
        for (MutexObject** link = &head; *link != nullptr; link = &(*link)->m_nextOwned) {
            if (*link != &mutex) continue;
            *link = mutex.m_nextOwned;
            mutex.m_self.reset();
            return;
        }
    }

    static void AbandonAll() {
        while (head != nullptr) {
            const std::shared_ptr<MutexObject> mutex = std::move(head->m_self);
            head = mutex->m_nextOwned;
            mutex->Abandon();
        }
    }

private:
    struct AtThreadEnd {
        ~AtThreadEnd() {
            AbandonAll();
            threadEnds = true;
        }
    };

    static thread_local MutexObject* head;
    static thread_local bool threadEnds;
};

thread_local MutexObject* OwnedMutexes::head = nullptr;
thread_local bool OwnedMutexes::threadEnds = false;

void AbandonOwnedMutexes() { OwnedMutexes::AbandonAll(); }

template <class Ready>
bool KernelObject::WaitFor(std::unique_lock<std::mutex>& lock, DWORD milliseconds, Ready ready) {
    if (milliseconds == INFINITE) {
        m_changed.wait(lock, ready);
        return true;
    }
    return m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds), ready);
}

DWORD MutexObject::Wait(DWORD milliseconds) {
    const std::thread::id self = std::this_thread::get_id();
    std::unique_lock lock(m_mutex);
    if (m_owner == self) {
        ++m_depth;
        return WAIT_OBJECT_0;
    }
    if (!WaitFor(lock, milliseconds, [this] { return m_owner == std::thread::id(); })) return WAIT_TIMEOUT;
    m_owner = self;
    m_depth = 1;
    OwnedMutexes::Add(*this);
    return std::exchange(m_abandoned, false) ? WAIT_ABANDONED : WAIT_OBJECT_0;
}

bool MutexObject::Release() {
    const std::lock_guard lock(m_mutex);
    if (m_owner != std::this_thread::get_id()) return false;
    if (--m_depth != 0) return true;
    OwnedMutexes::Remove(*this);
    m_owner = std::thread::id();
    m_changed.notify_one();
    return true;
}

void MutexObject::Abandon() {
    const std::lock_guard lock(m_mutex);
    m_owner = std::thread::id();
    m_depth = 0;
    m_abandoned = true;
    m_changed.notify_one();
}

DWORD SignalObject::Wait(DWORD milliseconds) {
    std::unique_lock lock(m_mutex);
    if (!WaitFor(lock, milliseconds, [this] { return m_signalled; })) return WAIT_TIMEOUT;
    if (!m_stays) m_signalled = false;
    return WAIT_OBJECT_0;
}

void SignalObject::Set() {
    const std::lock_guard lock(m_mutex);
    m_signalled = true;
    m_changed.notify_all();
}

void SignalObject::Reset() {
    const std::lock_guard lock(m_mutex);
    m_signalled = false;
}

}  // namespace qfc
