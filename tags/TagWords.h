#pragma once

#include "platform/framework/CString.h"

#include <string_view>
#include <vector>

// The words and texts of the tag files: texts in, plain values out. Texts are in the ANSI code page, and every split
// steps over whole characters. Any thread.
namespace qfc {

struct LocalDate {
    int year = 0;
    int month = 0;  // From 1.
    int day = 0;
};

// By the clock, in the local time zone.
LocalDate Today();

// Kept: in exactly that spelling, unlike the words of tag types. Any other word is a plain category.
int CategoryTypeOfWord(const CString& word);
// In any case. Any other word is a string tag.
int TagTypeOfWord(const CString& word);

// The parts between separators, an ASCII character; n separators give n + 1 parts.
std::vector<std::string_view> SplitAnsi(std::string_view text, char separator);

// What "type word@value" says of a tag.
struct TagSpecifier {
    int type = 0;
    CString value;    // The tag's name: today's range for a date tag. Empty: there is no tag.
    CString written;  // The value as it stands in the text.
};

// Anything but two parts gives type 0 and no value.
TagSpecifier ReadTagSpecifier(std::string_view text, const LocalDate& today);

// A range of one day, as date tags are called.
CString DateTagName(const LocalDate& day);

}  // namespace qfc
