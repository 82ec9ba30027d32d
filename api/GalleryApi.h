#pragma once

#include "platform/Export.h"
#include "platform/framework/Types.h"

#include <cstdint>

class CQGalleryDoc;

// The plain functions over galleries. Any thread; the procedure is registered by one thread at a time.

// 1 when there is a gallery document afterwards.
QFCLIB_API int CreateGalleryDoc();
// The one gallery document of the process, made by the first call; it lives until the process ends.
QFCLIB_API CQGalleryDoc* GetGalleryDoc();

// What folders ask the host: to compare two items for a sort, and to take note of an item that was copied. `param` and
// the meaning of the result go with the message; `item` and `extra` are addresses.
using QFCGlobalProc = int (*)(DWORD dwMessage, ULONGLONG param, std::int64_t item, void* extra);
// Replaces the procedure registered before; null withdraws it.
QFCLIB_API void RegisterGlobalProc(QFCGlobalProc proc);
