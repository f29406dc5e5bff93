// Tests of the vtmem_ functions: which operation of the table each call reaches, the heap
// paths of the null allocator, the block allocator's sizes, clearing and lock, and several
// threads allocating under one lock.
#include "vetra/vtmem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "fake_heap.h"

namespace {

using vetra::memory::test::FakeHeap;

// A caller-built allocator that notes which operation was reached, and with what.
struct Recorder {
    std::string calls;
    size_t size = 0;
    void* lock = nullptr;
    char piece[64];
};
void* RecordAlloc(void* s, size_t size, void* lock) {
    Recorder& r = *static_cast<Recorder*>(s);
    r.calls += "alloc", r.size = size, r.lock = lock;
    return r.piece;
}
void RecordFree(void* s, void*) {
    static_cast<Recorder*>(s)->calls += "free";
}
void* RecordRealloc(void* s, void*, size_t size) {
    Recorder& r = *static_cast<Recorder*>(s);
    r.calls += "realloc", r.size = size;
    return r.piece;
}

using Call = void* (*)(_vtmem_allocator_t*, void*, size_t);
const Call kAlloc = [](_vtmem_allocator_t* a, void*, size_t n) { return vtmem_alloc(a, n); };
const Call kAlloc0 = [](_vtmem_allocator_t* a, void*, size_t n) { return vtmem_alloc0(a, n); };
const Call kFree = [](_vtmem_allocator_t* a, void* p, size_t) -> void* {
    return vtmem_free(a, p), nullptr;
};
const Call kRealloc = [](_vtmem_allocator_t* a, void* p, size_t n) {
    return vtmem_realloc(a, p, n);
};

TEST(Vtmem, ForwardsThroughTheTable) {
    const struct {
        Call call;
        bool withPointer;
        size_t size;
        const char* reached;
    } cases[] = {
        {kAlloc, false, 0, ""},      {kAlloc, false, 24, "alloc"},
        {kAlloc0, false, 0, ""},     {kAlloc0, false, 24, "alloc"},
        {kFree, false, 0, ""},       {kFree, true, 0, "free"},
        {kRealloc, false, 0, ""},    {kRealloc, false, 24, "alloc"},
        {kRealloc, true, 0, "free"}, {kRealloc, true, 24, "realloc"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(std::to_string(&row - cases));
        Recorder rec;
        std::memset(rec.piece, 0xAA, sizeof rec.piece);
        _vtmem_allocator_t a = {RecordAlloc, RecordFree, RecordRealloc, nullptr,  nullptr,
                                nullptr,     nullptr,    &rec,          &rec.size};
        char mine = 0;
        void* got = row.call(&a, row.withPointer ? &mine : nullptr, row.size);
        EXPECT_EQ(rec.calls, row.reached);
        EXPECT_EQ(got != nullptr, rec.calls == "alloc" || rec.calls == "realloc");
        EXPECT_EQ(rec.size, got != nullptr ? row.size : 0);
        EXPECT_EQ(rec.lock, rec.calls == "alloc" ? a.lock : nullptr);
        if (row.call == kAlloc0 && got != nullptr) {
            // A foreign allocator's piece is cleared over the full size asked.
            EXPECT_EQ(rec.piece[row.size - 1], 0);
            EXPECT_EQ(rec.piece[row.size], char(0xAA));
        }
    }
}

TEST(Vtmem, NullAllocatorIsTheHeap) {
    void* p = vtmem_alloc(nullptr, 0); // still reaches malloc: glibc's unique pointer
    EXPECT_NE(p, nullptr);
    EXPECT_EQ(vtmem_realloc(nullptr, p, 0), nullptr); // glibc frees it
    EXPECT_EQ(vtmem_size(nullptr), 0u);
    vtmem_reset(nullptr);
    vtmem_freeall(nullptr);
    vtmem_block_allocator_use_lock(nullptr, true);
    vtmem_destroy_allocator(nullptr);
}

TEST(Vtmem, BlockAllocator) {
    _vtmem_allocator_t* a = vtmem_block_allocator_new(4096, 0);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(vtmem_size(a), 0u);
    EXPECT_EQ(vtmem_alloc0(a, 0), nullptr);
    char* p = static_cast<char*>(vtmem_alloc(a, 10));
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(vtmem_alloc(a, 20), p + 10);
    EXPECT_EQ(vtmem_size(a), 4096u);
    vtmem_free(a, p); // nothing is given back alone
    EXPECT_EQ(vtmem_size(a), 4096u);
    EXPECT_EQ(vtmem_alloc(a, 4081), nullptr);  // no fallback to the heap
    EXPECT_EQ(vtmem_realloc(a, p, 5), p + 30); // a fresh piece, nothing copied
    std::memset(p, 0xAA, 64);
    vtmem_reset(a);
    EXPECT_EQ(vtmem_size(a), 4096u);
    // Sizes reach the buffer cut to 32 bits: 2^32 asks for nothing, 2^32 + 16 for 16 bytes,
    // and only those are cleared.
    const uint64_t over = uint64_t(1) << 32;
    EXPECT_EQ(vtmem_alloc(a, size_t(over)), nullptr);
    EXPECT_EQ(vtmem_alloc0(a, size_t(over + 16)), p);
    EXPECT_EQ(std::count(p, p + 17, 0), 16);
    EXPECT_EQ(vtmem_alloc(a, 1), p + 16);
    vtmem_freeall(a);
    EXPECT_EQ(vtmem_size(a), 0u);
    EXPECT_NE(vtmem_alloc(a, 1), nullptr);
    vtmem_destroy_allocator(a);

    _vtmem_allocator_t* zero = vtmem_block_allocator_new(0, 0); // every request fails
    EXPECT_EQ(vtmem_alloc(zero, 1), nullptr);
    vtmem_destroy_allocator(zero);
    _vtmem_allocator_t* ring = vtmem_block_allocator_new(4096, 1);
    void* first = vtmem_alloc(ring, 3000);
    EXPECT_EQ(vtmem_alloc(ring, 3000), first); // restarted over the old piece
    vtmem_destroy_allocator(ring);
}

TEST(Vtmem, LockIsMadeOnceAndDropped) {
    FakeHeap heap;
    _vtmem_allocator_t* a = vtmem_block_allocator_new(4096, 0);
    vtmem_block_allocator_use_lock(a, true);
    void* lock = a->lock;
    EXPECT_NE(lock, nullptr);
    vtmem_block_allocator_use_lock(a, true);
    EXPECT_EQ(a->lock, lock);
    vtmem_block_allocator_use_lock(a, false);
    EXPECT_EQ(a->lock, nullptr);
    heap.refuseLocks = true;
    vtmem_block_allocator_use_lock(a, true);
    EXPECT_EQ(a->lock, nullptr); // goes on without one
    EXPECT_NE(vtmem_alloc(a, 8), nullptr);
    heap.refuseLocks = false;
    vtmem_block_allocator_use_lock(a, true);
    vtmem_destroy_allocator(a); // frees the lock too, as the leak checker sees
}

TEST(Vtmem, LockedAllocatorHandsOutDisjointPiecesToThreads) {
    constexpr int kThreads = 4, kPieces = 3000;
    _vtmem_allocator_t* a = vtmem_block_allocator_new(4096, 0); // a new block every few pieces
    vtmem_block_allocator_use_lock(a, true);
    std::vector<std::pair<char*, size_t>> pieces[kThreads];
    std::vector<std::thread> threads;
    std::atomic<int> ready{0};
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (++ready; ready < kThreads;) {
            }
            for (int i = 0; i < kPieces; ++i) {
                size_t size = 1 + size_t(i * 7 + t) % 200;
                char* p = static_cast<char*>(i % 2 ? vtmem_alloc(a, size) : vtmem_alloc0(a, size));
                ASSERT_NE(p, nullptr);
                std::memset(p, t, size); // overlapping writes would also be a race
                pieces[t].emplace_back(p, size);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::vector<std::pair<char*, size_t>> all;
    for (const auto& list : pieces)
        all.insert(all.end(), list.begin(), list.end());
    ASSERT_EQ(all.size(), size_t(kThreads) * kPieces);
    std::sort(all.begin(), all.end());
    for (size_t i = 1; i < all.size(); ++i)
        ASSERT_LE(all[i - 1].first + all[i - 1].second, all[i].first);
    vtmem_destroy_allocator(a);
}

} // namespace
