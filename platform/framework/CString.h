#pragma once

#include "platform/Export.h"

#include <compare>
#include <string>
#include <string_view>

// The 8-bit string of the interface, in the ANSI code page. It counts bytes and may hold NULs, but Compare and every
// use as const char* end at the first one. A value type: each object belongs to one thread at a time. A null
// const char* counts as the empty text everywhere.
class QFCLIB_API CString {
public:
    CString() = default;
    CString(const char* text) : m_text(text != nullptr ? text : "") {}
    CString(const char* text, int length);
    CString(char character, int repeat);
    explicit CString(std::string_view text) : m_text(text) {}

    CString& operator=(const char* text);

    // Valid until the string changes or dies.
    operator const char*() const { return m_text.c_str(); }
    const char* GetString() const { return m_text.c_str(); }
    // The whole text, bytes behind a NUL included.
    std::string_view View() const { return m_text; }

    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }

    // GetAt(GetLength()) is the closing NUL; any other index outside throws CInvalidArgException*.
    char GetAt(int index) const;
    char operator[](int index) const { return GetAt(index); }
    void SetAt(int index, char character);

    // By unsigned bytes, up to the first NUL: negative, 0 or positive.
    int Compare(const char* other) const;
    // The same over the texts folded to LOWER case, so that '_' sorts before the letters.
    int CompareNoCase(const char* other) const;

    // 0-based index of the first occurrence at or behind `start`, or -1. An empty text is found at `start`.
    int Find(char character, int start = 0) const;
    int Find(const char* text, int start = 0) const;
    int ReverseFind(char character) const;

    // Counts are clipped to what there is; a negative count gives the empty text.
    CString Left(int count) const;
    CString Right(int count) const;
    CString Mid(int first) const;
    CString Mid(int first, int count) const;

    // Case mapping of the ANSI code page, in place. Lower case is the folding that CompareNoCase uses.
    CString& MakeLower();
    CString& MakeUpper();

    // Without argument white space goes; a text is a SET of characters, never a substring.
    CString& TrimLeft();
    CString& TrimLeft(char character);
    CString& TrimLeft(const char* set);
    CString& TrimRight();
    CString& TrimRight(char character);
    CString& TrimRight(const char* set);
    CString& Trim();
    CString& Trim(char character);
    CString& Trim(const char* set);

    // Next piece between characters of `delimiters`, from `position` on, which moves behind the delimiter that ended
    // it. Runs of delimiters never give an empty piece. When nothing is left: the empty text, and `position` is -1.
    CString Tokenize(const char* delimiters, int& position) const;

    // Both return how many places changed. An empty `from` changes nothing.
    int Replace(char from, char to);
    int Replace(const char* from, const char* to);

    // printf rules; the string itself may not be one of its own arguments.
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void AppendFormat(const char* format, ...) __attribute__((format(printf, 2, 3)));

    CString& operator+=(const CString& text);
    CString& operator+=(const char* text);
    CString& operator+=(char character);

private:
    std::string m_text;
};

QFCLIB_API CString operator+(const CString& left, const CString& right);
QFCLIB_API CString operator+(const CString& left, const char* right);
QFCLIB_API CString operator+(const char* left, const CString& right);
QFCLIB_API CString operator+(const CString& left, char right);
QFCLIB_API CString operator+(char left, const CString& right);

// All comparisons are Compare, so a map keyed by CString is in its order.
inline bool operator==(const CString& left, const CString& right) { return left.Compare(right) == 0; }
inline bool operator==(const CString& left, const char* right) { return left.Compare(right) == 0; }
inline std::weak_ordering operator<=>(const CString& left, const CString& right) { return left.Compare(right) <=> 0; }
inline std::weak_ordering operator<=>(const CString& left, const char* right) { return left.Compare(right) <=> 0; }
