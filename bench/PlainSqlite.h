#pragma once

#include "platform/framework/Guid.h"

#include <initializer_list>
#include <memory>
#include <span>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace qfc::bench {

// The raw library underneath: the statements of an add, compiled once, in the transaction that the library gives them.
class PlainSqlite {
public:
    // Opens the file, which has its tables already; throws when that fails.
    explicit PlainSqlite(const std::string& path);
    ~PlainSqlite();

    void Add(const GUID& item, int folder, int index, int rawSize, std::span<const unsigned char> stored);
    // Reads every column of every row of the four tables a gallery is loaded from; the number of rows.
    long ScanLibrary();
    // The same of the rows that the statements bring.
    long Scan(std::initializer_list<const char*> statements);

private:
    using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;
    Statement Compile(const char* sql);
    void Execute(const char* sql);
    void Step(sqlite3_stmt* statement);

    std::unique_ptr<sqlite3, int (*)(sqlite3*)> m_db;
    Statement m_item;
    Statement m_relation;
    Statement m_payload;
};

}  // namespace qfc::bench
