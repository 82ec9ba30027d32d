#pragma once

#include "platform/Export.h"
#include "platform/framework/Types.h"

#include <string>
#include <vector>

// Profile (ini) files: sections of key=value lines. Of sections and keys that stand twice the first one counts; case
// does not matter, the order of the file does. Files are in the ANSI code page, or in UTF-16LE with a byte-order mark.
// Paths pass through qfc::NativePath; a bare name is looked for in the data folder. Every function may be called from
// any thread and while other processes read and write: readers take no lock and see the file before a write or after
// it, writers wait for each other on "<file>.lock", which stays. A write passes through "<file>.new": a file of that
// name goes.

// Copies the value, one pair of matching outer quotes removed, and returns its length. `fallback` without its trailing
// blanks when file, section or key is missing; a key without value is the empty text. A null section asks for the
// names of all sections, a null key for the keys of the section, each closed by a NUL and the list by one more.
// What does not fit is cut: a value at size - 1, a list at size - 2 bytes.
QFCLIB_API DWORD GetPrivateProfileStringA(const char* section, const char* key, const char* fallback, char* buffer,
                                          DWORD size, const char* file);

// The section's lines as "key=value", quotes kept, lines without '=' as they are, no comments; a list as above.
QFCLIB_API DWORD GetPrivateProfileSectionA(const char* section, char* buffer, DWORD size, const char* file);

// A list as above. Kept: it fits only with one byte to spare.
QFCLIB_API DWORD GetPrivateProfileSectionNamesA(char* buffer, DWORD size, const char* file);

// Replaces the value where it stands, else adds the key behind the last one of its section, else the section at the
// end of the file, which is made when missing (its folder is not). A null value removes the key, a null key the
// section; removing what is not there is 1. Every other byte stays, and a crash leaves the old file or the new one.
// What would change nothing is 1 without a look at who may write, and leaves no other file.
QFCLIB_API int WritePrivateProfileStringA(const char* section, const char* key, const char* value, const char* file);

namespace qfc {

// What the texts of a file without a mark are, and those that go in and come out.
enum class ProfileTexts { Ansi, Utf8 };

// What follows throws std::bad_alloc when memory runs out, and may be asked again then.

// What the functions above give when the buffer is large enough.
std::string ReadProfileText(const std::string& section, const std::string& key, const std::string& fallback,
                            const std::string& file, ProfileTexts texts = ProfileTexts::Ansi);
// 1 or 0 as above.
int WriteProfileText(const std::string& section, const std::string& key, const std::string& value,
                     const std::string& file, ProfileTexts texts = ProfileTexts::Ansi);
std::vector<std::string> ReadProfileSection(const std::string& section, const std::string& file);
std::vector<std::string> ReadProfileSectionNames(const std::string& file);

// The decimal number at the start of the value; `fallback` when there is no value, 0 when it does not begin with one.
int ReadProfileNumber(const std::string& section, const std::string& key, int fallback, const std::string& file);

}  // namespace qfc
