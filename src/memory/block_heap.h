// block_heap.h - where the memory services get a new block and the room for
// an allocator's lock: malloc, behind a table that tests replace to make
// either fail.
//
// Only these two cold paths go through the table; the pointer bump never
// does. Whatever the table gives is freed with free.
#ifndef VETRA_MEMORY_BLOCK_HEAP_H
#define VETRA_MEMORY_BLOCK_HEAP_H

#include <cstddef>

namespace vetra::memory {

struct HeapHooks {
    /// A new block of `bytes`; null, or an exception, when there is no memory.
    void* (*AllocateBlock)(std::size_t bytes);
    /// Room for an allocator's lock; null when there is no memory.
    void* (*AllocateLockRoom)(std::size_t bytes);
};

/// The hooks in force: malloc for both unless a test has replaced them. Not
/// synchronised: replace them only while no buffer is in use.
extern HeapHooks g_heapHooks;

} // namespace vetra::memory

#endif // VETRA_MEMORY_BLOCK_HEAP_H
