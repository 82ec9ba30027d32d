#include "platform/framework/CString.h"

namespace {

constexpr const char* kWhiteSpace = " \t\n\v\f\r";

void CutFront(std::string& text, std::string_view set) {
    text.erase(0, std::min(text.find_first_not_of(set), text.size()));
}

void CutBack(std::string& text, std::string_view set) {
    // npos + 1 is 0, which is right for a text of nothing but the set.
    text.erase(text.find_last_not_of(set) + 1);
}

std::string_view AsSet(const char* set) { return set != nullptr ? set : ""; }

}  // namespace

CString& CString::TrimLeft() { return TrimLeft(kWhiteSpace); }

CString& CString::TrimLeft(char character) {
    CutFront(m_text, {&character, 1});
    return *this;
}

CString& CString::TrimLeft(const char* set) {
    CutFront(m_text, AsSet(set));
    return *this;
}

CString& CString::TrimRight() { return TrimRight(kWhiteSpace); }

CString& CString::TrimRight(char character) {
    CutBack(m_text, {&character, 1});
    return *this;
}

CString& CString::TrimRight(const char* set) {
    CutBack(m_text, AsSet(set));
    return *this;
}

CString& CString::Trim() { return TrimRight().TrimLeft(); }
CString& CString::Trim(char character) { return TrimRight(character).TrimLeft(character); }
CString& CString::Trim(const char* set) { return TrimRight(set).TrimLeft(set); }
