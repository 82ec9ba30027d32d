#pragma once

#include "platform/Export.h"
#include "platform/framework/CString.h"

namespace qfc {

// The file of translated names beside the host, in the ANSI code page, with the backslash before its name; there or
// not. Empty when the host's folder is too long for a path. The first answer stays for the life of the process. Any
// thread.
QFCLIB_API const CString& TranslationFilePath();

}  // namespace qfc
