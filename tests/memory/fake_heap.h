// fake_heap.h - a stand-in for the heap behind the memory services' blocks
// and locks: it records every block it hands out, in order, and can be told
// to fail the next block with a null or an exception, or to refuse locks.
#ifndef VETRA_TESTS_MEMORY_FAKE_HEAP_H
#define VETRA_TESTS_MEMORY_FAKE_HEAP_H

#include <cstdlib>
#include <new>
#include <vector>

#include "memory/block_heap.h"

namespace vetra::memory::test {

enum class Failure { none, null, exception };

/// Installed for its lifetime, one at a time, while no other thread takes blocks.
struct FakeHeap {
    FakeHeap() : saved(g_heapHooks) {
        s_self = this;
        g_heapHooks = {Block, LockRoom};
    }
    ~FakeHeap() { g_heapHooks = saved; }
    FakeHeap(const FakeHeap&) = delete;
    FakeHeap& operator=(const FakeHeap&) = delete;

    std::vector<void*> blocks;         ///< every block handed out, freed or not
    Failure nextBlock = Failure::none; ///< for the next block request only
    bool refuseLocks = false;
    HeapHooks saved;

    static void* Block(std::size_t bytes) {
        Failure failure = s_self->nextBlock;
        s_self->nextBlock = Failure::none;
        if (failure == Failure::exception) throw std::bad_alloc();
        void* block = failure == Failure::null ? nullptr : std::malloc(bytes);
        if (block != nullptr) s_self->blocks.push_back(block);
        return block;
    }
    static void* LockRoom(std::size_t bytes) {
        return s_self->refuseLocks ? nullptr : std::malloc(bytes);
    }
    static inline FakeHeap* s_self = nullptr;
};

} // namespace vetra::memory::test

#endif // VETRA_TESTS_MEMORY_FAKE_HEAP_H
