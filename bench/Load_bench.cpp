#include "api/GalleryApi.h"
#include "bench/BenchLibrary.h"
#include "bench/PlainSqlite.h"
#include "db/DBTools.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/Handles.h"
#include "platform/os/GuidSource.h"
#include "service/QFCLibraryManager.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdexcept>

// A gallery of 1,000 folders and 50,000 items, 50 in each folder, loaded beside a plain scan of the same tables.
namespace qfc::bench {

namespace {

constexpr int kFolders = 1000;
constexpr int kItemsPerFolder = 50;

// Rows are written straight into a file of their own, since adding them one transaction each would take minutes.
std::string MakeLargeLibrary() {
    const std::string path = BenchLibrary::Get().Folder() + "large.db";
    bool ok = false;
    { DBTools tools(path.c_str(), ok); }
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    const std::string sql =
        "BEGIN;"
        "INSERT INTO FOLDER_TABLE VALUES('', 1, 'Media', 0, 0, 0, -1, 0, -1, 1);"
        "INSERT INTO GALLERY_TABLE VALUES(1, 1);"
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
        std::to_string(kFolders) +
        ")"
        " INSERT INTO FOLDER_TABLE SELECT '', 0, 'Folder ' || i, 0, 0, 0,"
        " CASE WHEN i <= 20 THEN 1 ELSE 1 + i % 20 + 1 END, 0, i, 1 + i FROM n;"
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < " +
        std::to_string(kFolders * kItemsPerFolder) +
        ")"
        " INSERT INTO ITEM_TABLE SELECT 0, 0, 0, 1, 'Clip ' || i || '.mp4', '2024 5 6 10 20 30 2024 5 6 10 20 30', '',"
        " '/media/footage/Clip ' || i || '.mp4', 0, '', 1700000000, 0, 0, 1, randomblob(16) FROM n;"
        "INSERT INTO RELATION_TABLE SELECT 2 + (rowid - 1) / " +
        std::to_string(kItemsPerFolder) + ", ITEM_ID, (rowid - 1) % " + std::to_string(kItemsPerFolder) +
        " FROM ITEM_TABLE;"
        "COMMIT;";
    char* message = nullptr;
    const int result = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message);
    const std::string why = message != nullptr ? message : "";
    sqlite3_free(message);
    sqlite3_close(db);
    if (result != SQLITE_OK) throw std::runtime_error("the large library cannot be made: " + why);
    return path;
}

const std::string& LargeLibrary() {
    static const std::string path = MakeLargeLibrary();
    return path;
}

void PlainScan(benchmark::State& state) {
    PlainSqlite plain(LargeLibrary());
    for (auto _ : state) {
        if (plain.ScanLibrary() < kFolders * kItemsPerFolder) state.SkipWithError("rows are missing");
    }
}

void LoadGallery(benchmark::State& state) {
    BenchLibrary::Get();
    const ULONGLONG session = QFCLibraryManager::StartDbSession4ImportLib(LargeLibrary().c_str());
    auto* tools = reinterpret_cast<DBTools*>(session);
    for (auto _ : state) {
        const ULONGLONG gallery = QFCLibraryManager::fnLoadGallery(1, tools);
        state.PauseTiming();
        if (gallery == 0 || AsGallery(gallery)->GetAllSubItemArray()->GetSize() != kFolders * kItemsPerFolder) {
            state.SkipWithError("items are missing");
        }
        QFCLibraryManager::fnCloseSessionGallery(gallery);
        state.ResumeTiming();
    }
    QFCLibraryManager::EndDbSession4ImportLib(session);
}

}  // namespace

BENCHMARK(PlainScan)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(LoadGallery)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace qfc::bench
