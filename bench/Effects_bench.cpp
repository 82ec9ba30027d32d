#include "bench/BenchLibrary.h"
#include "bench/PlainSqlite.h"
#include "db/DBTools.h"
#include "db/EffectRecords.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <sqlite3.h>
#include <stdexcept>

// 4,000 filter files of one filter each, listed and deleted beside plain SQLite on the same tables.
namespace qfc::bench {

namespace {

constexpr int kFiles = 4000;

// A library of its own, filled anew for each round; texts as in every library made without template.
const std::string& EffectLibrary() {
    static const std::string path = [] {
        const std::string made = BenchLibrary::Get().Folder() + "effects.db";
        bool ok = false;
        const DBTools tools(made.c_str(), ok);
        return made;
    }();
    return path;
}

void Execute(const std::string& sql) {
    sqlite3* db = nullptr;
    sqlite3_open(EffectLibrary().c_str(), &db);
    const int result = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
    sqlite3_close(db);
    if (result != SQLITE_OK) throw std::runtime_error("the library of effects cannot be changed");
}

void Fill() {
    Execute(
        "BEGIN; DELETE FROM FLT_FILE_TABLE; DELETE FROM FLT_TABLE;"
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
        std::to_string(kFiles) +
        ") INSERT INTO FLT_FILE_TABLE SELECT '/usr/lib/effects/effect ' || i || '.so', 1 FROM n;"
        "INSERT INTO FLT_TABLE SELECT randomblob(8), randomblob(456), FILE_NAME, randomblob(16) FROM"
        " FLT_FILE_TABLE ORDER BY rowid; COMMIT");
}

void PlainEffectScan(benchmark::State& state) {
    Fill();
    PlainSqlite plain(EffectLibrary());
    for (auto _ : state) {
        if (plain.Scan({"Select * from FLT_FILE_TABLE", "Select * from FLT_TABLE"}) < 2 * kFiles) {
            state.SkipWithError("rows are missing");
        }
    }
}

void LoadEffects(benchmark::State& state) {
    Fill();
    bool ok = false;
    DBTools tools(EffectLibrary().c_str(), ok);
    for (auto _ : state) {
        std::vector<DS_Filter_File_Record> files;
        if (!tools.LoadFilterFiles(files) || files.size() != kFiles) state.SkipWithError("files are missing");
    }
}

void PlainEffectDeletion(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        Fill();
        state.ResumeTiming();
        Execute(
            "BEGIN; DELETE FROM FLT_FILE_TABLE WHERE FILE_NAME LIKE '/%'; DELETE FROM FLT_TABLE WHERE FILE_NAME"
            " LIKE '/%'; COMMIT");
    }
}

void DeleteEffects(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        Fill();
        bool ok = false;
        DBTools tools(EffectLibrary().c_str(), ok);
        std::vector<DS_Filter_File_Record> files;
        ok = ok && tools.LoadFilterFiles(files);
        state.ResumeTiming();
        if (!ok || !tools.DeleteFilterFiles(files)) state.SkipWithError("files are not deleted");
    }
}

}  // namespace

BENCHMARK(PlainEffectScan)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(LoadEffects)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(PlainEffectDeletion)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(DeleteEffects)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace qfc::bench
