#pragma once

#include "platform/Export.h"
#include "platform/framework/CString.h"
#include "platform/framework/Types.h"

class CQFolder;

// Names and paths of folders as plain functions. A stored path has a backslash before each stored name; a display path
// has the display names with backslashes between them. Both leave the gallery out. A stored name may be plain, have
// the key form "<key>--<shown>", or be encoded: the display names from the gallery's down, each "||<bytes>||<text>".
// A module, which may be null, names predefined folders (api/names/StringTables.h). Called on the thread that works on
// the tree; those that take texts alone, except GenerateFolderPathFromDispalyPath, from any.

// The stored path; empty for the gallery itself and for null.
QFCLIB_API CString GenerateFolderPath2(CQFolder* pFolder);

// The encoded name for a new folder shown as `strName` in `pParent`; empty for null.
QFCLIB_API CString GenerateFolderName(CQFolder* pParent, CString strName);

// What a stored name shows.
QFCLIB_API CString GetFolderDisplayName(CString strName);
// Empty for null.
QFCLIB_API CString GetFolderDisplayName(CQFolder* pFolder, HINSTANCE hModule);

// Empty for the gallery itself and for null.
QFCLIB_API CString GetFolderDisplayPath(CQFolder* pFolder, HINSTANCE hModule);
// Of an encoded name or a stored path.
QFCLIB_API CString GetFolderDisplayPath(CString strNameOrPath);
// That of a folder shown as `strName` in `pParent`; empty for null.
QFCLIB_API CString GenerateFolderDisplayPath(CQFolder* pParent, CString strName, HINSTANCE hModule);

// The encoded name of the folder at a display path in a gallery with that display name.
QFCLIB_API CString GenerateFolderNameFromDispalyPath(CString strRootDisplayName, CString strDisplayPath);
// The stored path. Folders of the open gallery with that display name go by the names they have; where there is none,
// by encoded names. No gallery may be opened or closed meanwhile.
QFCLIB_API CString GenerateFolderPathFromDispalyPath(CString strRootDisplayName, CString strDisplayPath);
// The stored path of the folder with the encoded name when those above it are encoded too; a name that is not encoded
// is one in the gallery itself.
QFCLIB_API CString GenerateFolderPathFromName(CString strName);
