#include "db/DBToolsGuard.h"

#include "db/SqliteCodes.h"

#include <cassert>

DBTools::Guard::Guard(DBTools& tools) : m_tools(tools), m_lock(tools.m_mutex, std::defer_lock) {
    const bool bNested = m_tools.m_owner == std::this_thread::get_id();
    assert(!bNested && "an operation of DBTools was called from inside another one on the same thread");
    if (bNested) return;
    m_lock.lock();
    m_tools.m_owner = std::this_thread::get_id();
    m_tools.m_bLastResult = false;
    m_bReady = !m_tools.HasConnection() || Begin();
}

DBTools::Guard::~Guard() {
    if (!m_lock.owns_lock()) return;
    if (!m_bSettled && m_tools.HasConnection()) RollBack();
    m_tools.m_owner = std::thread::id();
}

bool DBTools::Guard::Settle(bool bSucceeded) {
    m_bSettled = true;
    m_tools.m_bLastResult = bSucceeded;
    if (!m_tools.HasConnection()) return bSucceeded;
    if (bSucceeded) m_tools.m_bLastResult = Commit();
    if (!m_tools.m_bLastResult) RollBack();
    return m_tools.m_bLastResult;
}

// The access layer does not look at the outcome of BEGIN, END and ROLLBACK; the guard asks the connection instead.

bool DBTools::Guard::Begin() {
    CppSQLite3DB& db = m_tools.Connection();
    db.rollbackPending();
    // A rollback that was refused leaves the old transaction open: BEGIN would fail inside it, and END commit both.
    if (!db.isAutocommit()) return false;
    db.beginTransaction();
    return !db.isAutocommit();
}

bool DBTools::Guard::Commit() {
    CppSQLite3DB& db = m_tools.Connection();
    // SQLite rolled back by itself in the middle of the operation: what ran afterwards is not one transaction.
    if (db.isAutocommit()) return false;
    db.commitTransaction();
    // A failed commit often rolls back by itself, so that only the code tells (a full disk); a busy one stays open.
    return db.lastError() == qfc::sqlite::kOk && db.isAutocommit();
}

void DBTools::Guard::RollBack() {
    CppSQLite3DB& db = m_tools.Connection();
    if (!db.isAutocommit()) db.rollbackTransaction();
    db.rollbackPending();
}

void DBTools::FinishPending() {
    if (m_owner == std::this_thread::get_id()) return;
    const std::unique_lock lock(m_mutex, std::try_to_lock);
    if (lock.owns_lock() && HasConnection()) Connection().rollbackPending();
}
