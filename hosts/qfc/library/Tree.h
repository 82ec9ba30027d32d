#pragma once

#include "items/CQGallery.h"

#include <string>
#include <vector>

namespace qfc::host {

// Walks over a loaded tree. Snapshots: the tree may be changed while one is gone through. While adds are under way,
// only on the worker.

std::vector<CQFolder*> SubFolders(CQFolder& folder);
std::vector<CQItem*> Items(CQFolder& folder);
// The folder itself, then everything below it, parents before children, in the stored order.
std::vector<CQFolder*> WholeTree(CQFolder& folder);
// The direct sub-folder of exactly that name, or null.
CQFolder* Child(CQFolder& folder, const std::string& name);

// The names from the gallery's sub-folder down; none for the gallery itself.
std::vector<std::string> ComponentsOf(const CQFolder& folder);
// The same as "A\B".
std::string PathOf(const CQFolder& folder);
std::string PathOf(const CQFolder& folder, const CQItem& item);
// The folders of the gallery that hold the item.
std::vector<CQFolder*> FoldersOf(CQGallery& gallery, const GUID& guid);
// One path for every folder that holds the item.
std::vector<std::string> PathsOf(CQGallery& gallery, const CQItem& item);

// "video", "audio", "image" or, for content of other kinds, "other".
const char* KindOf(const CQItem& item);

}  // namespace qfc::host
