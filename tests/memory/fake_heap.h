// fake_heap.h - a stand-in for the heap behind the memory services' blocks
// and locks: it records every block it hands out, in order, and can be told
// to fail the next request with a null or with an exception.
#ifndef VETRA_TESTS_MEMORY_FAKE_HEAP_H
#define VETRA_TESTS_MEMORY_FAKE_HEAP_H

#include <cstdlib>
#include <new>
#include <vector>

#include "memory/block_heap.h"

namespace vetra::memory::test {

enum class Failure { none, null, exception };

/// Installs itself for its lifetime and puts the previous hooks back after.
/// One at a time; not for use while other threads take blocks.
class FakeHeap {
  public:
    FakeHeap() : m_saved(g_heapHooks) {
        s_self = this;
        g_heapHooks = {Block, LockRoom};
    }
    ~FakeHeap() {
        g_heapHooks = m_saved;
        s_self = nullptr;
    }
    FakeHeap(const FakeHeap&) = delete;
    FakeHeap& operator=(const FakeHeap&) = delete;

    /// Every block handed out, in order, freed or not.
    std::vector<void*> blocks;
    /// What the next block request does; reset to none after one use.
    Failure nextBlock = Failure::none;
    /// Whether lock rooms are refused.
    bool refuseLocks = false;

  private:
    static void* Block(std::size_t bytes) {
        Failure failure = s_self->nextBlock;
        s_self->nextBlock = Failure::none;
        if (failure == Failure::exception) throw std::bad_alloc();
        if (failure == Failure::null) return nullptr;
        void* block = std::malloc(bytes);
        s_self->blocks.push_back(block);
        return block;
    }
    static void* LockRoom(std::size_t bytes) {
        return s_self->refuseLocks ? nullptr : std::malloc(bytes);
    }

    static inline FakeHeap* s_self = nullptr;
    HeapHooks m_saved;
};

} // namespace vetra::memory::test

#endif // VETRA_TESTS_MEMORY_FAKE_HEAP_H
