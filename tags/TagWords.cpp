#include "tags/TagWords.h"

#include "platform/os/LocalTime.h"
#include "platform/text/AnsiText.h"
#include "tags/TagRecords.h"

namespace qfc {

LocalDate Today() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay};
}

int CategoryTypeOfWord(const CString& word) {
    if (word == "Date") return category_type::kDate;
    if (word == "Untagged") return category_type::kUntagged;
    if (word == "Face") return category_type::kFace;
    return category_type::kPlain;
}

int TagTypeOfWord(const CString& word) {
    if (word.CompareNoCase("Static") == 0) return tag_type::kStatic;
    if (word.CompareNoCase("Date") == 0) return tag_type::kDate;
    return tag_type::kString;
}

std::vector<std::string_view> SplitAnsi(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    const std::string_view wanted(&separator, 1);
    for (std::size_t start = 0;;) {
        const std::size_t end = FindInAnsi(text, wanted, start);
        parts.push_back(text.substr(start, end == std::string_view::npos ? end : end - start));
        if (end == std::string_view::npos) return parts;
        start = end + 1;
    }
}

TagSpecifier ReadTagSpecifier(std::string_view text, const LocalDate& today) {
    const auto parts = SplitAnsi(text, '@');
    if (parts.size() != 2) return {};
    const int type = TagTypeOfWord(CString(parts[0]));
    const CString written(parts[1]);
    return {type, type == tag_type::kDate ? DateTagName(today) : written, written};
}

CString DateTagName(const LocalDate& day) {
    CString name;
    name.Format("%4d-%02d-%02d~%4d-%02d-%02d", day.year, day.month, day.day, day.year, day.month, day.day);
    return name;
}

}  // namespace qfc
