#include "platform/os/GuidSource.h"

#include <uuid/uuid.h>

LONG CoCreateGuid(GUID* guid) {
    constexpr LONG kPointerMissing = static_cast<LONG>(0x80004003);
    if (guid == nullptr) return kPointerMissing;
    uuid_t bytes;
    uuid_generate_random(bytes);
    // libuuid gives the numbers with their highest byte first.
    guid->Data1 =
        std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
    guid->Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
    guid->Data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
    std::memcpy(guid->Data4, bytes + 8, sizeof(guid->Data4));
    return 0;
}
