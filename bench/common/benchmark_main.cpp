// benchmark_main.cpp - main() of the Google Benchmark programs: freed memory
// stays in the process before the first benchmark runs, then the library's
// own flags (--benchmark_filter and the rest) are read as usual.
#include <benchmark/benchmark.h>

#include "common/warm_heap.h"

int main(int argc, char** argv) {
    bench::KeepFreedMemory();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
