#pragma once

#include "items/CQGallery.h"

#include <cstdint>

// The only place where 64-bit handles and addresses are turned into each other. A handle is the address of the folder
// base, so that a gallery and its folder base have one handle. 0 is null both ways; nothing else is checked.
namespace qfc {

inline ULONGLONG ToHandle(const CQFolder* pFolder) { return reinterpret_cast<std::uintptr_t>(pFolder); }

inline CQFolder* AsFolder(ULONGLONG hFolder) {
    return reinterpret_cast<CQFolder*>(static_cast<std::uintptr_t>(hFolder));
}

inline CQGallery* AsGallery(ULONGLONG hGallery) { return static_cast<CQGallery*>(AsFolder(hGallery)); }

}  // namespace qfc
