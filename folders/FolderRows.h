#pragma once

#include "db/DbRecords.h"
#include "platform/framework/Guid.h"

#include <memory>
#include <optional>
#include <vector>

class CQItem;
class DBTools;

namespace qfc {

// Where the load of a tree takes its rows from. One thread, for the time of one load.
class FolderRows {
public:
    virtual ~FolderRows() = default;

    // Empty when there is no such row, or it cannot be read.
    virtual std::optional<FolderRow> Folder(int nFolder) = 0;
    // The numbers of the rows below, in row order. Empty when they cannot be read.
    virtual std::optional<std::vector<int>> Children(int nFolder) = 0;
    // In stored order; rows whose GUID is none are left out.
    virtual std::vector<GUID> Placements(int nFolder) = 0;
    // A new item with that GUID, filled with its row and its tags as far as there are any.
    virtual std::unique_ptr<CQItem> Item(const GUID& guid) = 0;
};

// Asks the database for each row when it is needed.
std::unique_ptr<FolderRows> RowByRow(DBTools& tools);

// Reads the tree below the folder at once where that gives the same rows, else row by row.
std::unique_ptr<FolderRows> RowsOfTree(DBTools& tools, int nFolder);

}  // namespace qfc
