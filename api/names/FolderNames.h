#pragma once

#include "platform/framework/CString.h"

#include <cstddef>
#include <vector>

// What the stored name of a folder says, and how stored and shown paths turn into each other: texts in, texts out, for
// any names without backslash. A stored name may be encoded: the display names from the gallery's down to its own, each
// written "||<bytes>||<text>". Or it has the key form "<key>--<shown>". Or it is plain. Any thread.
namespace qfc {

// The last text of an encoded name; the text behind the first "--" unless that is at the start; else the name itself.
// Never fails: lengths that lie are cut to what is there.
CString DisplayNameOf(const CString& name);

CString EncodeFolderName(const std::vector<CString>& texts);
// The texts of an encoded name, the gallery's first; none unless all of the name is one.
std::vector<CString> DecodeFolderName(const CString& name);

// The stored path, below the gallery, of the folder that has the encoded name when those above it have encoded names
// too. Another name, and one whose path would exceed 64 MB, is that of a folder in the gallery itself.
CString PathOfEncodedName(const CString& name);
// The same for the encoded name of these texts, the gallery's first; from the text at `first` on.
CString PathOfEncodedTexts(const std::vector<CString>& texts, std::size_t first = 1);

// Of an encoded name the texts below the gallery's, of a stored path the display name of each part; joined by
// backslashes.
CString DisplayPathOf(const CString& nameOrPath);
CString JoinDisplayPath(const std::vector<CString>& texts);

}  // namespace qfc
