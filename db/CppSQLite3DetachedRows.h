#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

struct sqlite3_stmt;
struct sqlite3_value;

namespace qfc {

// Rows of a query that were taken into memory: each cell is SQLite's own copy of the value, so that it converts as the
// cell did. Belongs to one CppSQLite3Query and follows its thread.
class DetachedRows {
public:
    // Takes the column names. The statement is not kept.
    explicit DetachedRows(sqlite3_stmt* statement);
    ~DetachedRows();

    // Copies the row the statement stands on. Throws without memory.
    void Append(sqlite3_stmt* statement);

    bool IsEmpty() const { return m_rows.empty(); }
    // Frees the first row.
    void Pop() {
        m_rows.pop_front();
        m_numbersWithText.clear();
    }

    const char* Name(int column) const { return m_names[static_cast<std::size_t>(column)].c_str(); }
    // Of the first row; behind the last row every cell reads as NULL.
    int Type(int column) const;
    int Int(int column) const;
    std::int64_t Int64(int column) const;
    // Both throw without memory, and leave the cell as it was.
    const char* Text(int column);
    const unsigned char* Blob(int column, int& length);

private:
    struct FreeValue {
        void operator()(sqlite3_value* value) const;
    };
    using Value = std::unique_ptr<sqlite3_value, FreeValue>;

    sqlite3_value* Cell(int column) const;
    void GiveNumberItsText(int column);

    std::vector<std::string> m_names;
    std::deque<std::vector<Value>> m_rows;
    std::vector<int> m_numbersWithText;  // Columns of the first row.
};

}  // namespace qfc
