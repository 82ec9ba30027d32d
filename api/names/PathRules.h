#pragma once

#include "platform/framework/CString.h"

#include <vector>

// Rules of folder paths and of the file names in item paths: texts in, texts out. Any thread.
namespace qfc {

inline constexpr char kPathSeparator = '\\';

// The parts between backslashes, empty ones dropped; the last one first unless `bInOrder`.
std::vector<CString> SplitFolderPath(const CString& path, bool bInOrder = true);

// The file name of an item's path with a backslash before it; the whole path when it has no separator. A path in
// native form, with slashes and no backslash, is cut at its last slash.
CString FileNameTail(const CString& path);

// The same without the backslash: the file name alone.
CString FileNameOf(const CString& path);

// A file name as hosts hand it in, with its leading separator: a native one becomes a backslash.
CString AsFileNameTail(const CString& name);

}  // namespace qfc
