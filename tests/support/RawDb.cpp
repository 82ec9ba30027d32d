#include "tests/support/RawDb.h"

#include <memory>
#include <sqlite3.h>
#include <stdexcept>

namespace qfc::test {
namespace {

struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

std::string Hex(const unsigned char* bytes, int length) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (int i = 0; i < length; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}

std::string Literal(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_NULL:
            return "NULL";
        case SQLITE_TEXT:
            return "'" + std::string(reinterpret_cast<const char*>(sqlite3_column_text(statement, column))) + "'";
        case SQLITE_BLOB: {
            const int length = sqlite3_column_bytes(statement, column);
            return "X'" + Hex(static_cast<const unsigned char*>(sqlite3_column_blob(statement, column)), length) + "'";
        }
        default:
            return reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    }
}

}  // namespace

RawDb::RawDb(const std::string& path) {
    if (sqlite3_open(path.c_str(), &m_db) == SQLITE_OK) return;
    const std::string message = sqlite3_errmsg(m_db);
    sqlite3_close(m_db);
    throw std::runtime_error(path + ": " + message);
}

RawDb::~RawDb() { sqlite3_close(m_db); }

void RawDb::Exec(const std::string& sql) {
    if (sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sql + ": " + sqlite3_errmsg(m_db));
    }
}

std::vector<RawDb::Row> RawDb::Rows(const std::string& sql) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(m_db, sql.c_str(), -1, &raw, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sql + ": " + sqlite3_errmsg(m_db));
    }
    const std::unique_ptr<sqlite3_stmt, Finalizer> statement(raw);
    std::vector<Row> rows;
    int step = sqlite3_step(raw);
    for (; step == SQLITE_ROW; step = sqlite3_step(raw)) {
        Row row;
        for (int column = 0; column < sqlite3_column_count(raw); ++column) row.push_back(Literal(raw, column));
        rows.push_back(std::move(row));
    }
    if (step != SQLITE_DONE) throw std::runtime_error(sql + ": " + sqlite3_errmsg(m_db));
    return rows;
}

std::string RawDb::Cell(const std::string& sql) {
    const auto rows = Rows(sql);
    if (rows.empty()) throw std::runtime_error("no row: " + sql);
    return rows.front().front();
}

std::string RawDb::Dump() {
    std::string text;
    for (const Row& table : Rows("select name, sql from sqlite_master where type = 'table' order by name")) {
        const std::string name = table[0].substr(1, table[0].size() - 2);
        text += table[1] + "\n";
        for (const Row& row : Rows("select rowid, * from " + name + " order by rowid")) {
            text += name;
            for (const std::string& cell : row) text += " " + cell;
            text += "\n";
        }
    }
    return text;
}

void RefuseWrites(const std::string& path, const std::string& table) {
    for (const std::string event : {"insert", "update"}) {
        RawDb(path).Exec("create trigger REFUSE_" + event + "_" + table + " before " + event + " on " + table +
                         " begin select raise(fail, 'refused'); end");
    }
}

std::string DumpOf(const std::string& path) { return RawDb(path).Dump(); }

}  // namespace qfc::test
