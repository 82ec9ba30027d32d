#pragma once

#include "platform/framework/CString.h"
#include "platform/framework/Types.h"

class CQFolder;

// How folders are shown, and the way back. A module gives texts for folder ids (api/names/StringTables.h); it may be
// null. Thread: the one that works on the tree; asking a folder fills its translation.
namespace qfc {

// The module's text for the id of a predefined folder; else what the translated name shows, or without one the stored
// name. Empty for null.
CString FolderDisplayName(CQFolder* folder, HINSTANCE module);

// The display names from below the gallery down to the folder, joined by backslashes. Empty for the gallery and null.
CString FolderDisplayPath(CQFolder* folder, HINSTANCE module);
// That of a folder shown as `name` in `parent`; empty for a null parent.
CString DisplayPathBelow(CQFolder* parent, const CString& name, HINSTANCE module);

// The encoded name of a new folder shown as `name` in `parent`; empty for a null parent.
CString EncodedNameBelow(CQFolder* parent, const CString& name);

// The stored path of a shown one in an open gallery shown as `galleryName`. Of folders that are shown alike the first
// one counts that leads farthest. From the first part on that no folder is shown as, and without such a gallery, the
// names are encoded ones. Empty parts count where folders are shown so, nowhere else.
CString StoredPathOf(const CString& galleryName, const CString& displayPath);

}  // namespace qfc
