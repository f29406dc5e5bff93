// Tests of CVTBlockBuffer: where each piece lands (block and offset), when a
// new block is taken, the restart at the block limit, the counts, allocation
// failure, and assignment sharing the chain.
#include "vetra/block_buffer.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "fake_heap.h"

namespace {

using vetra::memory::test::Failure;
using vetra::memory::test::FakeHeap;

// One step of a script, run on the buffer and the fake heap behind it.
using Step = std::function<void(CVTBlockBuffer&, FakeHeap&)>;

// The piece of `size` lies at `offset` in the `block`-th block ever allocated; -1: null.
Step Get(unsigned int size, int block, unsigned int offset) {
    return [=](CVTBlockBuffer& buffer, FakeHeap& heap) {
        char* piece = static_cast<char*>(buffer.GetBuffer(size));
        if (block < 0) {
            EXPECT_EQ(piece, nullptr);
        } else if (size_t(block) >= heap.blocks.size()) {
            ADD_FAILURE() << "no block " << block;
        } else {
            EXPECT_EQ(piece, static_cast<char*>(heap.blocks[size_t(block)]) + offset);
        }
    };
}
Step Null(unsigned int size) {
    return Get(size, -1, 0);
}
Step Counts(unsigned int total, unsigned int used) {
    return [=](CVTBlockBuffer& buffer, FakeHeap&) {
        EXPECT_EQ(buffer.GetTotalBlockCount(), total);
        EXPECT_EQ(buffer.GetUsedBlockCount(), used);
    };
}
Step Limit(unsigned int maxBlocks) {
    return [=](CVTBlockBuffer& b, FakeHeap&) { b.SetBlockSize(b.GetBlockSize(), maxBlocks); };
}
const Step Reset = [](CVTBlockBuffer& b, FakeHeap&) { b.Reset(); };
const Step ReleaseUnused = [](CVTBlockBuffer& b, FakeHeap&) { b.ReleaseUnusedBlocks(); };
const Step ReleaseAll = [](CVTBlockBuffer& b, FakeHeap&) { b.ReleaseAll(); };
const Step FailNext = [](CVTBlockBuffer&, FakeHeap& heap) { heap.nextBlock = Failure::null; };
const Step ThrowNext = [](CVTBlockBuffer&, FakeHeap& h) { h.nextBlock = Failure::exception; };

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
     {Get(1000, 0, 16), Get(1000, 1, 16), Get(1000, 2, 16), Limit(2), Get(8, 2, 1016),
      Get(1, 0, 16), Counts(3, 1)}},
    {"reset and release unused", 1024, 0,
     {ReleaseUnused, Counts(0, 0), Get(1000, 0, 16), Get(1000, 1, 16), Get(1000, 2, 16),
      Reset, Counts(3, 0), Get(10, 0, 16), Get(1000, 1, 16), Counts(3, 2), Reset,
      ReleaseUnused, Counts(1, 0), Get(1000, 0, 16), Get(1000, 3, 16)}},
    {"release all", 1024, 0,
     {ReleaseAll, Get(1000, 0, 16), ReleaseAll, Counts(0, 0), ReleaseUnused, Get(10, 1, 16)}},
    {"failed block", 1024, 0,
     {FailNext, Null(100), Counts(0, 0), Get(100, 0, 16), ThrowNext, Null(1000), ReleaseUnused,
      Counts(1, 1), Get(8, 1, 16)}},
    {"limit before allocating", 1024, 2,
     {Get(1000, 0, 16), Get(1000, 1, 16), FailNext, Get(1000, 0, 16)}},
};
// clang-format on

TEST(BlockBuffer, Scripts) {
    for (const Script& script : kScripts) {
        FakeHeap heap;
        CVTBlockBuffer buffer(script.blockSize);
        buffer.SetBlockSize(script.blockSize, script.maxBlocks);
        for (size_t i = 0; i < script.steps.size(); ++i) {
            SCOPED_TRACE(std::string(script.name) + ", step " + std::to_string(i));
            script.steps[i](buffer, heap);
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
