#pragma once

#include "platform/Export.h"
#include "platform/framework/CString.h"

class CQFolder;

// Names and paths of folders as plain functions. Called on the thread that works on the tree.

// The path below the gallery, each name with a backslash before it; empty for the gallery itself and for null.
QFCLIB_API CString GenerateFolderPath2(CQFolder* pFolder);
