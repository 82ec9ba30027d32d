#pragma once

#include "platform/framework/Guid.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

class CQFolder;
class CQItem;
class DBTools;

namespace qfc::host {

// Looks after a change whether it is really there. The library's own results do not tell; what is counted is what was
// seen here. Reads the database through the library, writes nothing. Any thread that may read the tree.

// The item as the database has it, without its payloads; null when it has no such item.
std::unique_ptr<CQItem> LoadFresh(DBTools& tools, const GUID& guid);

// The item stands in the loaded folder. Looks at what was added last first.
bool StandsIn(CQFolder& folder, const GUID& guid);
// Whether it stands in the folder, its gallery knows it there, and the database has its row, of which nobody knows when
// that cannot be read; whether the database also places it there is not looked at.
std::optional<bool> HoldsItem(CQFolder& folder, const GUID& guid);

// Whether the database has such an item. Nothing when it cannot be read.
std::optional<bool> IsItemStored(DBTools& tools, const GUID& guid);
// The kinds of an item's payloads, for people.
inline constexpr std::pair<int, const char*> kPayloadNames[] = {{0, "bitmap cache"}, {1, "black box"}, {2, "film"}};
// Whether the database says that the item has bytes of the kind; a film is the item's only with its bit. Nothing when
// it cannot be read.
std::optional<bool> HasStoredPayload(DBTools& tools, CQItem& item, int kind);
// The items of which the database has a payload of the kind, be it of size 0; nothing when it cannot be read.
std::optional<std::set<GUID>> ItemsWithPayload(DBTools& tools, int kind);
// True when the database answers and says that there is no such item.
bool IsItemGone(DBTools& tools, const GUID& guid);
// The tags that the database links to the item, both living or not; nothing when it cannot be read.
std::optional<std::set<GUID>> StoredLinks(DBTools& tools, const GUID& guid);

struct StoredPlacement {
    GUID item{};
    int number = -1;  // Items stand in the order of these.
};
// The placements in a folder row, in their stored order; nothing when the database cannot be read.
std::optional<std::vector<StoredPlacement>> StoredPlacements(DBTools& tools, int folderRow);
// The GUIDs placed in a folder row, in their stored order; nothing when the database cannot be read.
std::optional<std::vector<GUID>> StoredItems(DBTools& tools, int folderRow);
// The rows of the sub-folders of a folder row; nothing when the database cannot be read.
std::optional<std::vector<int>> StoredSubFolders(DBTools& tools, int folderRow);
// The same for many look-ups.
std::optional<std::set<GUID>> StoredItemSet(DBTools& tools, int folderRow);
// Whether the database places the item in that folder row. Nothing when it cannot be read.
std::optional<bool> IsPlaced(DBTools& tools, int folderRow, const GUID& guid);

struct StoredFolder {
    int parentRow = -1;
    int index = -1;
    std::string name;
};
// The folder's row; nothing when there is none or it cannot be read.
std::optional<StoredFolder> LoadStoredFolder(DBTools& tools, int folderRow);
// Gives the folder the trusty mask that its row has. Loading adds bits to the mask of some names, which a later write
// of the folder would store. False when the row cannot be read: the folder is not to be written then.
bool RestoreTrusty(CQFolder& folder);
// Whether the database has such a row. Nothing when it cannot be read.
std::optional<bool> IsFolderStored(DBTools& tools, int folderRow);
// True when the database answers and says that there is no such row.
bool IsFolderGone(DBTools& tools, int folderRow);

}  // namespace qfc::host
