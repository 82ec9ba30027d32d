#pragma once

#include "db/CppSQLite3Query.h"
#include "db/CppSQLite3Statement.h"
#include "platform/Export.h"

struct sqlite3;

// One open connection to a database file; throws CppSQLite3Exception on every failure. It holds no lock: a connection,
// its statements and its live queries are used by one thread at a time.
class QFCLIB_API CppSQLite3DB {
public:
    CppSQLite3DB();
    // Closes. Swallows errors, and leaves no handle behind: with statements still alive the connection ends with the
    // last of them.
    virtual ~CppSQLite3DB();
    CppSQLite3DB(const CppSQLite3DB&) = delete;
    CppSQLite3DB& operator=(const CppSQLite3DB&) = delete;

    // Opens or creates. The path is in the ANSI code page; both separators work. A new file keeps its texts as UTF-16,
    // because it is opened by its wide path. A path of more than 260 units, or one whose bytes form no text, fails with
    // code 14, and so does, wherever a database is named, one of more bytes than SQLite's file system takes: 504 in
    // UTF-8, made absolute and with links resolved. After a failure the connection is closed.
    void open(const char* szFile);
    // Whether open would take the path, as far as the path and the folders on it decide.
    static bool takesPath(const char* szFile);
    // Opens an existing file and never writes to it, not even to recover it.
    void openReadOnly(const char* szFile);
    // Throws while statements are alive, and stays open then.
    void close();

    // Milliseconds to wait for other connections to the file; 60000 at first. Kept for later opens, too.
    void setBusyTimeout(int nMillisecs);

    CppSQLite3Statement compileStatement(const char* szSQL);
    CppSQLite3Query execQuery(const char* szSQL);

    // True when the statement was issued: begin outside, commit and rollback inside a transaction.
    // Kept: the outcome is not examined; the in-transaction flag follows the call. isAutocommit and lastError tell.
    bool beginTransaction();
    bool commitTransaction();
    bool rollbackTransaction();
    bool isInTransaction() const { return m_bInTransaction; }

    // Whether SQLite itself has no transaction open, whatever the flag says; true while closed.
    bool isAutocommit() const;
    // SQLite's result code of the last call on this connection, plain and extended; 0 while closed.
    int lastError() const;
    int lastExtendedError() const;
    // Rolls back what SQLite still has open, whatever the flag says; the flag is clear afterwards.
    void rollbackPending();
    // Copies the whole database to the file at the path (UTF-8) in one step. Answers the result code the target was
    // left with, 0 for success; never throws for SQLite's errors. On failure the target keeps what was copied so far.
    int backupTo(const char* szUtf8Path);

    // Whether the open file's header says that changes go to a write-ahead log, or such a log lies beside it. Asked
    // before the first statement, which would make the log's files. Throws when the file cannot be read.
    bool usesWriteAheadLog() const;

    // For tests and tools; absent while closed. Stays owned by this object.
    sqlite3* handle() const { return m_pDB; }

private:
    void CheckDB() const;
    void FinishOpen(int nResult);
    bool Issue(bool bWhileInTransaction, const char* szSQL, bool bFlagAfterwards);

    sqlite3* m_pDB = nullptr;
    int m_nBusyTimeoutMs = 60000;
    bool m_bInTransaction = false;
};
