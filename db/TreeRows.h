#pragma once

#include "db/DbRecords.h"

#include <vector>

namespace qfc {

// Everything that is stored of one folder tree, read in a few ordered scans instead of row by row. Plain values.
struct TreeRows {
    struct Folder {
        int id = kNoFolder;
        FolderRow row;
    };
    struct Placement {
        int folder = kNoFolder;
        GUID item{};
    };
    struct Tag {
        GUID item{};
        GUID tag{};
    };

    std::vector<Folder> folders;        // All of the file, in the order of their rows.
    std::vector<Placement> placements;  // Of the tree: folder by folder, each in its stored order.
    std::vector<ItemRow> items;         // The rows of the placed items; the first of each GUID counts.
    std::vector<Tag> tags;              // Of the placed items, each item's in the order of the tags' bytes.
};

}  // namespace qfc
