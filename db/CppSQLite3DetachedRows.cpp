#include "db/CppSQLite3DetachedRows.h"

#include "db/CppSQLite3Exception.h"

#include <algorithm>
#include <sqlite3.h>
#include <utility>

namespace qfc {
namespace {

[[noreturn]] void ThrowNoMemory() { throw CppSQLite3Exception(SQLITE_NOMEM, sqlite3_errstr(SQLITE_NOMEM)); }

}  // namespace

void DetachedRows::FreeValue::operator()(sqlite3_value* value) const { sqlite3_value_free(value); }

DetachedRows::DetachedRows(sqlite3_stmt* statement) {
    const int columns = sqlite3_column_count(statement);
    for (int column = 0; column < columns; ++column) {
        const char* name = sqlite3_column_name(statement, column);
        if (name == nullptr) ThrowNoMemory();
        m_names.emplace_back(name);
    }
}

DetachedRows::~DetachedRows() = default;

void DetachedRows::Append(sqlite3_stmt* statement) {
    std::vector<Value> row;
    row.reserve(m_names.size());
    for (int column = 0; column < static_cast<int>(m_names.size()); ++column) {
        // Texts are brought to UTF-8 here, where a lack of memory can still be reported.
        const bool isText = sqlite3_column_type(statement, column) == SQLITE_TEXT;
        if (isText && sqlite3_column_text(statement, column) == nullptr) ThrowNoMemory();
        row.emplace_back(sqlite3_value_dup(sqlite3_column_value(statement, column)));
        if (row.back() == nullptr) ThrowNoMemory();
    }
    m_rows.push_back(std::move(row));
}

sqlite3_value* DetachedRows::Cell(int column) const {
    return m_rows.empty() ? nullptr : m_rows.front()[static_cast<std::size_t>(column)].get();
}

int DetachedRows::Type(int column) const {
    sqlite3_value* cell = Cell(column);
    return cell != nullptr ? sqlite3_value_type(cell) : SQLITE_NULL;
}

int DetachedRows::Int(int column) const {
    sqlite3_value* cell = Cell(column);
    return cell != nullptr ? sqlite3_value_int(cell) : 0;
}

std::int64_t DetachedRows::Int64(int column) const {
    sqlite3_value* cell = Cell(column);
    return cell != nullptr ? sqlite3_value_int64(cell) : 0;
}

// A number that is asked for as text or bytes is turned into text in a copy: without memory for it, SQLite would leave
// NULL in its place.
void DetachedRows::GiveNumberItsText(int column) {
    const int type = Type(column);
    if (type != SQLITE_INTEGER && type != SQLITE_FLOAT) return;
    if (std::find(m_numbersWithText.begin(), m_numbersWithText.end(), column) != m_numbersWithText.end()) return;
    Value copy(sqlite3_value_dup(Cell(column)));
    if (copy == nullptr || sqlite3_value_text(copy.get()) == nullptr) ThrowNoMemory();
    m_numbersWithText.push_back(column);
    m_rows.front()[static_cast<std::size_t>(column)] = std::move(copy);
}

const char* DetachedRows::Text(int column) {
    GiveNumberItsText(column);
    sqlite3_value* cell = Cell(column);
    return cell != nullptr ? reinterpret_cast<const char*>(sqlite3_value_text(cell)) : nullptr;
}

const unsigned char* DetachedRows::Blob(int column, int& length) {
    GiveNumberItsText(column);
    sqlite3_value* cell = Cell(column);
    length = cell != nullptr ? sqlite3_value_bytes(cell) : 0;
    return cell != nullptr ? static_cast<const unsigned char*>(sqlite3_value_blob(cell)) : nullptr;
}

}  // namespace qfc
