#include "service/LibraryOpening.h"

#include "db/CppSQLite3.h"
#include "db/SqliteFiles.h"
#include "platform/os/Files.h"
#include "platform/os/FolderLock.h"
#include "platform/os/LastError.h"
#include "platform/os/Places.h"
#include "platform/os/Sync.h"

#include <array>
#include <filesystem>
#include <string>
#include <system_error>

namespace qfc {
namespace {

constexpr DWORD kTurnPause = 10;  // Milliseconds.
// A minute, as long as a database waits for another process.
constexpr int kTurnTries = 6000;
constexpr int kMostLostJournals = 1000;

CString LibraryIn(const char* pszFolder) {
    CString strPath;
    strPath.Format("%s%s", pszFolder, kLibraryName);
    return strPath;
}

CString TemplatePath() {
    CString strTemplate;
    strTemplate.Format("%sOrvel.dat\\%s", HostFolder().c_str(), kLibraryName);
    return strTemplate;
}

// Only a file of which the system says that it is not there.
bool IsMissing(const std::string& file) {
    std::error_code error;
    return std::filesystem::status(file, error).type() == std::filesystem::file_type::not_found;
}

// Who makes a missing library does so under the lock of its folder, and others wait until it is there. False when it
// need not, or cannot, be made by us.
bool TakeTurnToMake(const std::string& file, FolderLock& turn) {
    for (int nTry = 0; nTry < kTurnTries; ++nTry) {
        if (!IsMissing(file)) return false;
        // Another process may have made it between the look and the lock.
        if (turn.TryLock()) return IsMissing(file);
        Sleep(kTurnPause);
    }
    return false;
}

// Under the first name that is free: what an earlier lost library left is as dear.
bool SetAside(const std::string& journal) {
    for (int nNumber = 1; nNumber <= kMostLostJournals; ++nNumber) {
        const std::string lost = journal + ".lost" + (nNumber == 1 ? "" : std::to_string(nNumber));
        if (RenameDurablyToNew(journal, lost)) return true;
        if (GetLastError() != ERROR_FILE_EXISTS) return false;
    }
    return false;
}

// What a lost library left behind would be taken for the unfinished business of the new one, or end with it. It is kept
// under another name: whoever only moved the library aside needs it.
bool SetJournalsAside(const std::string& file) {
    bool bAside = true;
    for (const char* pszSuffix : sqlite::kUnfinishedSuffixes) {
        const std::string journal = file + pszSuffix;
        if (!IsMissing(journal)) bAside = SetAside(journal) && bAside;
    }
    return bAside;
}

// Whatever goes wrong is ignored: the database then starts empty.
void Seed(const std::string& file) {
    const CString strTemplate = TemplatePath();
    if (PathFileExistsA(strTemplate)) CopyFileDurably(NativePath(strTemplate), file, false);
}

}  // namespace

CString FixLibraryPath() {
    std::array<char, MAX_PATH> folder{};
    const auto canBeOpened = [](const char* pszFolder) { return CppSQLite3DB::takesPath(LibraryIn(pszFolder)); };
    return FreezePlaces(folder.data(), MAX_PATH, canBeOpened) ? LibraryIn(folder.data()) : CString();
}

std::unique_ptr<DBTools> OpenLibrary(const CString& strPath, MissingLibrary missing) {
    // Where SQLite keeps the database and its journals, though the name in the data folder may be a link.
    const std::string file = WithoutLinks(NativePath(strPath));
    // Held until the database has made its tables: the journal that it makes meanwhile is nobody else's to remove.
    FolderLock turn(FolderOf(file));
    if (TakeTurnToMake(file, turn) && SetJournalsAside(file) && missing == MissingLibrary::kSeed) Seed(file);
    bool bOpened = true;
    auto pDBTools = std::make_unique<DBTools>(strPath, bOpened);
    return bOpened ? std::move(pDBTools) : nullptr;
}

}  // namespace qfc
