#pragma once

#include "platform/framework/Guid.h"
#include "platform/framework/Types.h"

#include <cstdint>

// What a named callback learns of the asynchronous operation that succeeded. The record lives for the length of the
// call only.
struct QFCLibCallbackParam {
    ULONGLONG hGallery = 0;       // 0 where the operation has none.
    GUID guidItem = GUID_NULL;    // The affected item; all zero where there is none.
    std::int32_t nFolderId = -1;  // Row number of the affected folder; -1 where there is none.
};
