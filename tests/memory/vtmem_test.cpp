// Tests of the vtmem_ functions: which operation of the table each call
// reaches, the heap paths of the null allocator, the block allocator's sizes,
// clearing and lock, and several threads allocating under one lock.
#include "vetra/vtmem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "fake_heap.h"

namespace {

using vetra::memory::test::FakeHeap;

// A caller-built allocator that records which operation was reached.
struct Recorder {
    std::string calls;
    size_t size = 0;
    void* lock = nullptr;
    char piece[64] = {};
};

Recorder& Rec(void* state) {
    return *static_cast<Recorder*>(state);
}

_vtmem_allocator_t RecordingAllocator(Recorder& rec) {
    return {[](void* s, size_t size, void* lock) -> void* {
                Rec(s).calls += "alloc ";
                Rec(s).size = size;
                Rec(s).lock = lock;
                return Rec(s).piece;
            },
            [](void* s, void*) { Rec(s).calls += "free "; },
            [](void* s, void*, size_t size) -> void* {
                Rec(s).calls += "realloc ";
                Rec(s).size = size;
                return Rec(s).piece;
            },
            [](void* s) { Rec(s).calls += "reset "; },
            [](void* s) { Rec(s).calls += "freeall "; },
            [](void* s) { Rec(s).calls += "destroy "; },
            [](void* s) -> size_t {
                Rec(s).calls += "size ";
                return 7;
            },
            &rec,
            &rec.calls};
}

enum class Call { alloc, alloc0, free, realloc, reset, freeall, size };

struct Dispatch {
    Call call;
    bool withPointer;
    size_t size;
    const char* reached;
    bool gives; // a non-null result (for calls that have one)
};

const Dispatch kDispatch[] = {
    {Call::alloc, false, 0, "", false},       {Call::alloc, false, 24, "alloc ", true},
    {Call::alloc0, false, 0, "", false},      {Call::alloc0, false, 24, "alloc ", true},
    {Call::free, false, 0, "", false},        {Call::free, true, 0, "free ", false},
    {Call::realloc, false, 0, "", false},     {Call::realloc, false, 24, "alloc ", true},
    {Call::realloc, true, 0, "free ", false}, {Call::realloc, true, 24, "realloc ", true},
    {Call::reset, false, 0, "reset ", false}, {Call::freeall, false, 0, "freeall ", false},
    {Call::size, false, 0, "size ", true},
};

TEST(Vtmem, ForwardsThroughTheTable) {
    for (const Dispatch& row : kDispatch) {
        SCOPED_TRACE(std::to_string(int(row.call)) + " " + std::to_string(row.size));
        Recorder rec;
        _vtmem_allocator_t a = RecordingAllocator(rec);
        std::memset(rec.piece, 0xAA, sizeof rec.piece);
        char mine = 0;
        void* p = row.withPointer ? &mine : nullptr;
        bool gave = false;
        switch (row.call) {
        case Call::alloc:
            gave = vtmem_alloc(&a, row.size) != nullptr;
            break;
        case Call::alloc0:
            gave = vtmem_alloc0(&a, row.size) != nullptr;
            break;
        case Call::free:
            vtmem_free(&a, p);
            break;
        case Call::realloc:
            gave = vtmem_realloc(&a, p, row.size) != nullptr;
            break;
        case Call::reset:
            vtmem_reset(&a);
            break;
        case Call::freeall:
            vtmem_freeall(&a);
            break;
        case Call::size:
            gave = vtmem_size(&a) == 7;
            break;
        }
        EXPECT_EQ(rec.calls, row.reached);
        EXPECT_EQ(gave, row.gives);
        if (rec.calls == "alloc ") {
            EXPECT_EQ(rec.size, row.size);
            EXPECT_EQ(rec.lock, a.lock);
        }
        // A foreign allocator's piece is cleared over the full size asked.
        if (row.call == Call::alloc0 && row.gives) {
            EXPECT_EQ(rec.piece[row.size - 1], 0);
            EXPECT_EQ(rec.piece[row.size], char(0xAA));
        }
    }
}

TEST(Vtmem, NullAllocatorIsTheHeap) {
    // Size 0 still reaches malloc, which gives glibc's unique pointer.
    void* p = vtmem_alloc(nullptr, 0);
    EXPECT_NE(p, nullptr);
    vtmem_free(nullptr, p);
    p = vtmem_alloc0(nullptr, 0);
    EXPECT_NE(p, nullptr);
    EXPECT_EQ(vtmem_realloc(nullptr, p, 0), nullptr); // realloc to 0 frees
    unsigned char* q = static_cast<unsigned char*>(vtmem_alloc0(nullptr, 100));
    ASSERT_NE(q, nullptr);
    EXPECT_EQ(std::count(q, q + 100, 0), 100);
    vtmem_free(nullptr, q);
    vtmem_reset(nullptr);
    vtmem_freeall(nullptr);
    vtmem_block_allocator_use_lock(nullptr, true);
    vtmem_destroy_allocator(nullptr);
    EXPECT_EQ(vtmem_size(nullptr), 0u);
}

TEST(Vtmem, BlockAllocatorSizesAndLifecycle) {
    _vtmem_allocator_t* a = vtmem_block_allocator_new(4096, 0);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(vtmem_size(a), 0u);
    EXPECT_EQ(vtmem_alloc(a, 0), nullptr);
    EXPECT_EQ(vtmem_alloc0(a, 0), nullptr);
    char* p = static_cast<char*>(vtmem_alloc(a, 10));
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(vtmem_alloc(a, 20), p + 10);
    EXPECT_EQ(vtmem_size(a), 4096u);
    vtmem_free(a, p); // nothing is given back alone
    EXPECT_EQ(vtmem_size(a), 4096u);
    EXPECT_EQ(vtmem_alloc(a, 4081), nullptr); // no fallback to the heap
    EXPECT_EQ(vtmem_alloc0(a, 4081), nullptr);
    EXPECT_EQ(vtmem_realloc(a, p, 0), nullptr);
    EXPECT_EQ(vtmem_realloc(a, p, 5), p + 30); // a fresh piece, nothing copied
    vtmem_reset(a);
    EXPECT_EQ(vtmem_size(a), 4096u);
    EXPECT_EQ(vtmem_alloc(a, 1), p);
    vtmem_freeall(a);
    EXPECT_EQ(vtmem_size(a), 0u);
    EXPECT_NE(vtmem_alloc(a, 1), nullptr);
    vtmem_destroy_allocator(a);
}

TEST(Vtmem, BlockAllocatorCutsSizesTo32Bits) {
    if (sizeof(size_t) < 8) GTEST_SKIP() << "size_t has 32 bits";
    _vtmem_allocator_t* a = vtmem_block_allocator_new(4096, 0);
    unsigned char* dirty = static_cast<unsigned char*>(vtmem_alloc(a, 64));
    std::memset(dirty, 0xAA, 64);
    vtmem_reset(a);
    const uint64_t over = uint64_t(1) << 32;
    EXPECT_EQ(vtmem_alloc(a, size_t(over)), nullptr); // reaches the buffer as 0
    unsigned char* p = static_cast<unsigned char*>(vtmem_alloc0(a, size_t(over + 16)));
    EXPECT_EQ(p, dirty);
    EXPECT_EQ(std::count(p, p + 16, 0), 16);
    EXPECT_EQ(p[16], 0xAA);
    EXPECT_EQ(vtmem_alloc(a, 1), p + 16);
    vtmem_destroy_allocator(a);
}

TEST(Vtmem, BlockAllocatorOddSettings) {
    _vtmem_allocator_t* zero = vtmem_block_allocator_new(0, 0);
    EXPECT_EQ(vtmem_alloc(zero, 1), nullptr);
    EXPECT_EQ(vtmem_size(zero), 0u);
    vtmem_destroy_allocator(zero);

    _vtmem_allocator_t* ring = vtmem_block_allocator_new(4096, 1);
    void* first = vtmem_alloc(ring, 3000);
    EXPECT_EQ(vtmem_alloc(ring, 3000), first); // restarted over the old piece
    EXPECT_EQ(vtmem_size(ring), 4096u);
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
    EXPECT_NE(vtmem_alloc0(a, 8), nullptr);
    vtmem_block_allocator_use_lock(a, false);
    EXPECT_EQ(a->lock, nullptr);

    heap.refuseLocks = true;
    vtmem_block_allocator_use_lock(a, true);
    EXPECT_EQ(a->lock, nullptr); // goes on without one
    EXPECT_NE(vtmem_alloc(a, 8), nullptr);
    vtmem_block_allocator_use_lock(a, false);
    vtmem_destroy_allocator(a);

    // Destroying with the lock on frees the lock too (the leak checker sees it).
    heap.refuseLocks = false;
    a = vtmem_block_allocator_new(4096, 0);
    vtmem_block_allocator_use_lock(a, true);
    vtmem_destroy_allocator(a);
}

TEST(Vtmem, LockedAllocatorHandsOutDisjointPiecesToThreads) {
    constexpr int kThreads = 4;
    constexpr int kPieces = 3000;
    struct Piece {
        unsigned char* p;
        size_t size;
        unsigned char mark;
    };
    _vtmem_allocator_t* a = vtmem_block_allocator_new(4096, 0); // a new block every few pieces
    vtmem_block_allocator_use_lock(a, true);
    std::vector<std::vector<Piece>> pieces(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kPieces; ++i) {
                size_t size = 1 + size_t(i * 7 + t) % 200;
                unsigned char mark = static_cast<unsigned char>(t * 50 + i % 50);
                void* p = i % 2 ? vtmem_alloc(a, size) : vtmem_alloc0(a, size);
                ASSERT_NE(p, nullptr);
                std::memset(p, mark, size);
                pieces[t].push_back({static_cast<unsigned char*>(p), size, mark});
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    std::vector<Piece> all;
    for (const std::vector<Piece>& list : pieces)
        all.insert(all.end(), list.begin(), list.end());
    ASSERT_EQ(all.size(), size_t(kThreads) * kPieces);
    std::sort(all.begin(), all.end(), [](const Piece& x, const Piece& y) { return x.p < y.p; });
    for (size_t i = 0; i < all.size(); ++i) {
        if (i + 1 < all.size()) {
            ASSERT_LE(all[i].p + all[i].size, all[i + 1].p);
        }
        ASSERT_EQ(size_t(std::count(all[i].p, all[i].p + all[i].size, all[i].mark)), all[i].size);
    }
    vtmem_destroy_allocator(a);
}

} // namespace
