#pragma once

#include "api/names/Translation.h"

namespace qfc {

// What g_GetTagTranslateName does, with the buffer and the file given. Any thread.
// Kept: without a file the text of the look-up before comes back.
CString TranslateTagName(TranslationBuffer& buffer, const CString& file, const CString& name);

}  // namespace qfc
