#pragma once

#include "platform/framework/Guid.h"

class CQFolder;
class CQGallery;
struct DS_Filter_File_Record;

// Steps that several operations on effects share. Worker thread.
namespace qfc {

// Gives the item to the one entry that names none. False, and nothing changed, when more than one names none: they
// would share one row.
bool NameItem(DS_Filter_File_Record& file, const GUID& guidItem);

// Takes the item out of the gallery, in every folder, when a folder of the gallery holds it.
void RemoveEffectItem(CQGallery& gallery, const GUID& guidItem);

// Whether the folder is one that a pruning removes: not predefined, nothing in it or below it, and the one that its
// row number stands for below its parent.
bool IsToBePruned(CQFolder& folder);

}  // namespace qfc
