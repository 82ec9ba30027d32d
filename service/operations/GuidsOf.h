#pragma once

#include "platform/framework/Guid.h"

#include <vector>

namespace qfc {

// The GUIDs of categories or tags, in their order.
template <typename Records>
std::vector<GUID> GuidsOf(const Records& records) {
    std::vector<GUID> guids;
    guids.reserve(records.size());
    for (const auto& record : records) guids.push_back(record.m_guid);
    return guids;
}

}  // namespace qfc
