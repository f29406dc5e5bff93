// vtmem.cpp - the vtmem_ functions, which check their arguments and forward
// through an allocator's table, and the block allocator: a CVTBlockBuffer
// behind that table, with an optional lock around its allocation.
//
// A null allocator is the C heap. Nothing here keeps state of its own.
#include "vetra/vtmem.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

#include "memory/alloc_lock.h"
#include "memory/block_heap.h"
#include "vetra/block_buffer.h"

namespace {

using vetra::memory::AllocLock;

CVTBlockBuffer* Buffer(void* state) {
    return static_cast<CVTBlockBuffer*>(state);
}

// The buffer takes 32-bit sizes: a larger size is cut to its low 32 bits,
// so 2^32 + 16 asks for 16 bytes.
void* BlockAlloc(void* state, size_t size, void* lock) {
    if (lock == nullptr) return Buffer(state)->GetBuffer(static_cast<unsigned int>(size));
    std::lock_guard<AllocLock> hold(*static_cast<AllocLock*>(lock));
    return Buffer(state)->GetBuffer(static_cast<unsigned int>(size));
}

void BlockFree(void*, void*) {}

// The buffer records no sizes, so the old bytes can't be carried over.
void* BlockRealloc(void* state, void*, size_t size) {
    return Buffer(state)->GetBuffer(static_cast<unsigned int>(size));
}

void BlockReset(void* state) {
    Buffer(state)->Reset();
}

void BlockFreeAll(void* state) {
    Buffer(state)->ReleaseAll();
}

void BlockDestroy(void* state) {
    Buffer(state)->~CVTBlockBuffer();
    std::free(state);
}

size_t BlockSize(void* state) {
    return size_t(uint64_t(Buffer(state)->GetTotalBlockCount()) * Buffer(state)->GetBlockSize());
}

void DestroyLock(void* lock) {
    static_cast<AllocLock*>(lock)->~AllocLock();
    std::free(lock);
}

} // namespace

void* vtmem_alloc(_vtmem_allocator_t* a, size_t size) {
    if (a == nullptr) return std::malloc(size);
    if (size == 0) return nullptr;
    return a->alloc_fn(a->state, size, a->lock);
}

void* vtmem_alloc0(_vtmem_allocator_t* a, size_t size) {
    void* p = vtmem_alloc(a, size);
    if (p == nullptr) return nullptr;
    // A block allocator's piece has the size cut to 32 bits; clearing the
    // full size would run past it.
    if (a != nullptr && a->alloc_fn == BlockAlloc) size = static_cast<unsigned int>(size);
    std::memset(p, 0, size);
    return p;
}

void vtmem_free(_vtmem_allocator_t* a, void* p) {
    if (a == nullptr) {
        std::free(p);
    } else if (p != nullptr) {
        a->free_fn(a->state, p);
    }
}

void* vtmem_realloc(_vtmem_allocator_t* a, void* p, size_t size) {
    if (a == nullptr) return std::realloc(p, size);
    if (p == nullptr) return size == 0 ? nullptr : a->alloc_fn(a->state, size, a->lock);
    if (size == 0) {
        a->free_fn(a->state, p);
        return nullptr;
    }
    return a->realloc_fn(a->state, p, size);
}

void vtmem_reset(_vtmem_allocator_t* a) {
    if (a != nullptr) a->reset_fn(a->state);
}

void vtmem_freeall(_vtmem_allocator_t* a) {
    if (a != nullptr) a->freeall_fn(a->state);
}

size_t vtmem_size(_vtmem_allocator_t* a) {
    return a == nullptr ? 0 : a->size_fn(a->state);
}

_vtmem_allocator_t* vtmem_block_allocator_new(unsigned int nBlockSize, unsigned int nMaxBlocks) {
    void* record = std::malloc(sizeof(_vtmem_allocator_t));
    void* buffer = std::malloc(sizeof(CVTBlockBuffer));
    if (record == nullptr || buffer == nullptr) {
        std::free(record);
        std::free(buffer);
        return nullptr;
    }
    CVTBlockBuffer* state = new (buffer) CVTBlockBuffer();
    state->SetBlockSize(nBlockSize, nMaxBlocks);
    return new (record)
        _vtmem_allocator_t{BlockAlloc,   BlockFree, BlockRealloc, BlockReset, BlockFreeAll,
                           BlockDestroy, BlockSize, state,        nullptr};
}

void vtmem_block_allocator_use_lock(_vtmem_allocator_t* a, bool bUse) {
    if (a == nullptr) return;
    if (bUse && a->lock == nullptr) {
        void* room = vetra::memory::g_heapHooks.AllocateLockRoom(sizeof(AllocLock));
        if (room != nullptr) a->lock = new (room) AllocLock();
    } else if (!bUse && a->lock != nullptr) {
        DestroyLock(a->lock);
        a->lock = nullptr;
    }
}

void vtmem_destroy_allocator(_vtmem_allocator_t* a) {
    if (a == nullptr) return;
    a->destroy_fn(a->state);
    if (a->lock != nullptr) DestroyLock(a->lock);
    std::free(a);
}
