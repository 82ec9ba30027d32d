#pragma once

#include "platform/framework/Guid.h"

class CQFolder;

namespace qfc::host {

// Removes, then looks. Main thread.

// The folder with everything below it; its object is gone afterwards. False when anything of it is still stored.
bool RemoveFolder(CQFolder& folder);

// The item's placement in the folder, and the item itself with its last placement: its object may be gone afterwards.
// False when the placement is still stored.
bool RemovePlacement(CQFolder& folder, const GUID& guid);

}  // namespace qfc::host
