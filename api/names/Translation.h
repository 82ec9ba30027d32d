#pragma once

#include "api/names/TranslationFile.h"
#include "platform/framework/CString.h"
#include "platform/framework/Types.h"

#include <array>

// Translated names, from "qvTWTranslateData.dat" in the folder "orvel.dat" (in either spelling) beside the host. That
// file is UTF-8; names go in and translations come out as said below. Paths and switches are found out at the first
// question and stay for the life of the process. Any thread: look-ups share one mutex, and no result points into a
// shared buffer.
namespace qfc {

inline constexpr char kTagSection[] = "TW_TAG_TRANSLATE";
inline constexpr char kPredefinedFolderSection[] = "Predefined_Folder";

// As TranslationFilePath.
const CString& ArFilterFilePath();

// The switches of the application ini, "Cinelume.ini" in the data folder; both off unless they are 1 there. The first
// question, which the first display name asks, makes the data folder when it is missing and decides for ever, even when
// the host chooses another data folder later. What runs out of memory throws and decides nothing.
bool IsTranslationOn();
// Names are collected in the translation file instead of being looked up. Means nothing while translation is off.
bool IsTranslationCollected();

// Whether items of the type have names to look up.
bool IsTranslatedType(DWORD dwItemType);

// A name of blanks alone, or none: a line that begins with '=' would answer to it.
bool IsNameless(const CString& key);

// A text of at most 259 bytes that stays between look-ups: it holds what the last one found.
class TranslationBuffer {
public:
    // The value of the key in the section, cut to the buffer, empty when missing. `key` is in the ANSI code page, the
    // result is UTF-8. An empty `file` skips the reading: the text of the look-up before comes back.
    CString Read(const CString& file, const char* section, const CString& key);

private:
    std::array<char, MAX_PATH> m_text{};
};

// The text in the section of the folder's number (`bFolder`) or of the item type, in UTF-8; empty when there is none,
// no translation file, or the type is not a translated one.
CString LookUpTranslation(DWORD dwIdOrType, const CString& key, bool bFolder);
// The same in a section named by the caller. Nothing is found for a key without characters.
CString LookUpTranslation(const char* section, const CString& key);

// Writes the name, which stands for its own translation, into its section: 1, or 0 when it could not be written or
// names of that type are not collected. A name that was written before in this process is 1 and not written again.
int WriteTranslation(DWORD dwIdOrType, const CString& name, bool bFolder);

}  // namespace qfc
