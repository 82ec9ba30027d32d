#pragma once

#include "items/CQItem.h"

namespace qfc {

// The GUID of an item, to be read only: CQItem::GetUniqueID would hand out the place itself, unless the item is const.
inline const GUID& GuidOfItem(const CQItem& item) { return item.GetUniqueID(); }

}  // namespace qfc
