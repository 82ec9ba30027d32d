#pragma once

#include "platform/framework/CString.h"
#include "platform/framework/Guid.h"
#include "platform/framework/Types.h"

#include <cstdint>

// One stored bitmap cache, as the thumbnail query reports it. Kept: the name is spelt so.
struct _DS_LibItemTunmbnailInfo_ {
    GUID guidItem = GUID_NULL;
    DWORD dwItemType = 0;
    std::int32_t nReserved = 0;        // Always 0.
    std::int32_t nCompressedSize = 0;  // Bytes as stored; 0 when the cache is stored uncompressed.
    SIZE sizeBitmapCache{-1, -1};      // Pixels; -1, -1 when the cache cannot be read.
    CString strPath;
};
