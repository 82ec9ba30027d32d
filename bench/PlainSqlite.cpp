#include "bench/PlainSqlite.h"

#include <sqlite3.h>
#include <stdexcept>

namespace qfc::bench {

namespace {

sqlite3* Open(const std::string& path) {
    sqlite3* db = nullptr;
    if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) throw std::runtime_error("cannot open " + path);
    return db;
}

void BindGuid(sqlite3_stmt* statement, int index, const GUID& guid) {
    sqlite3_bind_blob(statement, index, &guid, sizeof(GUID), SQLITE_TRANSIENT);
}

}  // namespace

PlainSqlite::PlainSqlite(const std::string& path)
    : m_db(Open(path), &sqlite3_close),
      m_item(Compile("REPLACE into ITEM_TABLE( CUR_THUMB_FRAME_NUM, ORG_THUMB_FRAME_NUM, BBID, ITEM_TYPE, ITEM_NAME, "
                     "DESCRIPTION, ANNOTATION, FILE_NAME, ATTRIB, TEMPLATE_PATH, TIMESTAMP, FILM_SIZE, FRAME_SIZE, "
                     "DELETABLE, ITEM_ID) values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")),
      m_relation(Compile("REPLACE into RELATION_TABLE( ITEM_ID, PARENT_ID, ITEM_INDEX) values (?, ?, ?)")),
      m_payload(Compile("REPLACE into CACHE_DATA_TABLE( PRE_COMPRESSED_SIZE, COMPRESSED_SIZE, COMPRESSED_DATA, "
                        "CACHE_DATA_TYPE, ITEM_ID) values (?, ?, ?, ?, ?)")) {}

PlainSqlite::~PlainSqlite() = default;

PlainSqlite::Statement PlainSqlite::Compile(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(m_db.get(), sql, -1, &statement, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(m_db.get()));
    }
    return Statement(statement, &sqlite3_finalize);
}

void PlainSqlite::Execute(const char* sql) {
    if (sqlite3_exec(m_db.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(m_db.get()));
    }
}

void PlainSqlite::Step(sqlite3_stmt* statement) {
    if (sqlite3_step(statement) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(m_db.get()));
    sqlite3_reset(statement);
}

void PlainSqlite::Add(const GUID& item, int folder, int index, int rawSize, std::span<const unsigned char> stored) {
    Execute("BEGIN TRANSACTION;");
    sqlite3_stmt* row = m_item.get();
    for (int column : {1, 2, 3, 9, 11, 12, 13, 14}) sqlite3_bind_int(row, column, 0);
    sqlite3_bind_int(row, 4, 1);
    sqlite3_bind_text(row, 5, "A clip of the benchmark.mp4", -1, SQLITE_STATIC);
    sqlite3_bind_text(row, 6, "2024 5 6 10 20 30 2024 5 6 10 20 30", -1, SQLITE_STATIC);
    sqlite3_bind_text(row, 7, "", -1, SQLITE_STATIC);
    sqlite3_bind_text(row, 8, "/media/footage/2024/A clip of the benchmark.mp4", -1, SQLITE_STATIC);
    sqlite3_bind_text(row, 10, "", -1, SQLITE_STATIC);
    BindGuid(row, 15, item);
    Step(row);

    BindGuid(m_relation.get(), 1, item);
    sqlite3_bind_int(m_relation.get(), 2, folder);
    sqlite3_bind_int(m_relation.get(), 3, index);
    Step(m_relation.get());

    const bool compressed = static_cast<int>(stored.size()) != rawSize;
    sqlite3_bind_int(m_payload.get(), 1, rawSize);
    sqlite3_bind_int(m_payload.get(), 2, compressed ? static_cast<int>(stored.size()) : 0);
    sqlite3_bind_blob(m_payload.get(), 3, stored.data(), static_cast<int>(stored.size()), SQLITE_TRANSIENT);
    sqlite3_bind_int(m_payload.get(), 4, 1);
    BindGuid(m_payload.get(), 5, item);
    Step(m_payload.get());
    Execute("END TRANSACTION;");
}

long PlainSqlite::ScanLibrary() {
    return Scan({"Select * from FOLDER_TABLE", "Select * from RELATION_TABLE", "Select * from ITEM_TABLE",
                 "Select * from TAG_ITEM_RELATION_TABLE"});
}

long PlainSqlite::Scan(std::initializer_list<const char*> statements) {
    long rows = 0;
    for (const char* sql : statements) {
        const Statement scan = Compile(sql);
        const int columns = sqlite3_column_count(scan.get());
        while (sqlite3_step(scan.get()) == SQLITE_ROW) {
            ++rows;
            for (int column = 0; column < columns; ++column) {
                if (sqlite3_column_type(scan.get(), column) == SQLITE_INTEGER) {
                    static_cast<void>(sqlite3_column_int(scan.get(), column));
                } else {
                    static_cast<void>(sqlite3_column_blob(scan.get(), column));
                    static_cast<void>(sqlite3_column_bytes(scan.get(), column));
                }
            }
        }
    }
    return rows;
}

}  // namespace qfc::bench
