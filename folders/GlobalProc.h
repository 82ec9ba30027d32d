#pragma once

#include "platform/framework/Types.h"

#include <cstdint>

// The slot of the host's global procedure. It stands here, in the lowest layer that calls it; the exported name above
// writes it. Any thread; the procedure runs on the thread that works on the tree.
namespace qfc {

using GlobalProc = int (*)(DWORD dwMessage, ULONGLONG param, std::int64_t item, void* extra);

// Replaces the one before; null withdraws it.
void SetGlobalProc(GlobalProc proc);
GlobalProc CurrentGlobalProc();

}  // namespace qfc
