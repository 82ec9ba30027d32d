#include "bench/BenchLibrary.h"
#include "service/QFCLibraryManager.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <thread>

// A synchronous call whose operation has nothing to do: what the handshake with the worker costs.
namespace qfc::bench {

namespace {

void OneCallAfterAnother(benchmark::State& state) {
    BenchLibrary::Get();
    for (auto _ : state) benchmark::DoNotOptimize(QFCLibraryManager::fnDeleteFolder(0));
}

// The worker has gone to sleep for its 10 milliseconds when the call comes.
void CallAfterAPause(benchmark::State& state) {
    BenchLibrary::Get();
    for (auto _ : state) {
        state.PauseTiming();
        std::this_thread::sleep_for(std::chrono::milliseconds(23));
        state.ResumeTiming();
        benchmark::DoNotOptimize(QFCLibraryManager::fnDeleteFolder(0));
    }
}

}  // namespace

BENCHMARK(OneCallAfterAnother)->Unit(benchmark::kMicrosecond)->UseRealTime()->Iterations(2000);
BENCHMARK(CallAfterAPause)->Unit(benchmark::kMicrosecond)->UseRealTime()->Iterations(20);

}  // namespace qfc::bench
