// Tests of CVTBlockBuffer: where each piece lands (block and offset), when a
// new block is taken, the restart at the block limit, the counts, allocation
// failure, and assignment sharing the chain.
#include "vetra/block_buffer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fake_heap.h"

namespace {

using vetra::memory::test::Failure;
using vetra::memory::test::FakeHeap;

enum class Op { get, counts, reset, releaseUnused, releaseAll, limit, fail, raise };

// get: the piece of size `a` lies at offset `c` of the `b`-th block ever
// allocated, or is null when `b` is -1. counts: `a` blocks, `b` of them used.
// limit: the block limit becomes `a`. fail, raise: the next block request
// gives null, or throws.
struct Step {
    Op op;
    unsigned int a = 0;
    int b = 0;
    unsigned int c = 0;
};

Step Get(unsigned int size, int block, unsigned int offset) {
    return {Op::get, size, block, offset};
}
Step Null(unsigned int size) {
    return {Op::get, size, -1};
}
Step Counts(unsigned int total, int used) {
    return {Op::counts, total, used};
}

struct Script {
    const char* name;
    unsigned int blockSize, maxBlocks;
    std::vector<Step> steps;
};

// clang-format off
const Script kScripts[] = {
    {"largest piece", 1024, 0, {Get(1008, 0, 16), Null(1009), Null(0), Get(1, 1, 16), Counts(2, 2)}},
    {"back to back, unrounded", 1024, 0, {Get(3, 0, 16), Get(5, 0, 19), Get(1, 0, 24)}},
    {"block of 16", 16, 0, {Null(1), Counts(0, 0)}},
    {"no 32-bit wrap", 0xFFFFFFFFu, 0, {Null(0xFFFFFFF0u), Counts(0, 0)}},
    {"rest stays idle", 1024, 0, {Get(600, 0, 16), Get(600, 1, 16), Get(408, 1, 616), Get(8, 2, 16)}},
    {"limit 2", 1024, 2,
     {Get(1000, 0, 16), Get(1000, 1, 16), Get(1000, 0, 16), Counts(2, 1), Get(1000, 1, 16)}},
    {"limit 1", 1024, 1, {Get(600, 0, 16), Get(300, 0, 616), Get(200, 0, 16), Get(808, 0, 216)}},
    {"limit lowered", 1024, 0,
     {Get(1000, 0, 16), Get(1000, 1, 16), Get(1000, 2, 16), {Op::limit, 2}, Get(8, 2, 1016),
      Get(1, 0, 16), Counts(3, 1)}},
    {"reset and release unused", 1024, 0,
     {{Op::releaseUnused}, Counts(0, 0), Get(1000, 0, 16), Get(1000, 1, 16), Get(1000, 2, 16),
      {Op::reset}, Counts(3, 0), Get(10, 0, 16), Get(1000, 1, 16), Counts(3, 2), {Op::reset},
      {Op::releaseUnused}, Counts(1, 0), Get(1000, 0, 16), Get(1000, 3, 16)}},
    {"release all", 1024, 0,
     {{Op::releaseAll}, Get(1000, 0, 16), {Op::releaseAll}, Counts(0, 0), {Op::releaseUnused},
      Get(10, 1, 16)}},
    {"failed block", 1024, 0,
     {{Op::fail}, Null(100), Counts(0, 0), Get(100, 0, 16), {Op::raise}, Null(1000),
      {Op::releaseUnused}, Counts(1, 1), Get(8, 1, 16)}},
    {"limit before allocating", 1024, 2,
     {Get(1000, 0, 16), Get(1000, 1, 16), {Op::fail}, Get(1000, 0, 16)}},
};
// clang-format on

TEST(BlockBuffer, Scripts) {
    for (const Script& script : kScripts) {
        FakeHeap heap;
        CVTBlockBuffer buffer(script.blockSize);
        buffer.SetBlockSize(script.blockSize, script.maxBlocks);
        for (size_t i = 0; i < script.steps.size(); ++i) {
            const Step& step = script.steps[i];
            SCOPED_TRACE(std::string(script.name) + ", step " + std::to_string(i));
            char* piece = nullptr;
            switch (step.op) {
            case Op::get:
                piece = static_cast<char*>(buffer.GetBuffer(step.a));
                if (step.b < 0) {
                    EXPECT_EQ(piece, nullptr);
                } else if (size_t(step.b) >= heap.blocks.size()) {
                    ADD_FAILURE() << "no block " << step.b;
                } else {
                    EXPECT_EQ(piece, static_cast<char*>(heap.blocks[step.b]) + step.c);
                }
                break;
            case Op::counts:
                EXPECT_EQ(buffer.GetTotalBlockCount(), step.a);
                EXPECT_EQ(buffer.GetUsedBlockCount(), unsigned(step.b));
                break;
            case Op::reset:
                buffer.Reset();
                break;
            case Op::releaseUnused:
                buffer.ReleaseUnusedBlocks();
                break;
            case Op::releaseAll:
                buffer.ReleaseAll();
                break;
            case Op::limit:
                buffer.SetBlockSize(script.blockSize, step.a);
                break;
            case Op::fail:
                heap.nextBlock = Failure::null;
                break;
            case Op::raise:
                heap.nextBlock = Failure::exception;
                break;
            }
        }
    }
}

TEST(BlockBuffer, AssignmentSharesTheChain) {
    CVTBlockBuffer owner(1024);
    char* first = static_cast<char*>(owner.GetBuffer(100));
    {
        CVTBlockBuffer other;
        EXPECT_EQ(other.GetBlockSize(), 1048576u);
        other = owner;
        EXPECT_EQ(other.GetBlockSize(), 1024u);
        EXPECT_EQ(other.GetBuffer(10), first + 100);
        other = CVTBlockBuffer(); // hands the chain back before the destructor
    }
    EXPECT_EQ(owner.GetBuffer(10), first + 110); // behind the copy's piece
}

} // namespace
