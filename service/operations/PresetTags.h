#pragma once

class CLibTagsMgr;
class CQFolder;
class CQItem;

namespace qfc {

// Gives an item that came into the gallery the tags of the presets that name it: they are written in one transaction
// through the item's own database and, if that took, added to the item. Nothing happens without presets or database.
// Worker thread.
void ApplyPresetTags(const CLibTagsMgr& store, const CQFolder& gallery, CQItem& item);

}  // namespace qfc
