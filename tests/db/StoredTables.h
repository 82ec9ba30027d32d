#pragma once

#include "tests/support/RawDb.h"

#include <cctype>
#include <map>
#include <string>

namespace qfc::test {

// With white space as single blanks and without the closing semicolon.
inline std::string Collapsed(const std::string& sql) {
    std::string text;
    for (const char c : sql) {
        const bool blank = std::isspace(static_cast<unsigned char>(c)) != 0;
        if (!blank) text += c;
        if (blank && !text.empty() && text.back() != ' ') text += ' ';
    }
    while (!text.empty() && (text.back() == ';' || text.back() == ' ')) text.pop_back();
    return text;
}

inline std::string Unquoted(const std::string& literal) { return literal.substr(1, literal.size() - 2); }

// The texts of the tables, by name.
inline std::map<std::string, std::string> StoredTables(const std::string& path) {
    std::map<std::string, std::string> tables;
    RawDb db(path);
    for (const auto& row : db.Rows("select name, sql from sqlite_master where type = 'table'")) {
        tables[Unquoted(row[0])] = Collapsed(Unquoted(row[1]));
    }
    return tables;
}

}  // namespace qfc::test
