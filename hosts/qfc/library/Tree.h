#pragma once

#include "items/CQGallery.h"

#include <cstddef>
#include <string>
#include <vector>

namespace qfc::host {

// Walks over a loaded tree. Snapshots: the tree may be changed while one is gone through. While adds are under way,
// only on the worker.

std::vector<CQFolder*> SubFolders(CQFolder& folder);
std::vector<CQItem*> Items(CQFolder& folder);
// The folder itself, then everything below it, parents before children, in the stored order.
std::vector<CQFolder*> WholeTree(CQFolder& folder);
// The direct sub-folders that a name in a path means: those of exactly that stored name, else those shown so.
std::vector<CQFolder*> ChildrenNamed(CQFolder& folder, const std::string& name);

// The one of them, or null. Throws Failure with the rows when there are several.
CQFolder* ChildNamed(CQFolder& folder, const std::string& name);
[[noreturn]] void RefuseSeveral(const std::vector<CQFolder*>& folders, const std::string& path);

// How many levels of folders a gallery loads again; what lies deeper is stored, but never seen. The first level is that
// right below the gallery.
inline constexpr std::size_t kMostLevels = 1000;
// The level of the folder, 0 for the gallery, and how many levels there are below it.
std::size_t LevelOf(const CQFolder& folder);
std::size_t LevelsBelow(CQFolder& folder);
// Throws Failure when folders would come to stand deeper than is loaded.
void RequireLevels(std::size_t levels);

// What people see: a stored name may be encoded or have a key in front, and it may be translated. The item's is looked
// up on a copy, since the library would make the translation its name.
std::string ShownName(CQFolder& folder);
std::string ShownName(const CQItem& item);
// The same under another stored name.
std::string ShownAs(const CQFolder& folder, const std::string& name);
std::string ShownAs(const CQItem& item, const std::string& name);

// The stored names from the gallery's sub-folder down; none for the gallery itself.
std::vector<std::string> ComponentsOf(const CQFolder& folder);
// The same as "A\B", for the library.
std::string StoredPathOf(const CQFolder& folder);
// The same of what is shown, for people; such a path is understood, too.
std::vector<std::string> ShownComponentsOf(const CQFolder& folder);
std::string PathOf(const CQFolder& folder);
std::string PathOf(const CQFolder& folder, const CQItem& item);
// The folders of the gallery that hold the item.
std::vector<CQFolder*> FoldersOf(CQGallery& gallery, const GUID& guid);
// One path for every folder that holds the item.
std::vector<std::string> PathsOf(CQGallery& gallery, const CQItem& item);

// "video", "audio", "image", "transition", "filter" or, for content of other kinds, "other".
const char* KindOf(const CQItem& item);

}  // namespace qfc::host
