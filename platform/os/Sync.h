#pragma once

#include "platform/Export.h"
#include "platform/framework/Types.h"
#include "platform/os/LastError.h"

inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_ABANDONED = 0x80;
inline constexpr DWORD WAIT_TIMEOUT = 0x102;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

// Mutexes and events behind handles. Every function may be called from any thread. A handle that is null, was closed,
// or is of the wrong kind gives 0 (WAIT_FAILED from a wait) and ERROR_INVALID_HANDLE.

// A mutex that its thread may take again; each successful wait needs one ReleaseMutex. Unnamed only: a name gives null
// and ERROR_NOT_SUPPORTED. The first argument is ignored.
QFCLIB_API HANDLE CreateMutexA(void* security, int initialOwner, const char* name);

// A manual-reset event lets everybody pass until ResetEvent; the other kind lets one waiter pass and resets itself.
QFCLIB_API HANDLE CreateEventA(void* security, int manualReset, int initialState, const char* name);

QFCLIB_API int SetEvent(HANDLE event);
QFCLIB_API int ResetEvent(HANDLE event);

// Waits up to `milliseconds`, or without limit for INFINITE. WAIT_ABANDONED: the mutex is now owned by the caller, and
// its owner before ended without releasing it.
QFCLIB_API DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);

// 0 with ERROR_NOT_OWNER, and nothing changed, when the calling thread does not own the mutex.
QFCLIB_API int ReleaseMutex(HANDLE mutex);

// Does not release a mutex. Waits already under way go on.
QFCLIB_API int CloseHandle(HANDLE object);

QFCLIB_API void Sleep(DWORD milliseconds);
