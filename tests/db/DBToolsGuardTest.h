#pragma once

#include "tests/db/DbTestSupport.h"
#include "tests/support/SqlTrace.h"

#include <optional>
#include <sqlite3.h>

namespace qfc::test {

// Each operation under a trace, with the connection within reach.
class DBToolsGuard : public LibraryTest {
protected:
    void SetUp() override {
        m_trace.emplace();
        LibraryTest::SetUp();
        m_connection = m_trace->Connection();
        sqlite3_busy_timeout(m_connection, 0);
        m_trace->Clear();
    }

    bool AddOne(int number = 1) { return AddItem(number, 5); }

    std::optional<SqlTrace> m_trace;
    sqlite3* m_connection = nullptr;
};

}  // namespace qfc::test
