#include "schedule/IBuffer.h"

#include <gtest/gtest.h>

#include <vector>

namespace vorp {
namespace {

struct Cycle {
    std::uint32_t bytes;
    std::uint32_t address;
    std::uint32_t fnops;
    std::int32_t score;
};

Cycle issue(std::uint32_t instBytes, bool isMemory, bool isBranch, std::uint32_t iBuffBytes, std::uint32_t address)
{
    IBuffer buffer;
    buffer.modelCycle(instBytes, isMemory, isBranch, iBuffBytes, address);
    return {buffer.getIBuffBytes(), buffer.getAddress(), buffer.getFnops(), buffer.getScore()};
}

TEST(IBufferTest, ShortInstructionsFromAnAlignedStart)
{
    // Four 2-byte ALU instructions: the buffer goes 6, 4, 6, 4; the fetches at 6 bytes are lost
    // slots, which the score counts but fnops do not.
    std::uint32_t bytes = 4;
    std::uint32_t address = 0;
    std::int32_t score = 0;
    std::uint32_t fnops = 0;
    std::vector<std::uint32_t> seen;
    for (int i = 0; i < 4; ++i) {
        const Cycle cycle = issue(2, false, false, bytes, address);
        bytes = cycle.bytes;
        address = cycle.address;
        score += cycle.score;
        fnops += cycle.fnops;
        seen.push_back(bytes);
    }
    EXPECT_EQ(seen, (std::vector<std::uint32_t>{6, 4, 6, 4}));
    EXPECT_EQ(fnops, 0u);
    EXPECT_EQ(score, -4);
    EXPECT_EQ(address, 0u);
}

TEST(IBufferTest, LongInstructions)
{
    // Two bytes buffered are not enough for a 4-byte instruction: one fnop, in which the rest of
    // the word arrives; the issue cycle's fetch then finds no room.
    const Cycle starved = issue(4, false, false, 2, 2);
    EXPECT_EQ(starved.fnops, 1u);
    EXPECT_EQ(starved.score, -4);
    EXPECT_EQ(starved.bytes, 2u);
    EXPECT_EQ(starved.address, 2u);

    // From 6 bytes the issue cycle's fetch has no room; 2 bytes remain.
    const Cycle full = issue(4, false, false, 6, 2);
    EXPECT_EQ(full.fnops, 0u);
    EXPECT_EQ(full.score, -2);
    EXPECT_EQ(full.bytes, 2u);
    EXPECT_EQ(full.address, 2u);
}

TEST(IBufferTest, MemoryBranchesAndHalfFetches)
{
    // A load takes the fetch slot: the buffer runs dry, which costs a cycle that fetches a word.
    const Cycle load = issue(2, true, false, 2, 2);
    EXPECT_EQ(load.fnops, 1u);
    EXPECT_EQ(load.score, -2);
    EXPECT_EQ(load.bytes, 4u);
    EXPECT_EQ(load.address, 0u);

    // A branch leaving the buffer empty pays nothing: what follows is fetched afresh.
    const Cycle branch = issue(2, true, true, 2, 2);
    EXPECT_EQ(branch.fnops, 0u);
    EXPECT_EQ(branch.score, 0);
    EXPECT_EQ(branch.bytes, 0u);

    // With the fetch position half way into a word only the rest of it comes.
    const Cycle half = issue(2, false, false, 2, 0);
    EXPECT_EQ(half.fnops, 0u);
    EXPECT_EQ(half.score, -1);
    EXPECT_EQ(half.bytes, 2u);
    EXPECT_EQ(half.address, 2u);

    IBuffer buffer;
    EXPECT_TRUE(IBuffer::isWordAligned(8));
    EXPECT_FALSE(IBuffer::isWordAligned(6));
    EXPECT_FALSE(buffer.canIssue(2));
}

} // namespace
} // namespace vorp
