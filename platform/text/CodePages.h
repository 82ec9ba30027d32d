#pragma once

#include "platform/Export.h"
#include "platform/framework/CString.h"

#include <string>
#include <string_view>

namespace qfc {

// Chooses the ANSI code page, the one all 8-bit texts of the interface are in, by a name that iconv knows; UTF-8 until
// then. False, and nothing changed, for an unknown name. Hosts call it once, before they use anything else.
QFCLIB_API bool SetAnsiCodePage(const char* iconvName);
// As it was set; "UTF-8" by default. Valid for ever.
const char* AnsiCodePage();
bool IsAnsiUtf8();

// None of the conversions fails but for a lack of memory or of descriptors, with std::bad_alloc. While the code page is
// UTF-8 the two between bytes keep every byte, valid or not; otherwise '?' stands for what does not convert, and the
// five holes of CP1252 pass as control characters. Towards UTF-16 what does not convert becomes U+FFFD. All may be
// called from any thread.
std::string AnsiToUtf8(std::string_view text);
std::string Utf8ToAnsi(std::string_view text);
std::u16string AnsiToUtf16(std::string_view text);

}  // namespace qfc

// The conversions at the database boundary: user-visible names are ANSI in memory and UTF-8 in the database.
class QFCLIB_API CDBStringHelper {
public:
    static CString ASCII2UTF_8(const CString& text);
    static CString UTF_82ASCII(const CString& text);
};
