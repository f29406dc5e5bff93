// Tests of CVTBlockBuffer: where each piece lands (block and offset), when a
// new block is taken, the restart at the block limit, the counts after each
// step, allocation failure, and assignment sharing the chain.
#include "vetra/block_buffer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "fake_heap.h"

namespace {

using vetra::memory::test::Failure;
using vetra::memory::test::FakeHeap;

enum class Op { get, reset, releaseUnused, releaseAll, setLimit, failNext, throwNext };

constexpr int kNull = -1;

// One step of a script. For `get`, the piece must lie at `offset` in the
// `block`-th block ever allocated (kNull: no piece). After every step the
// buffer must hold `total` blocks, `used` of them counted as used.
struct Step {
    Op op;
    unsigned int arg;
    int block;
    unsigned int offset;
    unsigned int total;
    unsigned int used;
};

struct Script {
    const char* name;
    unsigned int blockSize;
    unsigned int maxBlocks;
    std::vector<Step> steps;
};

const Script kScripts[] = {
    {"largest piece is block size minus 16",
     1024,
     0,
     {{Op::get, 1008, 0, 16, 1, 1},
      {Op::get, 1009, kNull, 0, 1, 1},
      {Op::get, 0, kNull, 0, 1, 1},
      {Op::get, 1, 1, 16, 2, 2}}},
    {"pieces lie back to back, unrounded",
     1024,
     0,
     {{Op::get, 3, 0, 16, 1, 1}, {Op::get, 5, 0, 19, 1, 1}, {Op::get, 1, 0, 24, 1, 1}}},
    {"block of 16 serves nothing", 16, 0, {{Op::get, 1, kNull, 0, 0, 0}}},
    {"block of 17 serves one byte",
     17,
     0,
     {{Op::get, 2, kNull, 0, 0, 0}, {Op::get, 1, 0, 16, 1, 1}, {Op::get, 1, 1, 16, 2, 2}}},
    {"fit test does not wrap at 32 bits", 0xFFFFFFFFu, 0, {{Op::get, 0xFFFFFFF0u, kNull, 0, 0, 0}}},
    {"rest of a block left behind stays idle",
     1024,
     0,
     {{Op::get, 600, 0, 16, 1, 1},
      {Op::get, 600, 1, 16, 2, 2},
      {Op::get, 408, 1, 616, 2, 2},
      {Op::get, 8, 2, 16, 3, 3}}},
    {"limit 2 restarts in the first block",
     1024,
     2,
     {{Op::get, 1000, 0, 16, 1, 1},
      {Op::get, 1000, 1, 16, 2, 2},
      {Op::get, 1000, 0, 16, 2, 1},
      {Op::get, 1000, 1, 16, 2, 2},
      {Op::get, 1000, 0, 16, 2, 1}}},
    {"limit 1 restarts its only block",
     1024,
     1,
     {{Op::get, 600, 0, 16, 1, 1},
      {Op::get, 300, 0, 616, 1, 1},
      {Op::get, 200, 0, 16, 1, 1},
      {Op::get, 808, 0, 216, 1, 1}}},
    {"limit below the blocks held restarts at the next new block",
     1024,
     0,
     {{Op::get, 1000, 0, 16, 1, 1},
      {Op::get, 1000, 1, 16, 2, 2},
      {Op::get, 1000, 2, 16, 3, 3},
      {Op::setLimit, 2, 0, 0, 3, 3},
      {Op::get, 8, 2, 1016, 3, 3},
      {Op::get, 1, 0, 16, 3, 1}}},
    {"reset keeps blocks and starts over",
     1024,
     0,
     {{Op::get, 1000, 0, 16, 1, 1},
      {Op::get, 1000, 1, 16, 2, 2},
      {Op::get, 1000, 2, 16, 3, 3},
      {Op::reset, 0, 0, 0, 3, 0},
      {Op::get, 10, 0, 16, 3, 1},
      {Op::get, 1000, 1, 16, 3, 2}}},
    {"release unused keeps the current block",
     1024,
     0,
     {{Op::releaseUnused, 0, 0, 0, 0, 0},
      {Op::get, 1000, 0, 16, 1, 1},
      {Op::get, 1000, 1, 16, 2, 2},
      {Op::get, 1000, 2, 16, 3, 3},
      {Op::reset, 0, 0, 0, 3, 0},
      {Op::releaseUnused, 0, 0, 0, 1, 0},
      {Op::get, 10, 0, 16, 1, 1},
      {Op::get, 1000, 3, 16, 2, 2}}},
    {"release all empties and stays usable",
     1024,
     0,
     {{Op::releaseAll, 0, 0, 0, 0, 0},
      {Op::get, 1000, 0, 16, 1, 1},
      {Op::releaseAll, 0, 0, 0, 0, 0},
      {Op::releaseUnused, 0, 0, 0, 0, 0},
      {Op::get, 10, 1, 16, 1, 1}}},
    {"failed block gives null and the next request tries again",
     1024,
     0,
     {{Op::failNext, 0, 0, 0, 0, 0},
      {Op::get, 100, kNull, 0, 0, 0},
      {Op::get, 100, 0, 16, 1, 1},
      {Op::throwNext, 0, 0, 0, 1, 1},
      {Op::get, 1000, kNull, 0, 1, 1},
      {Op::releaseUnused, 0, 0, 0, 1, 1},
      {Op::get, 8, 1, 16, 2, 2}}},
    {"limit restarts instead of allocating after a failure",
     1024,
     2,
     {{Op::get, 1000, 0, 16, 1, 1},
      {Op::get, 1000, 1, 16, 2, 2},
      {Op::failNext, 0, 0, 0, 2, 2},
      {Op::get, 1000, 0, 16, 2, 1}}},
};

void RunScript(const Script& script) {
    FakeHeap heap;
    CVTBlockBuffer buffer(script.blockSize);
    buffer.SetBlockSize(script.blockSize, script.maxBlocks);
    for (size_t i = 0; i < script.steps.size(); ++i) {
        const Step& step = script.steps[i];
        SCOPED_TRACE("step " + std::to_string(i));
        switch (step.op) {
        case Op::get: {
            char* piece = static_cast<char*>(buffer.GetBuffer(step.arg));
            if (step.block == kNull) {
                EXPECT_EQ(piece, nullptr);
            } else {
                ASSERT_LT(size_t(step.block), heap.blocks.size());
                EXPECT_EQ(piece, static_cast<char*>(heap.blocks[step.block]) + step.offset);
            }
            break;
        }
        case Op::reset:
            buffer.Reset();
            break;
        case Op::releaseUnused:
            buffer.ReleaseUnusedBlocks();
            break;
        case Op::releaseAll:
            buffer.ReleaseAll();
            break;
        case Op::setLimit:
            buffer.SetBlockSize(script.blockSize, step.arg);
            break;
        case Op::failNext:
            heap.nextBlock = Failure::null;
            break;
        case Op::throwNext:
            heap.nextBlock = Failure::exception;
            break;
        }
        EXPECT_EQ(buffer.GetTotalBlockCount(), step.total);
        EXPECT_EQ(buffer.GetUsedBlockCount(), step.used);
    }
}

TEST(BlockBuffer, Scripts) {
    for (const Script& script : kScripts) {
        SCOPED_TRACE(script.name);
        RunScript(script);
    }
}

TEST(BlockBuffer, DefaultsToOneMebibyteBlocks) {
    CVTBlockBuffer buffer;
    EXPECT_EQ(buffer.GetBlockSize(), 1048576u);
    EXPECT_NE(buffer.GetBuffer(1048576 - 16), nullptr);
    EXPECT_EQ(buffer.GetBuffer(1048576 - 15), nullptr);
}

TEST(BlockBuffer, AssignmentSharesTheChain) {
    CVTBlockBuffer owner(1024);
    char* first = static_cast<char*>(owner.GetBuffer(100));
    {
        CVTBlockBuffer other;
        other = owner;
        EXPECT_EQ(other.GetBlockSize(), 1024u);
        EXPECT_EQ(other.GetBuffer(10), first + 100);
        other = CVTBlockBuffer(); // give the chain back before the destructor
    }
    // The shared header saw the copy's piece, so the owner carries on behind it.
    EXPECT_EQ(owner.GetBuffer(10), first + 110);
}

} // namespace
