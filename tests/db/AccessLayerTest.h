#pragma once

#include "db/CppSQLite3.h"
#include "tests/support/FaultVfs.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <string>

namespace qfc::test {

// The full text of the exception that the work throws; empty when it throws none.
template <typename Work>
std::string ErrorOf(Work&& work) {
    try {
        work();
    } catch (const CppSQLite3Exception& error) {
        return error.errorMessage();
    }
    return "";
}

// An open connection to a fresh file with a table T(N INTEGER, S TEXT, B BLOB).
class AccessLayerTest : public testing::Test {
protected:
    void SetUp() override {
        m_db.open(m_path.c_str());
        Run("CREATE TABLE T(N INTEGER, S TEXT, B BLOB)");
    }

    void Run(const char* sql) { m_db.compileStatement(sql).execDML(); }
    int Number(const char* sql) { return m_db.execQuery(sql).getIntField(0, -4711); }

    FaultVfs m_disk;
    TempFolder m_folder;
    std::string m_path = m_folder / "test.db";
    CppSQLite3DB m_db;
};

}  // namespace qfc::test
