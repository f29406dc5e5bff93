// block_buffer.h - CVTBlockBuffer, a bump allocator over a chain of
// fixed-size blocks: pieces are handed out one after another and taken back
// all at once.
//
// No piece is ever given back on its own. Reset empties every block and keeps
// it for reuse; ReleaseAll frees the blocks. With a block limit the buffer
// recycles: once the limit is reached it starts over in its first block, and
// later pieces overwrite earlier ones without notice.
#ifndef VETRA_BLOCK_BUFFER_H
#define VETRA_BLOCK_BUFFER_H

#include "vetra/vetra_export.h"

/// A chain of blocks of `GetBlockSize()` bytes each, every one obtained from
/// malloc when needed and freed with free. A block begins with a 16-byte
/// header, so the largest piece is the block size minus 16. Pieces lie back
/// to back with sizes not rounded: only a block's first piece is aligned (it
/// lies 16 bytes after the block's start, keeping malloc's alignment); any
/// other piece may start at any address. A piece's bytes are not cleared.
///
/// Lifetime of a piece: until the next Reset, the next automatic restart at
/// the block limit (a GetBuffer call that needs a new block while the chain
/// already holds the limit), ReleaseAll, or the destructor. ReleaseUnusedBlocks
/// frees only blocks with nothing handed out from them, so it never ends a
/// piece's life.
///
/// Copies: assignment copies the four fields, so both objects then name the
/// same blocks. Only one of them may go on to free them (ReleaseAll, the
/// destructor); the other must be reassigned or left to a destructor that
/// finds no blocks (assign it a fresh buffer first). Copy construction is
/// not offered.
///
/// Threads: no lock. One object belongs to one thread at a time; different
/// objects are independent.
class VETRA_API CVTBlockBuffer {
  public:
    /// A buffer with blocks of `nBlockSize` bytes (header included), no block
    /// limit and no blocks yet: the first block is allocated by the first
    /// GetBuffer. A size of 16 or less is accepted and makes every request
    /// fail.
    explicit CVTBlockBuffer(unsigned int nBlockSize = 0x100000);
    /// Frees every block, as ReleaseAll does.
    ~CVTBlockBuffer();

    CVTBlockBuffer(const CVTBlockBuffer&) = delete;
    /// Copies the block size, the limit and both block pointers: afterwards
    /// the two objects share one chain (see the class comment). The blocks
    /// this object held before are not freed; release them first, or they
    /// leak. Returns *this.
    CVTBlockBuffer& operator=(const CVTBlockBuffer& other);

    /// Stores the block size and the block limit (0: no limit) and does
    /// nothing else. Blocks already held keep their real size, but every
    /// fit test uses the new size, so raising the size while blocks exist
    /// lets pieces run past a block's end: call ReleaseAll first. Lowering it,
    /// or changing only the limit, is safe; a limit below the blocks already
    /// held restarts the buffer at the next request that needs a new block.
    void SetBlockSize(unsigned int nBlockSize, unsigned int nMaxBlocks);
    /// The block size given last, header included.
    unsigned int GetBlockSize() const;

    /// A piece of `nSize` bytes, or null when `nSize` is 0, when `nSize` + 16
    /// exceeds the block size, or when a new block was needed and malloc
    /// failed; the buffer stays usable after a failure, and the next request
    /// tries again. A piece that doesn't fit in what is left of the current
    /// block goes to the next block; the rest of the one left behind stays
    /// idle until Reset. When the chain holds the block limit and its last
    /// block is full, the buffer restarts in its first block (as Reset does)
    /// instead of allocating. The piece is valid as the class comment says.
    ///
    /// The common case, a piece that fits in the current block, is defined
    /// here so that it costs the caller a few instructions and no call.
    VETRA_INLINE_API void* GetBuffer(unsigned int nSize) {
        // One test: a used count of at least 16 that fits implies nSize + 16
        // fits too, and nSize 0 wraps to 2^32 - 1, which never fits, so the
        // refusals are left to the slow path. The sum is formed in 64 bits:
        // a size near 4 GiB must not wrap into a fit.
        BlockHeader* block = m_pCurrentBlock;
        if (block != nullptr &&
            static_cast<unsigned long long>(block->nUsedBytes) + (nSize - 1u) < m_nBlockSize) {
            char* piece = reinterpret_cast<char*>(block) + block->nUsedBytes;
            block->nUsedBytes += nSize;
            return piece;
        }
        return GetBufferFromNextBlock_(nSize);
    }

    /// The number of blocks held. Walks the chain.
    unsigned int GetTotalBlockCount() const;
    /// The number of blocks from the chain's start up to, not including, the
    /// first block from which nothing has been handed out; so 0 after Reset
    /// and after ReleaseAll. Walks the chain.
    unsigned int GetUsedBlockCount() const;

    /// Empties every block and serves the next request from the first one.
    /// Frees nothing; every piece handed out so far is dead.
    void Reset();
    /// Frees the empty blocks behind the current one; the current block stays
    /// even if it is empty, so after Reset this keeps exactly the first block.
    /// Does nothing while there is no current block: before the first request,
    /// after ReleaseAll, or after a request found the last block full and no
    /// new block could be had.
    void ReleaseUnusedBlocks();
    /// Frees every block. The block size and the limit stay, so the buffer
    /// can be used again at once.
    void ReleaseAll();

  private:
    /// The first 16 bytes of every block. nUsedBytes counts from the block's
    /// start, so an empty block holds 16.
    struct BlockHeader {
        BlockHeader* pNextBlock;
        unsigned int nUsedBytes;
        unsigned int nReserved; // pads the header to 16 bytes
    };

    /// GetBuffer beyond the common case: refuses sizes that no block can
    /// hold, then serves from the next block, a restart at the limit, or a
    /// new block.
    void* GetBufferFromNextBlock_(unsigned int nSize);

    unsigned int m_nBlockSize;
    unsigned int m_nMaxBlocks;
    BlockHeader* m_pFirstBlock;
    BlockHeader* m_pCurrentBlock;
};

#endif // VETRA_BLOCK_BUFFER_H
