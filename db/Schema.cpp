#include "db/Schema.h"

#include "db/CppSQLite3.h"
#include "db/Sql.h"
#include "db/SqliteCodes.h"

#include <string>

namespace qfc::schema {
namespace {

constexpr char kQueryOrderIndex[] =
    "SELECT * FROM sqlite_master WHERE name = 'FOLDER_TABLE' AND SQL LIKE '%ORDER_INDEX%';";
// Kept: the default is the text '-1'; the column's type turns it into the number.
constexpr char kAddOrderIndex[] = "ALTER TABLE FOLDER_TABLE ADD COLUMN ORDER_INDEX INTEGER DEFAULT '-1';";

bool Exists(CppSQLite3DB& db, const std::string& table) {
    const std::string sql =
        "select tbl_name from sqlite_master where name='" + table + "' AND tbl_name='" + table + "';";
    return !db.execQuery(sql.c_str()).eof();
}

void EnsureTable(CppSQLite3DB& db, const Table& table) {
    if (Exists(db, table.name)) return;
    try {
        db.execQuery(table.create).finalize();
    } catch (const CppSQLite3Exception&) {
        // Another process that starts on the same new file may have made it since the look.
        if (!Exists(db, table.name)) throw;
    }
}

}  // namespace

void Ensure(CppSQLite3DB& db) {
    for (const Table& table : kTables) EnsureTable(db, table);
}

void AddFolderOrderIndex(CppSQLite3DB& db) {
    CppSQLite3Query column = db.execQuery(kQueryOrderIndex);
    if (!column.eof()) return;
    column.finalize();
    db.compileStatement(kAddOrderIndex).execDML();
}

bool TakeTurnAtFolders(CppSQLite3DB& db) {
    for (bool bRetried = false;; bRetried = true) {
        try {
            db.compileStatement(sql::kTakeTurnAtFolders).execDML();
            return true;
        } catch (const CppSQLite3Exception& error) {
            // The writer before us may have changed the tables.
            if (bRetried || error.errorCode() != sqlite::kSchema) return false;
        }
    }
}

}  // namespace qfc::schema
