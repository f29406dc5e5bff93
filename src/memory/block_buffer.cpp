// block_buffer.cpp - CVTBlockBuffer: pieces bumped off the current block, a
// chain of blocks that grows at its tail, and the restart at the block limit.
//
// The common request touches only the current block's header. The chain is
// walked only when a new block is needed, and by the counting getters.
#include "vetra/block_buffer.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#include "memory/block_heap.h"

namespace vetra::memory {

HeapHooks g_heapHooks = {std::malloc, std::malloc};

} // namespace vetra::memory

using vetra::memory::g_heapHooks;

namespace {

constexpr uint32_t kHeaderSize = 16;

} // namespace

CVTBlockBuffer::CVTBlockBuffer(unsigned int nBlockSize)
    : m_nBlockSize(nBlockSize), m_nMaxBlocks(0), m_pFirstBlock(nullptr), m_pCurrentBlock(nullptr) {
    static_assert(sizeof(BlockHeader) == kHeaderSize, "a block's header is 16 bytes");
}

CVTBlockBuffer::~CVTBlockBuffer() {
    ReleaseAll();
}

CVTBlockBuffer& CVTBlockBuffer::operator=(const CVTBlockBuffer& other) {
    m_nBlockSize = other.m_nBlockSize;
    m_nMaxBlocks = other.m_nMaxBlocks;
    m_pFirstBlock = other.m_pFirstBlock;
    m_pCurrentBlock = other.m_pCurrentBlock;
    return *this;
}

void CVTBlockBuffer::SetBlockSize(unsigned int nBlockSize, unsigned int nMaxBlocks) {
    m_nBlockSize = nBlockSize;
    m_nMaxBlocks = nMaxBlocks;
}

unsigned int CVTBlockBuffer::GetBlockSize() const {
    return m_nBlockSize;
}

// GetBuffer is defined in the header; the library exports its own copy for
// callers that don't inline it.
static void* (CVTBlockBuffer::*const s_exportGetBuffer)(unsigned int)
    __attribute__((used)) = &CVTBlockBuffer::GetBuffer;

void* CVTBlockBuffer::GetBufferFromNextBlock_(unsigned int nSize) {
    if (nSize == 0 || uint64_t(nSize) + kHeaderSize > m_nBlockSize) return nullptr;
    // Blocks behind the current one are empty, so the next one always fits.
    BlockHeader* block = m_pCurrentBlock != nullptr ? m_pCurrentBlock->pNextBlock : nullptr;
    if (block == nullptr && m_pFirstBlock != nullptr && m_nMaxBlocks != 0 &&
        GetTotalBlockCount() >= m_nMaxBlocks) {
        Reset();
        block = m_pCurrentBlock;
    }
    if (block == nullptr) {
        void* memory;
        try {
            memory = g_heapHooks.AllocateBlock(m_nBlockSize);
        } catch (...) {
            memory = nullptr;
        }
        if (memory == nullptr) {
            m_pCurrentBlock = nullptr;
            return nullptr;
        }
        block = new (memory) BlockHeader{nullptr, kHeaderSize, 0};
        BlockHeader** link = &m_pFirstBlock;
        while (*link != nullptr)
            link = &(*link)->pNextBlock;
        *link = block;
    }
    m_pCurrentBlock = block;
    char* piece = reinterpret_cast<char*>(block) + block->nUsedBytes;
    block->nUsedBytes += nSize;
    return piece;
}

unsigned int CVTBlockBuffer::GetTotalBlockCount() const {
    unsigned int count = 0;
    for (const BlockHeader* block = m_pFirstBlock; block != nullptr; block = block->pNextBlock)
        ++count;
    return count;
}

unsigned int CVTBlockBuffer::GetUsedBlockCount() const {
    unsigned int count = 0;
    for (const BlockHeader* block = m_pFirstBlock;
         block != nullptr && block->nUsedBytes > kHeaderSize; block = block->pNextBlock)
        ++count;
    return count;
}

void CVTBlockBuffer::Reset() {
    for (BlockHeader* block = m_pFirstBlock; block != nullptr; block = block->pNextBlock)
        block->nUsedBytes = kHeaderSize;
    m_pCurrentBlock = m_pFirstBlock;
}

void CVTBlockBuffer::ReleaseUnusedBlocks() {
    if (m_pCurrentBlock == nullptr) return;
    BlockHeader* block = m_pCurrentBlock->pNextBlock;
    m_pCurrentBlock->pNextBlock = nullptr;
    while (block != nullptr) {
        BlockHeader* next = block->pNextBlock;
        std::free(block);
        block = next;
    }
}

void CVTBlockBuffer::ReleaseAll() {
    BlockHeader* block = m_pFirstBlock;
    while (block != nullptr) {
        BlockHeader* next = block->pNextBlock;
        std::free(block);
        block = next;
    }
    m_pFirstBlock = nullptr;
    m_pCurrentBlock = nullptr;
}
