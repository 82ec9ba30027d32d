#pragma once

#include "hosts/qfc/cli/Options.h"
#include "platform/framework/Types.h"

namespace qfc::host {

// The number under which the library knows a sort key (CQFolder::SortingAllItem).
inline DWORD SortTypeOf(SortKey key) {
    switch (key) {
        case SortKey::Date:
            return 1;
        case SortKey::Kind:
            return 2;
        case SortKey::Name:
            break;
    }
    return 0;
}

}  // namespace qfc::host
