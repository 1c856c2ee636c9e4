#include "ParsedSource.h"
#include "schedule/VormBasicBlock.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace vorp {
namespace {

// The blocks of ".text" as "[line | line] [line]".
std::string blocks(test::ParsedSource& source)
{
    std::vector<VormBasicBlock> found;
    getBlocks(source.section(), found);
    std::ostringstream text;
    for (const VormBasicBlock& block : found) {
        text << "[";
        for (auto position = block.begin(); position != block.end(); ++position) {
            if (position != block.begin())
                text << " | ";
            (*position)->dump(text);
        }
        text << "]";
    }
    return text.str();
}

TEST(VormBasicBlockTest, BlocksEndAtBranchesDataAndTargets)
{
    test::ParsedSource data("add r0, r1, r2\n.word 1\nadd r1, r2, r3\n");
    data.settle();
    // Lines since the last instruction go to the head of the next block.
    EXPECT_EQ(blocks(data), "[add r0, r1, r2][.word 1 | add r1, r2, r3]");

    test::ParsedSource labels("add r0, r1, r2\nx:\nadd r1, r2, r3\ny:\nadd r2, r3, r4\nbu y\n");
    labels.settle();
    EXPECT_EQ(blocks(labels), "[add r0, r1, r2 | x: | add r1, r2, r3][y: | add r2, r3, r4 | bu y]");

    // A call links and so doesn't end a block; a section ending in labels after a branch gets a
    // last block of just those labels.
    test::ParsedSource tail("bl f\nadd r0, r1, r2\nbu x\nx:\nz:\n");
    tail.settle();
    EXPECT_EQ(blocks(tail), "[bl f | add r0, r1, r2 | bu x][x: | z:]");

    test::ParsedSource globalLabel(".globl g\nadd r0, r1, r2\ng:\nadd r1, r2, r3\n");
    globalLabel.settle();
    EXPECT_EQ(blocks(globalLabel), "[add r0, r1, r2][g: | add r1, r2, r3]");
}

TEST(VormBasicBlockTest, UndecidedInstructionsCloseTheirBlock)
{
    test::ParsedSource source("add r0, r1, r2\nldc r0, x\nadd r1, r2, r3\n");
    EXPECT_EQ(blocks(source), "[add r0, r1, r2 | ldc r0, x][add r1, r2, r3]");
}

TEST(VormBasicBlockTest, EditingKeepsTheBlockStart)
{
    test::ParsedSource source("add r0, r1, r2\nadd r1, r2, r3\nadd r2, r3, r4\n");
    std::vector<VormBasicBlock> found;
    getBlocks(source.section(), found);
    ASSERT_EQ(found.size(), 1u);
    VormBasicBlock block = found[0];
    VormBasicBlock head = block.split(std::next(block.begin()));
    EXPECT_EQ(std::distance(head.begin(), head.end()), 1);
    EXPECT_EQ(std::distance(block.begin(), block.end()), 2);
    VormLine* removed = *block.begin();
    block.erase(block.begin()); // the line leaves the section and is the caller's again
    delete removed;
    std::ostringstream first;
    (*block.begin())->dump(first);
    EXPECT_EQ(first.str(), "add r2, r3, r4");
    EXPECT_EQ(source.section()->getLines().size(), 2u);
}

} // namespace
} // namespace vorp
