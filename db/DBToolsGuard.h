#pragma once

#include "db/DBTools.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

// The guard of every operation of DBTools, for its own sources: the mutex, one transaction, and the outcome.
class DBTools::Guard {
public:
    // Takes the mutex without time limit and begins a transaction.
    explicit Guard(DBTools& tools);
    // An operation that an exception left is rolled back.
    ~Guard();
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

    // False when BEGIN did not take, or when this thread holds a guard already: the operation must not run then.
    bool IsReady() const { return m_bReady; }
    // Commits a success, rolls back a failure. True only for a success whose changes have reached the disk.
    bool Settle(bool bSucceeded);

private:
    bool Begin();
    bool Commit();
    void RollBack();

    DBTools& m_tools;
    std::unique_lock<std::mutex> m_lock;
    bool m_bReady = false;
    bool m_bSettled = false;
};

// refused: what to answer for an operation that may not run, ran out of memory, or whose success did not reach the
// disk.
template <typename Operation, typename Result>
Result DBTools::Guarded(Operation&& operation, Result refused) {
    Guard guard(*this);
    if (!guard.IsReady()) return refused;
    Result result{};
    try {
        result = operation();
    } catch (const std::bad_alloc&) {
        return refused;  // The guard rolls back.
    }
    const bool bSucceeded = result != Result{};
    return guard.Settle(bSucceeded) == bSucceeded ? result : refused;
}

// One transaction for all values: the first failure ends it.
template <typename Values, typename Operation>
bool DBTools::GuardedEach(const Values& values, Operation&& operation) {
    return Guarded([&] { return HasConnection() && std::all_of(values.begin(), values.end(), operation); });
}

// Rows are taken into memory under the guard: a live cursor would keep the file from other processes, and the
// transaction of this one from ending.
template <typename Operation>
bool DBTools::GuardedRows(CppSQLite3Query& query, Operation&& operation) {
    CppSQLite3Query rows;
    const bool bRead = Guarded([&] {
        if (!operation(rows)) return false;
        try {
            rows.detach();
        } catch (const CppSQLite3Exception&) {
            return false;
        }
        return true;
    });
    if (bRead) query = std::move(rows);
    return bRead;
}
