#pragma once

#include <string>
#include <vector>

struct sqlite3;

namespace qfc::test {

// A plain connection to a database file, beside the code under test: fills in rows by hand and looks at what is really
// stored. Throws std::runtime_error with SQLite's text. Cells read as SQL literals: 5, 'text', X'00FF', NULL.
class RawDb {
public:
    using Row = std::vector<std::string>;

    // Makes the file when it is missing.
    explicit RawDb(const std::string& path);
    ~RawDb();
    RawDb(const RawDb&) = delete;
    RawDb& operator=(const RawDb&) = delete;

    // Any number of statements.
    void Exec(const std::string& sql);
    std::vector<Row> Rows(const std::string& sql);
    // The first cell of the first row.
    std::string Cell(const std::string& sql);
    // Every table with all its rows, in one text: equal dumps are equal contents.
    std::string Dump();

    sqlite3* Handle() const { return m_db; }

private:
    sqlite3* m_db = nullptr;
};

// From now on the database refuses to insert into the table, and to change its rows.
void RefuseWrites(const std::string& path, const std::string& table);

// The dump as a fresh connection sees the file.
std::string DumpOf(const std::string& path);

}  // namespace qfc::test
