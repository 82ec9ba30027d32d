#include "platform/os/GuidSource.h"

#include <uuid/uuid.h>

namespace {

// libuuid gives and takes the numbers with their highest byte first.
GUID FromUuid(const uuid_t& bytes) {
    GUID guid;
    guid.Data1 =
        std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
    guid.Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
    guid.Data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
    std::memcpy(guid.Data4, bytes + 8, sizeof(guid.Data4));
    return guid;
}

void ToUuid(const GUID& guid, uuid_t& bytes) {
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>(guid.Data1 >> (24 - 8 * i));
    for (int i = 0; i < 2; ++i) {
        bytes[4 + i] = static_cast<unsigned char>(guid.Data2 >> (8 - 8 * i));
        bytes[6 + i] = static_cast<unsigned char>(guid.Data3 >> (8 - 8 * i));
    }
    std::memcpy(bytes + 8, guid.Data4, sizeof(guid.Data4));
}

}  // namespace

LONG CoCreateGuid(GUID* guid) {
    constexpr LONG kPointerMissing = static_cast<LONG>(0x80004003);
    if (guid == nullptr) return kPointerMissing;
    uuid_t bytes;
    uuid_generate_random(bytes);
    *guid = FromUuid(bytes);
    return 0;
}

GUID qfc::GuidOfName(const GUID& space, std::string_view name) {
    uuid_t spaceBytes;
    ToUuid(space, spaceBytes);
    uuid_t bytes;
    uuid_generate_sha1(bytes, spaceBytes, name.data(), name.size());
    return FromUuid(bytes);
}
