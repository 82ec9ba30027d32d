#pragma once

#include "platform/framework/Guid.h"

#include <cstddef>
#include <functional>
#include <string_view>

namespace qfc {

// For unordered containers.
struct GuidHash {
    std::size_t operator()(const GUID& guid) const {
        const auto bytes = GuidBytes(guid);
        return std::hash<std::string_view>{}({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
};

}  // namespace qfc
