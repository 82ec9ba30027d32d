#include "platform/os/LastError.h"

namespace {
thread_local DWORD lastError = ERROR_SUCCESS;
}  // namespace

DWORD GetLastError() { return lastError; }

void SetLastError(DWORD error) { lastError = error; }
