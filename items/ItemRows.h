#pragma once

#include "db/DbRecords.h"

#include <vector>

class CQItem;
class DBTools;

// What the database tools get of an item: plain rows, and payloads that are fetched and compressed already. Made
// before the tools take their guard; nothing here may be called while they hold it.
namespace qfc {

// The item's row as its fields stand now.
ItemRow RowOf(const CQItem& item);

// Takes the fields of a row into an item, but its GUID and the template path: all of them, it cannot fail on the way.
void FillFromRow(CQItem& item, ItemRow row);

// Loads the payload of one kind that is not in memory, from the item's own library or gallery file; nothing happens
// when there is none.
void FetchPayload(CQItem& item, int nKind);

// The payload of one kind as it is to be written to `target`. Without bytes in memory an item of that same database
// writes nothing, since what a load would bring is the very row that stays; an item from elsewhere is loaded first,
// and writes nothing when that fails. The result borrows the item's bytes.
PayloadWrite PayloadOf(CQItem& item, int nKind, const DBTools& target);

// All kinds, in the order in which they are written.
std::vector<PayloadWrite> PayloadsOf(CQItem& item, const DBTools& target);

}  // namespace qfc
