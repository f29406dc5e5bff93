// perf_counter_bench.cpp - the interval timer's Start + Stop, through the
// shared library, beside two reads of std::chrono::steady_clock, the floor it
// is held to (goal: within 1.2x). Run pinned, with interleaved repetitions:
//   taskset -c 1 perf_counter_bench --benchmark_repetitions=10 \
//       --benchmark_enable_random_interleaving=true
#include <benchmark/benchmark.h>

#include <chrono>

#include "vetra/perf_counter.h"

namespace {

void BM_PerfCounterStartStop(benchmark::State& state) {
    CVTPerfCounterEx timer;
    for (auto _ : state) {
        timer.Start();
        timer.Stop();
        benchmark::DoNotOptimize(timer);
    }
}
BENCHMARK(BM_PerfCounterStartStop);

void BM_SteadyClockTwice(benchmark::State& state) {
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        auto stop = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(start);
        benchmark::DoNotOptimize(stop);
    }
}
BENCHMARK(BM_SteadyClockTwice);

} // namespace

BENCHMARK_MAIN();
