#pragma once

#include "platform/framework/CString.h"

class CQFolder;

namespace qfc {

// The path below the gallery: for the folder and each ancestor that has a parent, a backslash and the name. Empty for
// a root and for null. Thread: the one that works on the tree.
CString FolderPathText(const CQFolder* folder);

}  // namespace qfc
