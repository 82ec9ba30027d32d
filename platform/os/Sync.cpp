#include "platform/os/Sync.h"

#include "platform/os/KernelObject.h"

#include <chrono>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <thread>
#include <unordered_map>

namespace qfc {
namespace {

// The handles that are open. Looking a handle up here, instead of following the pointer, makes a closed one harmless.
struct HandleTable {
    std::shared_mutex mutex;
    std::unordered_map<HANDLE, std::shared_ptr<KernelObject>> objects;
};

// Never destroyed: handles are closed by destructors of static objects too.
HandleTable& TheHandles() {
    static auto* const table = new HandleTable;
    return *table;
}

bool Forget(HANDLE handle) {
    std::shared_ptr<KernelObject> object;  // dies outside the lock
    HandleTable& table = TheHandles();
    const std::lock_guard lock(table.mutex);
    const auto found = table.objects.find(handle);
    if (found == table.objects.end()) return false;
    object = std::move(found->second);
    table.objects.erase(found);
    return true;
}

template <class Object>
std::shared_ptr<Object> ObjectOfKind(HANDLE handle) {
    auto object = std::dynamic_pointer_cast<Object>(ObjectOf(handle));
    if (object == nullptr) SetLastError(ERROR_INVALID_HANDLE);
    return object;
}

template <class Make>
HANDLE NewHandle(const char* name, Make make) {
    if (name != nullptr) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    try {
        return OpenHandle(make());
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
}

}  // namespace

HANDLE OpenHandle(std::shared_ptr<KernelObject> object) {
    const HANDLE handle = object.get();
    HandleTable& table = TheHandles();
    const std::lock_guard lock(table.mutex);
    table.objects.emplace(handle, std::move(object));
    return handle;
}

std::shared_ptr<KernelObject> ObjectOf(HANDLE handle) {
    HandleTable& table = TheHandles();
    const std::shared_lock lock(table.mutex);
    const auto found = table.objects.find(handle);
    return found != table.objects.end() ? found->second : nullptr;
}

}  // namespace qfc

HANDLE CreateMutexA(void* /*security*/, int initialOwner, const char* name) {
    return qfc::NewHandle(name, [initialOwner] {
        auto mutex = std::make_shared<qfc::MutexObject>();
        if (initialOwner != 0) mutex->Wait(INFINITE);
        return mutex;
    });
}

HANDLE CreateEventA(void* /*security*/, int manualReset, int initialState, const char* name) {
    return qfc::NewHandle(name, [manualReset, initialState] {
        return std::make_shared<qfc::EventObject>(manualReset != 0, initialState != 0);
    });
}

int SetEvent(HANDLE event) {
    const auto object = qfc::ObjectOfKind<qfc::EventObject>(event);
    if (object == nullptr) return 0;
    object->Set();
    return 1;
}

int ResetEvent(HANDLE event) {
    const auto object = qfc::ObjectOfKind<qfc::EventObject>(event);
    if (object == nullptr) return 0;
    object->Reset();
    return 1;
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
    const auto waited = qfc::ObjectOfKind<qfc::KernelObject>(object);
    return waited != nullptr ? waited->Wait(milliseconds) : WAIT_FAILED;
}

int ReleaseMutex(HANDLE mutex) {
    const auto object = qfc::ObjectOfKind<qfc::MutexObject>(mutex);
    if (object == nullptr) return 0;
    if (object->Release()) return 1;
    SetLastError(ERROR_NOT_OWNER);
    return 0;
}

int CloseHandle(HANDLE object) {
    if (qfc::Forget(object)) return 1;
    SetLastError(ERROR_INVALID_HANDLE);
    return 0;
}

void Sleep(DWORD milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }
