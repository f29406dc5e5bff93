// vtmem.h - the vtmem_ family: one allocation interface over interchangeable
// allocators, and the block allocator, a CVTBlockBuffer behind a table of
// operations with an optional lock.
//
// Every function takes the allocator first. A null allocator means the C
// heap (malloc, free, realloc). A block allocator hands out pieces of its
// blocks and takes them back only all at once (vtmem_reset, vtmem_freeall,
// vtmem_destroy_allocator); giving one piece back does nothing.
#ifndef VETRA_VTMEM_H
#define VETRA_VTMEM_H

#include <stddef.h>

#include "vetra/vetra_export.h"

/// An allocator: a table of operations and the state they work on. The
/// vtmem_ functions only check their arguments and forward through the
/// table. vtmem_block_allocator_new fills it once, and it never changes.
///
/// A caller may build a record of its own and use it with vtmem_alloc,
/// vtmem_alloc0, vtmem_free, vtmem_realloc, vtmem_reset, vtmem_freeall and
/// vtmem_size. vtmem_block_allocator_use_lock and vtmem_destroy_allocator
/// are for records made by vtmem_block_allocator_new only: they treat `lock`
/// as the library's own lock and free the record with free.
struct _vtmem_allocator_t {
    /// Gives `size` bytes, or null; receives `lock` from the record.
    void* (*alloc_fn)(void* state, size_t size, void* lock);
    /// Gives one piece back.
    void (*free_fn)(void* state, void* p);
    /// Gives a piece of `size` bytes in place of `p`.
    void* (*realloc_fn)(void* state, void* p, size_t size);
    /// Takes back every piece and keeps the memory.
    void (*reset_fn)(void* state);
    /// Frees all memory and keeps the allocator usable.
    void (*freeall_fn)(void* state);
    /// Frees all memory and the state itself.
    void (*destroy_fn)(void* state);
    /// The bytes the allocator holds.
    size_t (*size_fn)(void* state);
    /// The implementation's own object: a CVTBlockBuffer for a block allocator.
    void* state;
    /// The lock taken around alloc_fn, or null for none.
    void* lock;
};

/// Null `a`: malloc(size), also for size 0. Otherwise: null for size 0,
/// else alloc_fn's piece or null. A block allocator cuts `size` to its low
/// 32 bits (4294967312 asks for 16 bytes, 4294967296 gets null) and gives
/// null for anything above its block size minus 16; it never falls back to
/// the heap. Its pieces have no alignment and live until vtmem_reset,
/// vtmem_freeall, vtmem_destroy_allocator, or the automatic restart of a
/// block allocator with a block limit, which reuses the first block and so
/// overwrites old pieces without notice.
/// Threads: the null allocator is as safe as malloc. An allocator without a
/// lock belongs to one thread at a time; with one
/// (vtmem_block_allocator_use_lock), any number of threads may call
/// vtmem_alloc, vtmem_alloc0 and vtmem_realloc with a null `p` on it at once,
/// and no other function meanwhile.
VETRA_API void* vtmem_alloc(_vtmem_allocator_t* a, size_t size);

/// As vtmem_alloc, then clears the piece if there is one: `size` bytes, or,
/// from a block allocator, the size cut to 32 bits that the piece really
/// has. Nothing is cleared on failure.
VETRA_API void* vtmem_alloc0(_vtmem_allocator_t* a, size_t size);

/// Null `a`: free(p). Otherwise nothing for null `p`, else free_fn. For a
/// block allocator this does nothing at all: the piece stays valid and its
/// memory is taken back only with the others.
VETRA_API void vtmem_free(_vtmem_allocator_t* a, void* p);

/// Null `a`: realloc(p, size), unchanged (glibc frees `p` and gives null for
/// size 0). Otherwise, by `p` and `size`: both null/0 gives null; null `p`
/// is vtmem_alloc (and takes the lock); size 0 is vtmem_free and gives null;
/// else realloc_fn. A block allocator's realloc_fn takes no lock and gives
/// a fresh piece (or null) without copying anything: the buffer records no
/// sizes, so a caller that wants the old bytes copies them itself. The old
/// piece stays valid.
VETRA_API void* vtmem_realloc(_vtmem_allocator_t* a, void* p, size_t size);

/// Takes back every piece of `a` and keeps its blocks: vtmem_size doesn't
/// change. Every piece handed out is dead. Nothing for null `a`.
/// Not to be called while another thread uses `a`.
VETRA_API void vtmem_reset(_vtmem_allocator_t* a);

/// Frees every block of `a`; the allocator stays usable and vtmem_size
/// gives 0. Every piece handed out is dead. Nothing for null `a`.
/// Not to be called while another thread uses `a`.
VETRA_API void vtmem_freeall(_vtmem_allocator_t* a);

/// The bytes `a` holds: for a block allocator its blocks times the block
/// size, headers and unused space included, not the bytes handed out. 0 for
/// null `a`. Walks the chain of blocks; not to be called while another
/// thread uses `a`.
VETRA_API size_t vtmem_size(_vtmem_allocator_t* a);

/// A new block allocator with blocks of `nBlockSize` bytes (a 16-byte header
/// included, as in CVTBlockBuffer) and at most `nMaxBlocks` blocks before
/// it restarts in its first one (0: no limit), without a lock. No block is
/// allocated yet, and the values aren't checked: a block size of 16 or less
/// (0 included) gives an allocator that answers every request with null.
/// Returns null if the record or its buffer can't be allocated. The record
/// lives until vtmem_destroy_allocator.
VETRA_API _vtmem_allocator_t* vtmem_block_allocator_new(unsigned int nBlockSize,
                                                        unsigned int nMaxBlocks);

/// Turns the lock around vtmem_alloc, vtmem_alloc0 and vtmem_realloc with a
/// null `p` on (`bUse` true) or off. Turning it on twice keeps the one lock.
/// If the lock's memory can't be had, the allocator silently goes on without
/// one. The lock is held only for the pointer bump (and the malloc of a new
/// block): a waiting thread spins briefly, then yields the processor, and
/// never sleeps in the kernel. Nothing for null `a`. Not synchronised
/// itself: call it before the allocator is shared, never while another
/// thread uses it.
VETRA_API void vtmem_block_allocator_use_lock(_vtmem_allocator_t* a, bool bUse);

/// Frees all memory of `a`, its lock and the record; every piece handed out
/// is dead and `a` is invalid afterwards. Nothing for null `a`.
VETRA_API void vtmem_destroy_allocator(_vtmem_allocator_t* a);

#endif // VETRA_VTMEM_H
