#include "hosts/qfc/library/EffectNames.h"

#include "hosts/qfc/effects/ProbeReport.h"

#include <algorithm>
#include <uuid/uuid.h>

namespace qfc::host {
namespace {

// The names below are names within this one, and within no other's.
constexpr const char* kNamespace = "8d3f6c0e-52b1-5a7d-9c44-1fe0b7a26d95";

}  // namespace

std::string BaseNameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

GUID NamedGuid(std::string_view name) {
    uuid_t space{};
    uuid_parse(kNamespace, space);
    uuid_t made{};
    uuid_generate_sha1(made, space, name.data(), name.size());
    char text[UUID_STR_LEN];
    uuid_unparse(made, text);
    return GuidFromText(text).value_or(GUID_NULL);
}

GUID EffectGuid(std::string_view baseName, unsigned index) {
    return NamedGuid("frei0r:" + std::string(baseName) + ":" + std::to_string(index));
}

bool IsEffectGuid(const GUID& guid, std::string_view baseName) {
    for (unsigned index = 0; index < kMostEffects; ++index) {
        if (EffectGuid(baseName, index) == guid) return true;
    }
    return false;
}

std::string EffectItemName(const std::string& name) {
    std::string reachable = name;
    std::ranges::replace(reachable, '\\', '_');
    return reachable;
}

}  // namespace qfc::host
