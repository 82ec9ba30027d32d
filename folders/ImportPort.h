#pragma once

#include "platform/framework/CString.h"
#include "platform/framework/Types.h"

#include <vector>

class CQItem;

// The one call that folders make upwards: a folder that takes an item from another library has the library service add
// it. The service fills the slot at start-up; any thread may read it.
namespace qfc {

// Adds the item to the folders of the gallery that the paths name; 1 or 0. The item is borrowed for the call; once a
// folder holds it, its gallery owns it.
using ImportPort = int (*)(ULONGLONG hGallery, std::vector<CString> paths, CQItem* pItem);

void SetImportPort(ImportPort port);
// Null while nobody filled the slot.
ImportPort CurrentImportPort();

}  // namespace qfc
