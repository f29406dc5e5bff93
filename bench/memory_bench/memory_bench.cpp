// memory_bench.cpp - Google Benchmark on the arena pattern: many small pieces
// (8 to 256 bytes) taken one after another, then all given back at once.
// CVTBlockBuffer and the vtmem_ block allocator (with and without its lock)
// beside malloc/free one by one and the standard library's pmr resources.
//
// Every variant writes one byte into each piece, and the figure "per_piece"
// is the time per piece, the give-back included. The library is called
// through the shared object, as an application calls it.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <memory_resource>
#include <vector>

#include "vetra/block_buffer.h"
#include "vetra/vtmem.h"

namespace {

// About 2 MiB a round: three blocks of the default 1 MiB.
constexpr int kPieces = 16384;

const std::vector<unsigned int>& Sizes() {
    static const std::vector<unsigned int> sizes = [] {
        std::vector<unsigned int> out(kPieces);
        uint32_t seed = 12345;
        for (unsigned int& size : out) {
            seed = seed * 1664525u + 1013904223u;
            size = 8 + (seed >> 8) % 249;
        }
        return out;
    }();
    return sizes;
}

void Count(benchmark::State& state) {
    state.counters["per_piece"] = benchmark::Counter(
        kPieces, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Touch(void* p, unsigned int i) {
    *static_cast<char*>(p) = char(i);
    benchmark::DoNotOptimize(p);
}

void BM_BlockBuffer(benchmark::State& state) {
    const std::vector<unsigned int>& sizes = Sizes();
    CVTBlockBuffer buffer;
    for (auto _ : state) {
        for (unsigned int i = 0; i < kPieces; ++i)
            Touch(buffer.GetBuffer(sizes[i]), i);
        buffer.Reset();
    }
    Count(state);
}
BENCHMARK(BM_BlockBuffer);

// Arg 0: no lock, 1: with the lock (taken by one thread, never contended).
void BM_VtmemBlockAllocator(benchmark::State& state) {
    const std::vector<unsigned int>& sizes = Sizes();
    _vtmem_allocator_t* a = vtmem_block_allocator_new(0x100000, 0);
    vtmem_block_allocator_use_lock(a, state.range(0) != 0);
    for (auto _ : state) {
        for (unsigned int i = 0; i < kPieces; ++i)
            Touch(vtmem_alloc(a, sizes[i]), i);
        vtmem_reset(a);
    }
    vtmem_destroy_allocator(a);
    Count(state);
    state.SetLabel(state.range(0) != 0 ? "locked" : "unlocked");
}
BENCHMARK(BM_VtmemBlockAllocator)->Arg(0)->Arg(1);

void BM_MallocFree(benchmark::State& state) {
    const std::vector<unsigned int>& sizes = Sizes();
    std::vector<void*> pieces(kPieces);
    for (auto _ : state) {
        for (unsigned int i = 0; i < kPieces; ++i) {
            pieces[i] = std::malloc(sizes[i]);
            Touch(pieces[i], i);
        }
        for (void* p : pieces)
            std::free(p);
    }
    Count(state);
}
BENCHMARK(BM_MallocFree);

// The resource starts on a buffer that holds a whole round, so release()
// goes back to it without touching the heap, as Reset keeps its blocks.
// Arg: the alignment asked for (16, the default, or 1 as the block buffer).
void BM_MonotonicBuffer(benchmark::State& state) {
    const std::vector<unsigned int>& sizes = Sizes();
    const size_t align = size_t(state.range(0));
    std::vector<char> initial(4 << 20);
    std::pmr::monotonic_buffer_resource pool(initial.data(), initial.size(),
                                             std::pmr::null_memory_resource());
    for (auto _ : state) {
        for (unsigned int i = 0; i < kPieces; ++i)
            Touch(pool.allocate(sizes[i], align), i);
        pool.release();
    }
    Count(state);
}
BENCHMARK(BM_MonotonicBuffer)->Arg(16)->Arg(1);

// A pool gives pieces back one by one and keeps its chunks for the next round.
void BM_UnsynchronizedPool(benchmark::State& state) {
    const std::vector<unsigned int>& sizes = Sizes();
    std::vector<void*> pieces(kPieces);
    std::pmr::unsynchronized_pool_resource pool;
    for (auto _ : state) {
        for (unsigned int i = 0; i < kPieces; ++i) {
            pieces[i] = pool.allocate(sizes[i]);
            Touch(pieces[i], i);
        }
        for (unsigned int i = 0; i < kPieces; ++i)
            pool.deallocate(pieces[i], sizes[i]);
    }
    Count(state);
}
BENCHMARK(BM_UnsynchronizedPool);

} // namespace
