#include "bench/BenchLibrary.h"
#include "bench/PlainSqlite.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "platform/os/GuidSource.h"
#include "service/QFCLibraryManager.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <memory>
#include <thread>
#include <zstd.h>

// Each iteration adds a batch of items with one payload each, so that the figures are adds per second.
namespace qfc::bench {

namespace {

// Large beside the 10 milliseconds after which the idle worker looks again.
constexpr int kBatch = 512;

std::vector<unsigned char> Compressed(const std::vector<unsigned char>& raw) {
    std::vector<unsigned char> packed(raw.size());
    const std::size_t size = ZSTD_compress(packed.data(), packed.size(), raw.data(), raw.size(), 3);
    if (ZSTD_isError(size)) return raw;
    packed.resize(size);
    return packed;
}

// The gallery owns them once they are added.
std::vector<CQItem*> MakeBatch(const std::vector<unsigned char>& payload) {
    std::vector<CQItem*> items;
    for (int i = 0; i < kBatch; ++i) items.push_back(MakeItem(payload).release());
    return items;
}

void PlainAdds(benchmark::State& state) {
    // A copy of the library's own empty file: the same tables, page size and encoding.
    static const std::string path = [] {
        const std::string copy = BenchLibrary::Get().Folder() + "plain.db";
        QFCLibraryManager::fnExportDB(copy.c_str());
        return copy;
    }();
    static PlainSqlite plain(path);
    static int folder = 1000;
    const auto raw = MakePayload(static_cast<std::size_t>(state.range(0)));
    const auto stored = Compressed(raw);
    for (auto _ : state) {
        ++folder;
        for (int i = 0; i < kBatch; ++i) {
            GUID guid;
            CoCreateGuid(&guid);
            plain.Add(guid, folder, i, static_cast<int>(raw.size()), stored);
        }
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}

void SyncAdds(benchmark::State& state) {
    BenchLibrary& library = BenchLibrary::Get();
    const auto raw = MakePayload(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        const CString folder = library.NewFolder();
        const std::vector<CQItem*> items = MakeBatch(raw);
        state.ResumeTiming();
        for (CQItem* item : items) QFCLibraryManager::fnAddItem(library.Gallery(), {folder}, item);
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}

void AsyncAdds(benchmark::State& state) {
    BenchLibrary& library = BenchLibrary::Get();
    const auto raw = MakePayload(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        const CString folder = library.NewFolder();
        const std::vector<CQItem*> items = MakeBatch(raw);
        const long target = library.Finished() + kBatch;
        state.ResumeTiming();
        for (CQItem* item : items) QFCLibraryManager::fnAddItemAsync(library.Gallery(), {folder}, item, 0);
        while (library.Finished() < target) std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}

// Into a folder that has so many items already, put there in memory alone.
void AddsIntoAFullFolder(benchmark::State& state) {
    BenchLibrary& library = BenchLibrary::Get();
    const auto raw = MakePayload(64);
    for (auto _ : state) {
        state.PauseTiming();
        const CString folder = library.NewFolder();
        CQFolder* full = AsGallery(library.Gallery())->GetFolderByPath(folder);
        for (std::int64_t i = 0; i < state.range(0); ++i) full->AddItem(std::make_unique<CQItem>().release(), 1);
        const std::vector<CQItem*> items = MakeBatch(raw);
        state.ResumeTiming();
        for (CQItem* item : items) QFCLibraryManager::fnAddItem(library.Gallery(), {folder}, item);
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}

}  // namespace

BENCHMARK(PlainAdds)->Arg(64)->Arg(12 << 10)->Arg(100 << 10)->UseRealTime()->Iterations(1);
BENCHMARK(AsyncAdds)->Arg(64)->Arg(12 << 10)->Arg(100 << 10)->UseRealTime()->Iterations(1);
BENCHMARK(SyncAdds)->Arg(64)->Arg(12 << 10)->Arg(100 << 10)->UseRealTime()->Iterations(1);
BENCHMARK(AddsIntoAFullFolder)->Arg(0)->Arg(100'000)->UseRealTime()->Iterations(1);

}  // namespace qfc::bench
