#pragma once

#include "hosts/qfc/library/Find.h"

#include <string>

namespace qfc::host {

// The folder meant by an item's text: the one its path names, or the only one that holds the item. Throws Failure for
// the GUID of an item that several folders hold. Main thread.
CQFolder& PlacementOf(const FoundItem& found);

// Throws Failure when the folder holds another item of that name.
void RefuseItemClash(CQFolder& folder, const CQItem& item, const std::string& name);

}  // namespace qfc::host
