#include "platform/framework/CString.h"

#include "platform/framework/Exceptions.h"
#include "platform/text/CaseFold.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

const char* OrEmpty(const char* text) { return text != nullptr ? text : ""; }

int Sign(int value) { return (value > 0) - (value < 0); }

__attribute__((format(printf, 1, 0))) std::string FormatText(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text;
    if (length > 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

}  // namespace

CString::CString(const char* text, int length) {
    if (text != nullptr && length > 0) m_text.assign(text, static_cast<std::size_t>(length));
}

CString::CString(char character, int repeat) {
    if (repeat > 0) m_text.assign(static_cast<std::size_t>(repeat), character);
}

CString& CString::operator=(const char* text) {
    m_text = OrEmpty(text);
    return *this;
}

char CString::GetAt(int index) const {
    if (index < 0 || index > GetLength()) AfxThrowInvalidArgException();
    return m_text.c_str()[index];
}

void CString::SetAt(int index, char character) {
    if (index < 0 || index >= GetLength()) AfxThrowInvalidArgException();
    m_text[static_cast<std::size_t>(index)] = character;
}

// strcmp compares unsigned bytes and ends at the first NUL, which is the order asked for.
int CString::Compare(const char* other) const { return std::strcmp(m_text.c_str(), OrEmpty(other)); }

int CString::CompareNoCase(const char* other) const {
    const std::string left = qfc::FoldAnsiToLower(m_text.c_str());
    const std::string right = qfc::FoldAnsiToLower(OrEmpty(other));
    return Sign(left.compare(right));
}

int CString::Find(char character, int start) const {
    if (start < 0 || start > GetLength()) return -1;
    const auto found = m_text.find(character, static_cast<std::size_t>(start));
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

int CString::Find(const char* text, int start) const {
    if (text == nullptr || start < 0 || start > GetLength()) return -1;
    const auto found = m_text.find(text, static_cast<std::size_t>(start));
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

int CString::ReverseFind(char character) const {
    const auto found = m_text.rfind(character);
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

CString CString::Left(int count) const { return Mid(0, count); }

CString CString::Right(int count) const {
    const int length = std::clamp(count, 0, GetLength());
    return Mid(GetLength() - length, length);
}

CString CString::Mid(int first) const { return Mid(first, GetLength()); }

CString CString::Mid(int first, int count) const {
    const int from = std::clamp(first, 0, GetLength());
    const int length = std::clamp(count, 0, GetLength() - from);
    return CString(View().substr(static_cast<std::size_t>(from), static_cast<std::size_t>(length)));
}

CString& CString::MakeLower() {
    m_text = qfc::FoldAnsiToLower(m_text);
    return *this;
}

CString& CString::MakeUpper() {
    m_text = qfc::FoldAnsiToUpper(m_text);
    return *this;
}

CString CString::Tokenize(const char* delimiters, int& position) const {
    if (position >= 0 && position < GetLength()) {
        const char* set = OrEmpty(delimiters);
        const auto first = m_text.find_first_not_of(set, static_cast<std::size_t>(position));
        if (first != std::string::npos) {
            const auto last = std::min(m_text.find_first_of(set, first), m_text.size());
            position = static_cast<int>(last) + 1;
            return CString(View().substr(first, last - first));
        }
    }
    position = -1;
    return CString();
}

int CString::Replace(char from, char to) {
    const auto count = std::count(m_text.begin(), m_text.end(), from);
    std::replace(m_text.begin(), m_text.end(), from, to);
    return from == to ? 0 : static_cast<int>(count);
}

int CString::Replace(const char* from, const char* to) {
    const std::string_view pattern = OrEmpty(from);
    const std::string_view replacement = OrEmpty(to);
    if (pattern.empty()) return 0;
    std::string result;
    int count = 0;
    std::size_t position = 0;
    for (auto found = m_text.find(pattern); found != std::string::npos; found = m_text.find(pattern, position)) {
        result.append(m_text, position, found - position).append(replacement);
        position = found + pattern.size();
        ++count;
    }
    if (count == 0) return 0;
    result.append(m_text, position);
    m_text = std::move(result);
    return count;
}

void CString::Format(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    m_text = FormatText(format, arguments);
    va_end(arguments);
}

void CString::AppendFormat(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    m_text += FormatText(format, arguments);
    va_end(arguments);
}

CString& CString::operator+=(const CString& text) {
    m_text += text.m_text;
    return *this;
}

CString& CString::operator+=(const char* text) {
    m_text += OrEmpty(text);
    return *this;
}

CString& CString::operator+=(char character) {
    m_text += character;
    return *this;
}

CString operator+(const CString& left, const CString& right) { return CString(left) += right; }
CString operator+(const CString& left, const char* right) { return CString(left) += right; }
CString operator+(const char* left, const CString& right) { return CString(left) += right; }
CString operator+(const CString& left, char right) { return CString(left) += right; }
CString operator+(char left, const CString& right) { return CString(left, 1) += right; }
