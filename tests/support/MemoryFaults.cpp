#include "tests/support/MemoryFaults.h"

#include <cstdlib>
#include <new>
#include <sqlite3.h>

namespace {

struct Faults {
    int failAt = 0;  // 0: none, and nothing is counted.
    int calls = 0;
    bool sticky = false;
    bool hasFailed = false;
};

thread_local Faults t_faults;

bool MustFail() {
    Faults& faults = t_faults;
    if (faults.failAt == 0) return false;
    ++faults.calls;
    const bool fails = faults.calls == faults.failAt || (faults.sticky && faults.calls > faults.failAt);
    faults.hasFailed = faults.hasFailed || fails;
    return fails;
}

void* Allocate(std::size_t size) { return MustFail() ? nullptr : std::malloc(size != 0 ? size : 1); }

void* AllocateOrThrow(std::size_t size) {
    void* memory = Allocate(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

sqlite3_mem_methods g_sqlite;

// Before anything uses SQLite: afterwards it takes no configuration any more.
const bool g_isInstalled = [] {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &g_sqlite);
    static sqlite3_mem_methods failing = g_sqlite;
    failing.xMalloc = [](int size) { return MustFail() ? nullptr : g_sqlite.xMalloc(size); };
    failing.xRealloc = [](void* memory, int size) { return MustFail() ? nullptr : g_sqlite.xRealloc(memory, size); };
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &failing) == SQLITE_OK &&
           sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0) == SQLITE_OK;
}();

}  // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace qfc::test {

MemoryFaults::MemoryFaults(int n, bool sticky) {
    if (!g_isInstalled) std::abort();
    t_faults = {n, 0, sticky, false};
}

MemoryFaults::~MemoryFaults() { t_faults = {}; }

bool MemoryFaults::HasFailed() const { return t_faults.hasFailed; }

}  // namespace qfc::test
