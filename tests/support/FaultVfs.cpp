#include "tests/support/FaultVfs.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <sqlite3.h>
#include <stdexcept>
#include <sys/stat.h>

namespace qfc::test {

struct FaultVfs::State {
    sqlite3_vfs vfs{};
    sqlite3_vfs* real = nullptr;
    std::atomic<int> calls = 0;
    int failAt = 0;  // 0: none.
    bool sticky = false;
    bool everything = false;
    bool skipsWaits = false;
    bool afterTheAct = false;
    bool hasFailed = false;
    std::optional<std::int64_t> space;

    void Reset() {
        calls = 0;
        failAt = 0;
        sticky = hasFailed = everything = skipsWaits = afterTheAct = false;
        space.reset();
    }

    bool MustFail() {
        ++calls;
        const bool fails = failAt != 0 && (calls == failAt || (sticky && calls > failAt));
        hasFailed = hasFailed || fails;
        return fails;
    }

    // For calls that change nothing.
    bool MustFailToo() { return everything && MustFail(); }

    bool TakeSpace(std::int64_t bytes) {
        if (!space) return true;
        if (bytes > *space) {
            hasFailed = true;
            return false;
        }
        *space -= bytes;
        return true;
    }
};

namespace {

using State = FaultVfs::State;

struct FaultFile {
    sqlite3_file base;
    State* state;
    // The real file follows in memory.
    sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

State& StateOf(sqlite3_vfs* vfs) { return *static_cast<State*>(vfs->pAppData); }
FaultFile* Self(sqlite3_file* file) { return reinterpret_cast<FaultFile*>(file); }
sqlite3_file* Real(sqlite3_file* file) { return Self(file)->Real(); }

std::int64_t SizeOf(sqlite3_file* file) {
    sqlite3_int64 size = 0;
    Real(file)->pMethods->xFileSize(Real(file), &size);
    return size;
}

int Close(sqlite3_file* file) { return Real(file)->pMethods->xClose(Real(file)); }

int Read(sqlite3_file* file, void* buffer, int amount, sqlite3_int64 offset) {
    if (Self(file)->state->MustFailToo()) return SQLITE_IOERR_READ;
    return Real(file)->pMethods->xRead(Real(file), buffer, amount, offset);
}

int Write(sqlite3_file* file, const void* bytes, int amount, sqlite3_int64 offset) {
    State& state = *Self(file)->state;
    if (state.MustFail()) return SQLITE_IOERR_WRITE;
    const std::int64_t growth = std::max<std::int64_t>(0, offset + amount - SizeOf(file));
    if (!state.TakeSpace(growth)) return SQLITE_FULL;
    return Real(file)->pMethods->xWrite(Real(file), bytes, amount, offset);
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    State& state = *Self(file)->state;
    if (state.MustFail()) return SQLITE_IOERR_TRUNCATE;
    if (state.space) *state.space += std::max<std::int64_t>(0, SizeOf(file) - size);
    return Real(file)->pMethods->xTruncate(Real(file), size);
}

int Sync(sqlite3_file* file, int) { return Self(file)->state->MustFail() ? SQLITE_IOERR_FSYNC : SQLITE_OK; }

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
    if (Self(file)->state->MustFailToo()) return SQLITE_IOERR_FSTAT;
    return Real(file)->pMethods->xFileSize(Real(file), size);
}

int Lock(sqlite3_file* file, int level) {
    if (Self(file)->state->MustFailToo()) return SQLITE_IOERR_LOCK;
    return Real(file)->pMethods->xLock(Real(file), level);
}

int Unlock(sqlite3_file* file, int level) { return Real(file)->pMethods->xUnlock(Real(file), level); }

int CheckReservedLock(sqlite3_file* file, int* result) {
    if (Self(file)->state->MustFailToo()) return SQLITE_IOERR_CHECKRESERVEDLOCK;
    return Real(file)->pMethods->xCheckReservedLock(Real(file), result);
}

int FileControl(sqlite3_file* file, int operation, void* argument) {
    return Real(file)->pMethods->xFileControl(Real(file), operation, argument);
}

int SectorSize(sqlite3_file* file) { return Real(file)->pMethods->xSectorSize(Real(file)); }
int DeviceCharacteristics(sqlite3_file* file) { return Real(file)->pMethods->xDeviceCharacteristics(Real(file)); }

constexpr sqlite3_io_methods kMethods{
    1,
    Close,
    Read,
    Write,
    Truncate,
    Sync,
    FileSize,
    Lock,
    Unlock,
    CheckReservedLock,
    FileControl,
    SectorSize,
    DeviceCharacteristics,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

int Open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    State& state = StateOf(vfs);
    auto* self = new (file) FaultFile{{nullptr}, &state};
    if (state.MustFailToo()) return SQLITE_CANTOPEN;
    const int result = state.real->xOpen(state.real, name, self->Real(), flags, outFlags);
    if (self->Real()->pMethods != nullptr) self->base.pMethods = &kMethods;
    return result;
}

int Delete(sqlite3_vfs* vfs, const char* name, int) {
    State& state = StateOf(vfs);
    const bool fails = state.MustFail();
    if (fails && !state.afterTheAct) return SQLITE_IOERR_DELETE;
    // Without C++ file names: nothing here may take memory, which a test may have made scarce.
    struct stat status;
    if (state.space && stat(name, &status) == 0) *state.space += status.st_size;
    const int result = state.real->xDelete(state.real, name, 0);
    return fails ? SQLITE_IOERR_DIR_FSYNC : result;
}

int Access(sqlite3_vfs* vfs, const char* name, int flags, int* result) {
    if (StateOf(vfs).MustFailToo()) return SQLITE_IOERR_ACCESS;
    sqlite3_vfs* real = StateOf(vfs).real;
    return real->xAccess(real, name, flags, result);
}

int FullPathname(sqlite3_vfs* vfs, const char* name, int size, char* out) {
    sqlite3_vfs* real = StateOf(vfs).real;
    return real->xFullPathname(real, name, size, out);
}

int Randomness(sqlite3_vfs* vfs, int count, char* out) {
    sqlite3_vfs* real = StateOf(vfs).real;
    return real->xRandomness(real, count, out);
}

int SleepFor(sqlite3_vfs* vfs, int microseconds) {
    sqlite3_vfs* real = StateOf(vfs).real;
    if (StateOf(vfs).skipsWaits) return microseconds;
    return real->xSleep(real, microseconds);
}

int CurrentTime(sqlite3_vfs* vfs, double* time) {
    sqlite3_vfs* real = StateOf(vfs).real;
    return real->xCurrentTime(real, time);
}

int GetLastSystemError(sqlite3_vfs* vfs, int size, char* out) {
    sqlite3_vfs* real = StateOf(vfs).real;
    return real->xGetLastError(real, size, out);
}

}  // namespace

FaultVfs::FaultVfs() : m_state(std::make_unique<State>()) {
    m_state->real = sqlite3_vfs_find(nullptr);
    sqlite3_vfs& vfs = m_state->vfs;
    vfs.iVersion = 1;
    vfs.szOsFile = static_cast<int>(sizeof(FaultFile)) + m_state->real->szOsFile;
    vfs.mxPathname = m_state->real->mxPathname;
    vfs.zName = "qfclib-fault";
    vfs.pAppData = m_state.get();
    vfs.xOpen = Open;
    vfs.xDelete = Delete;
    vfs.xAccess = Access;
    vfs.xFullPathname = FullPathname;
    vfs.xRandomness = Randomness;
    vfs.xSleep = SleepFor;
    vfs.xCurrentTime = CurrentTime;
    vfs.xGetLastError = GetLastSystemError;
    if (sqlite3_vfs_register(&vfs, 1) != SQLITE_OK) throw std::runtime_error("the fault VFS cannot be registered");
}

FaultVfs::~FaultVfs() {
    sqlite3_vfs_unregister(&m_state->vfs);
    sqlite3_vfs_register(m_state->real, 1);
}

void FaultVfs::FailAt(int n, bool sticky, Counted counted) {
    m_state->Reset();
    m_state->everything = counted == Counted::kEverything;
    m_state->failAt = n;
    m_state->sticky = sticky;
}

void FaultVfs::FailDeletesBehindTheAct() { m_state->afterTheAct = true; }

void FaultVfs::LimitSpace(std::int64_t bytes) {
    m_state->Reset();
    m_state->space = bytes;
}

void FaultVfs::SkipWaits() { m_state->skipsWaits = true; }

void FaultVfs::Heal() { m_state->Reset(); }

int FaultVfs::Calls() const { return m_state->calls; }

bool FaultVfs::HasFailed() const { return m_state->hasFailed; }

}  // namespace qfc::test
