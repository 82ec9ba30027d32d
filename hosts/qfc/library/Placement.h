#pragma once

#include "hosts/qfc/library/Find.h"

#include <string>

namespace qfc::host {

// Where items and folders stand, and what has to hold for them to stand there. Main thread, no adds under way.

// The folder meant by an item's text: the one its path names, or the only one that holds the item. Throws Failure for
// the GUID of an item that several folders hold.
CQFolder& PlacementOf(const FoundItem& found);

// Throw Failure when the item, or the folder, could not be told from a neighbour under that stored name: a path may use
// the stored names and those shown.
void RefuseItemClash(CQFolder& folder, const CQItem& item, const std::string& name);
void RefuseFolderClash(CQFolder& parent, const CQFolder& folder, const std::string& name);
// Throws Failure for a folder that the library, which takes the first of several with one path, would not find.
void RequireReachable(CQGallery& gallery, const CQFolder& folder);

// Writes the folder's row as the tree has it. False when the database does not have its parent and place afterwards.
bool StoreFolder(CQFolder& folder);
// Makes the stored order of the items that of the tree: what is added after a removal gets a number that others may
// have. Writes the numbers of those alone that do not come behind the one before them. False when the order is another
// one afterwards.
bool MendItemOrder(CQFolder& folder);

}  // namespace qfc::host
