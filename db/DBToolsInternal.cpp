#include "db/DBToolsInternal.h"

#include "db/Schema.h"
#include "db/Statements.h"
#include "platform/os/Files.h"

#include <algorithm>
#include <new>

DBToolsInternal::DBToolsInternal(const CString& path, bool& ok) {
    m_pDB.reset(new (std::nothrow) CppSQLite3DB);
    ok = Attempt([&] {
        m_pDB->open(path);
        qfc::schema::Ensure(*m_pDB);
    });
    if (!ok) m_pDB.reset();
}

DBToolsInternal::~DBToolsInternal() = default;

bool DBToolsInternal::ExportDatabase(const CString& targetPath) {
    bool bCopied = false;
    const bool bRan =
        Attempt([&] { bCopied = Connection().backupTo(qfc::NativePath(targetPath).c_str()) == qfc::sqlite::kOk; });
    return bRan && bCopied;
}

// A reader that turns writer in the middle of its transaction is refused at once where a writer waits for its turn; so
// the reading begins with a deletion of nothing.
bool DBToolsInternal::TakeTurn(const char* sql) { return HasConnection() && (!m_bShortcuts || Run(sql)); }

bool DBToolsInternal::ClearDatabase() {
    return std::all_of(qfc::schema::kClear.begin(), qfc::schema::kClear.end(),
                       [&](const char* drop) { return Run(drop); });
}

int DBToolsInternal::AddFolderOrderIndexColumn() {
    return Attempt([&] { qfc::schema::AddFolderOrderIndex(Connection()); }) ? 1 : 0;
}
