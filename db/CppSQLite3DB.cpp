#include "db/CppSQLite3DB.h"

#include "db/CppSQLite3Exception.h"
#include "db/SqliteCodes.h"
#include "db/SqliteFiles.h"
#include "platform/os/Files.h"
#include "platform/text/Utf8.h"

#include <array>
#include <memory>
#include <optional>
#include <sqlite3.h>
#include <string>
#include <string_view>
#include <utility>

static_assert(qfc::sqlite::kError == SQLITE_ERROR && qfc::sqlite::kCorrupt == SQLITE_CORRUPT);
static_assert(qfc::sqlite::kIoError == SQLITE_IOERR);
static_assert(qfc::sqlite::kOk == SQLITE_OK && qfc::sqlite::kNoMem == SQLITE_NOMEM);
static_assert(qfc::sqlite::kReadOnly == SQLITE_READONLY && qfc::sqlite::kCantOpen == SQLITE_CANTOPEN);
static_assert(qfc::sqlite::kSchema == SQLITE_SCHEMA && qfc::sqlite::kMisuse == SQLITE_MISUSE);
static_assert(qfc::sqlite::kNotADatabase == SQLITE_NOTADB);
static_assert(qfc::sqlite::kReadOnlyRollback == SQLITE_READONLY_ROLLBACK);
static_assert(qfc::sqlite::kTypeInteger == SQLITE_INTEGER && qfc::sqlite::kTypeFloat == SQLITE_FLOAT);
static_assert(qfc::sqlite::kTypeText == SQLITE_TEXT && qfc::sqlite::kTypeBlob == SQLITE_BLOB);
static_assert(qfc::sqlite::kTypeNull == SQLITE_NULL);

namespace {

// The path buffer of the interface, its closing NUL included.
constexpr std::size_t kPathUnits = 261;
// As often as SQLite itself tries again when the schema keeps changing.
constexpr int kSchemaRetries = 50;

[[noreturn]] void ThrowCantOpen() { throw CppSQLite3Exception(SQLITE_CANTOPEN, sqlite3_errstr(SQLITE_CANTOPEN)); }

// SQLite gives names a second meaning: the empty one is a database that nobody sees, ":memory:" one without a file, and
// "file:..." may carry options. Here a name is a file's name and nothing else.
template <typename Path>
Path FileName(const Path& strNative) {
    if (strNative.empty() || strNative.front() == '/') return strNative;
    const char szHere[] = "./";
    return Path(szHere, szHere + 2) + strNative;
}

// Empty for a name whose bytes form no text. SQLite would replace what does not convert, and open another file.
std::optional<std::u16string> Utf16Name(std::string_view strNative) {
    std::u16string wide;
    while (!strNative.empty()) {
        const qfc::DecodedCharacter next = qfc::DecodeUtf8(strNative);
        if (!next.valid) return std::nullopt;
        qfc::AppendUtf16(wide, next.character);
        strNative.remove_prefix(next.length);
    }
    return wide;
}

// Empty for a path that is none, forms no text or is longer than the interface's buffer.
std::optional<std::u16string> WidePath(const char* szFile) {
    auto wide = Utf16Name(qfc::NativePath(szFile));
    if (wide && (wide->empty() || wide->size() >= kPathUnits)) wide.reset();
    return wide;
}

// Whether SQLite's file system can name the file and the journal beside it. It counts bytes of UTF-8, not units, and it
// counts them with the folders before a relative path, and links resolved.
bool FitsTheFileSystem(const std::string& strNative) {
    constexpr std::size_t kJournalSuffix = std::string_view(qfc::sqlite::kJournalSuffix).size();
    sqlite3_vfs* pVfs = sqlite3_vfs_find(nullptr);
    if (pVfs == nullptr) return false;
    std::string strFull(static_cast<std::size_t>(pVfs->mxPathname) + 1, '\0');
    const int nResult = pVfs->xFullPathname(pVfs, strNative.c_str(), static_cast<int>(strFull.size()), strFull.data());
    const std::size_t nLength = std::string_view(strFull.c_str()).size();
    return (nResult & 0xFF) == SQLITE_OK && nLength + kJournalSuffix < strFull.size();
}

struct CloseHandle {
    void operator()(sqlite3* pDB) const { sqlite3_close(pDB); }
};

sqlite3_stmt* Prepare(sqlite3* pDB, const char* szSQL) {
    sqlite3_stmt* pVM = nullptr;
    const int nResult = sqlite3_prepare(pDB, szSQL, -1, &pVM, nullptr);
    if (nResult != SQLITE_OK) throw CppSQLite3Exception(nResult, sqlite3_errmsg(pDB));
    return pVM;
}

void ThrowUnlessOk(int nResult) {
    if (nResult != SQLITE_OK) throw CppSQLite3Exception(nResult & 0xFF, sqlite3_errstr(nResult));
}

// Read through SQLite's own file: a second one of this process would, when it is closed, take all locks of the first.
bool SaysWriteAhead(sqlite3_file& file) {
    std::array<unsigned char, 2> versions{};
    constexpr int kVersionsOffset = 18;
    constexpr unsigned char kLogVersion = 2;
    const int nResult =
        file.pMethods->xRead(&file, versions.data(), static_cast<int>(versions.size()), kVersionsOffset);
    // A file that ends before has no header yet.
    if (nResult != SQLITE_IOERR_SHORT_READ) ThrowUnlessOk(nResult);
    return versions[0] == kLogVersion || versions[1] == kLogVersion;
}

}  // namespace

CppSQLite3DB::CppSQLite3DB() = default;

CppSQLite3DB::~CppSQLite3DB() {
    if (sqlite3_close(m_pDB) == SQLITE_OK) return;
    // Statements are still alive. The transaction may not outlive this object with them.
    rollbackPending();
    sqlite3_close_v2(m_pDB);
}

void CppSQLite3DB::open(const char* szFile) {
    close();
    const auto wide = WidePath(szFile);
    if (!wide) ThrowCantOpen();
    FinishOpen(sqlite3_open16(FileName(*wide).c_str(), &m_pDB));
}

bool CppSQLite3DB::takesPath(const char* szFile) {
    return WidePath(szFile).has_value() && FitsTheFileSystem(FileName(qfc::NativePath(szFile)));
}

void CppSQLite3DB::openReadOnly(const char* szFile) {
    close();
    if (szFile == nullptr || *szFile == '\0') ThrowCantOpen();
    const std::string strFile = qfc::NativePath(szFile);
    if (!Utf16Name(strFile)) ThrowCantOpen();
    FinishOpen(sqlite3_open_v2(FileName(strFile).c_str(), &m_pDB, SQLITE_OPEN_READONLY, nullptr));
}

void CppSQLite3DB::FinishOpen(int nResult) {
    if (nResult != SQLITE_OK) {
        const std::unique_ptr<sqlite3, CloseHandle> pFailed(std::exchange(m_pDB, nullptr));
        throw CppSQLite3Exception(nResult, sqlite3_errmsg(pFailed.get()));
    }
    sqlite3_busy_timeout(m_pDB, m_nBusyTimeoutMs);
}

void CppSQLite3DB::close() {
    if (m_pDB == nullptr) return;
    const int nResult = sqlite3_close(m_pDB);
    if (nResult != SQLITE_OK) throw CppSQLite3Exception(nResult, sqlite3_errmsg(m_pDB));
    m_pDB = nullptr;
    m_bInTransaction = false;
}

void CppSQLite3DB::setBusyTimeout(int nMillisecs) {
    m_nBusyTimeoutMs = nMillisecs;
    if (m_pDB != nullptr) sqlite3_busy_timeout(m_pDB, nMillisecs);
}

CppSQLite3Statement CppSQLite3DB::compileStatement(const char* szSQL) {
    CheckDB();
    return CppSQLite3Statement(m_pDB, Prepare(m_pDB, szSQL));
}

CppSQLite3Query CppSQLite3DB::execQuery(const char* szSQL) {
    CheckDB();
    for (int nTry = 0;; ++nTry) {
        sqlite3_stmt* pVM = Prepare(m_pDB, szSQL);
        const int nStep = sqlite3_step(pVM);
        if (nStep == SQLITE_DONE || nStep == SQLITE_ROW) return CppSQLite3Query(m_pDB, pVM, nStep == SQLITE_DONE);
        const int nResult = sqlite3_finalize(pVM);
        if (nResult != SQLITE_SCHEMA || nTry == kSchemaRetries) {
            throw CppSQLite3Exception(nResult, sqlite3_errmsg(m_pDB));
        }
    }
}

bool CppSQLite3DB::Issue(bool bWhileInTransaction, const char* szSQL, bool bFlagAfterwards) {
    if (m_pDB == nullptr || m_bInTransaction != bWhileInTransaction) return false;
    sqlite3_exec(m_pDB, szSQL, nullptr, nullptr, nullptr);
    m_bInTransaction = bFlagAfterwards;
    return true;
}

bool CppSQLite3DB::beginTransaction() { return Issue(false, "BEGIN TRANSACTION;", true); }

bool CppSQLite3DB::commitTransaction() { return Issue(true, "END TRANSACTION;", false); }

bool CppSQLite3DB::rollbackTransaction() { return Issue(true, "ROLLBACK TRANSACTION;", false); }

bool CppSQLite3DB::isAutocommit() const { return m_pDB == nullptr || sqlite3_get_autocommit(m_pDB) != 0; }

int CppSQLite3DB::lastError() const { return m_pDB != nullptr ? sqlite3_errcode(m_pDB) : SQLITE_OK; }

int CppSQLite3DB::lastExtendedError() const { return m_pDB != nullptr ? sqlite3_extended_errcode(m_pDB) : SQLITE_OK; }

void CppSQLite3DB::rollbackPending() {
    if (!isAutocommit()) sqlite3_exec(m_pDB, "ROLLBACK TRANSACTION;", nullptr, nullptr, nullptr);
    m_bInTransaction = false;
}

int CppSQLite3DB::backupTo(const char* szUtf8Path) {
    CheckDB();
    if (szUtf8Path == nullptr || *szUtf8Path == '\0' || !Utf16Name(szUtf8Path)) return SQLITE_CANTOPEN;
    const std::string strTarget = FileName(std::string(szUtf8Path));
    sqlite3* pTarget = nullptr;
    int nResult = sqlite3_open(strTarget.c_str(), &pTarget);
    if (nResult == SQLITE_OK) {
        if (sqlite3_backup* pBackup = sqlite3_backup_init(pTarget, "main", m_pDB, "main")) {
            sqlite3_backup_step(pBackup, -1);
            sqlite3_backup_finish(pBackup);
        }
        nResult = sqlite3_errcode(pTarget);
    }
    sqlite3_close(pTarget);
    return nResult;
}

bool CppSQLite3DB::usesWriteAheadLog() const {
    CheckDB();
    sqlite3_file* pFile = nullptr;
    sqlite3_vfs* pVfs = nullptr;
    sqlite3_file_control(m_pDB, "main", SQLITE_FCNTL_FILE_POINTER, &pFile);
    sqlite3_file_control(m_pDB, "main", SQLITE_FCNTL_VFS_POINTER, &pVfs);
    if (pFile == nullptr || pFile->pMethods == nullptr || pVfs == nullptr) return false;
    if (SaysWriteAhead(*pFile)) return true;
    // SQLite reads a log that is there, whatever the header says.
    int nExists = 0;
    const char* szLog = sqlite3_filename_wal(sqlite3_db_filename(m_pDB, "main"));
    ThrowUnlessOk(pVfs->xAccess(pVfs, szLog, SQLITE_ACCESS_EXISTS, &nExists));
    return nExists != 0;
}

void CppSQLite3DB::CheckDB() const {
    if (m_pDB == nullptr) throw CppSQLite3Exception(CPPSQLITE_ERROR, "Database not open");
}
