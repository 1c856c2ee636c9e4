#include "ParsedSource.h"
#include "encoding/InstructionGroupingSingle.h"
#include "layout/FormatChoice.h"
#include "schedule/InstructionGroupingScheduled.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace vorp {
namespace {

// The lines of ".text" in their present order, "|" between them.
std::string order(test::ParsedSource& source)
{
    std::ostringstream text;
    for (const VormLine* line : source.section()->getLines()) {
        if (text.tellp() > 0)
            text << "|";
        line->dump(text);
    }
    return text.str();
}

// The groupings of ".text" as "S" (single) and "B" (scheduled block, with its line count).
std::string groupings(test::ParsedSource& source, bool& hasScheduling)
{
    InstructionGroupings found;
    getInstructionGroupings(source.assembler, source.section(), found, hasScheduling);
    std::string text;
    for (const auto& grouping : found) {
        if (const auto* block = dynamic_cast<const InstructionGroupingScheduled*>(grouping.get()))
            text += "B" + std::to_string(std::distance(block->getBlock().begin(), block->getBlock().end()));
        else if (dynamic_cast<const InstructionGroupingSingle*>(grouping.get()))
            text += "S";
        else
            text += "?";
    }
    return text;
}

// The bytes of ".text" once the passes have run.
std::vector<std::uint8_t> bytesOf(test::ParsedSource& source)
{
    source.settle();
    std::vector<std::uint8_t> result;
    for (VormLine* line : source.section()->getLines()) {
        const std::vector<std::uint8_t> some = source.encode(line);
        result.insert(result.end(), some.begin(), some.end());
    }
    return result;
}

const char* const loadChain = "ldw r0, sp[1]\nldw r1, sp[2]\nldw r2, sp[3]\nadd r4, r5, r6\nadd r7, r8, r9\n";

TEST(InstructionGroupingsTest, UnscheduledSectionsHaveOnlySingles)
{
    test::ParsedSource source(std::string(loadChain) + "x:\n.byte 1\n");
    bool hasScheduling = true;
    EXPECT_EQ(groupings(source, hasScheduling), "SSSSSSS");
    EXPECT_FALSE(hasScheduling);

    test::ParsedSource empty("");
    EXPECT_EQ(groupings(empty, hasScheduling), "");
    EXPECT_FALSE(hasScheduling);
}

TEST(InstructionGroupingsTest, BlocksAreCutAtLinesThatCannotMove)
{
    bool hasScheduling = false;
    // The call to a later label is undecided after the first pass: it stands alone, and the
    // instructions on either side are scheduled apart. .byte is a cut; the label that the call
    // names begins the next block and, standing before its first instruction, stays alone.
    test::ParsedSource call(".scheduling on\nldw r0, sp[1]\nadd r1, r2, r3\nbl f\nldw r4, sp[2]\n"
                            "add r5, r6, r7\n.byte 1\n.byte 2\nf:\nadd r1, r1, 1\nretsp 0\n");
    EXPECT_EQ(groupings(call, hasScheduling), "B2SB2SSSB2");
    EXPECT_TRUE(hasScheduling);

    // Lines written with scheduling off are cuts, and so is a branch back to a label, which is
    // undecided while addresses are at their widest. Lines before the first instruction of a block
    // stand alone; a block without instructions leaves an empty scheduled grouping.
    test::ParsedSource mixed("x:\n.scheduling on\nadd r0, r1, r2\n.scheduling off\nadd r3, r4, r5\n"
                             ".scheduling on\nadd r6, r7, r8\nbu x\ny:\n");
    EXPECT_EQ(groupings(mixed, hasScheduling), "SB1SB1SB0S");
}

TEST(InstructionGroupingsTest, SchedulingReordersALoadChain)
{
    test::ParsedSource source(std::string(".scheduling on\n") + loadChain);
    source.settle();
    // From an aligned start the written order stalls once (the second load empties the buffer);
    // interleaved, no load does. Of the orders without a stall the search keeps the last it meets.
    EXPECT_EQ(order(source), "add r7, r8, r9|ldw r0, sp [ 1 ]|add r4, r5, r6|ldw r1, sp [ 2 ]|ldw r2, sp [ 3 ]");
    std::uint32_t address = 0;
    for (const VormLine* line : source.section()->getLines()) {
        EXPECT_EQ(line->getAddress().min, address);
        EXPECT_EQ(line->getAddress().max, address);
        address += line->getNumBytes();
    }
    EXPECT_EQ(source.section()->getSize(), 10u);
}

TEST(InstructionGroupingsTest, OptimalBlocksStayInPlace)
{
    // Written like this the block ends with 6 bytes buffered and no fnop: the first order tried,
    // and nothing can beat it.
    test::ParsedSource optimal(".scheduling on\nadd r0, r1, r2\nadd r3, r0, 1\nldc r7, 1000\nadd r4, r5, r6\n");
    optimal.settle();
    EXPECT_EQ(order(optimal), "add r0, r1, r2|add r3, r0, 1|ldc r7, 1000|add r4, r5, r6");

    // With the long instruction last the buffer ends with only 2 bytes; it moves up.
    test::ParsedSource late(".scheduling on\nadd r0, r1, r2\nadd r3, r0, 1\nadd r4, r5, r6\nldc r7, 1000\n");
    late.settle();
    EXPECT_EQ(order(late), "add r0, r1, r2|add r3, r0, 1|ldc r7, 1000|add r4, r5, r6");
}

TEST(InstructionGroupingsTest, NonCodeLinesStayWithTheirInstruction)
{
    test::ParsedSource source(std::string(".file 1 \"a.c\"\n.scheduling on\nfirst:\nldw r0, sp[1]\nsecond:\n"
                                          "ldw r1, sp[2]\nldw r2, sp[3]\nthird:\n.loc 1 4 0\nadd r4, r5, r6\n"
                                          "fourth:\nadd r7, r8, r9\nlast:\n"));
    source.settle();
    EXPECT_EQ(order(source), "first:|fourth:|add r7, r8, r9|ldw r0, sp [ 1 ]|third:|.loc 1, 4|add r4, r5, r6|"
                             "second:|ldw r1, sp [ 2 ]|ldw r2, sp [ 3 ]|last:");
    EXPECT_EQ(source.label("fourth")->getTargetLine()->getAddress().min, 0u);
    EXPECT_EQ(source.label("second")->getTargetLine()->getAddress().min, 6u);
    EXPECT_EQ(source.label("last")->getTargetLine()->getAddress().min, 10u);
}

TEST(InstructionGroupingsTest, MisalignedBlocksGetTheirOwnSchedule)
{
    // The block after the odd-sized start begins half way into a word: one halfword buffered.
    test::ParsedSource source(".scheduling on\nldc r0, 1000\nnop\nbu x\nx:\nldw r1, sp[1]\nadd r2, r3, r4\n");
    source.settle();
    // Misaligned, the written order stalls after the load; the add first leaves 4 bytes for it.
    EXPECT_EQ(order(source), "ldc r0, 1000|nop|bu x|x:|add r2, r3, r4|ldw r1, sp [ 1 ]");
}

TEST(InstructionGroupingsTest, ScheduleOffGivesTheSameBytes)
{
    const std::string text = std::string(loadChain) + "bl f\nldw r3, sp[4]\nf:\nadd r0, r0, 1\nretsp 0\n";
    // All three sources are parsed before any is settled: each assembler has its own state.
    test::ParsedSource plain(text);
    test::ParsedSource offAgain(".scheduling on\n.scheduling off\n" + text);
    test::ParsedSource on(".scheduling on\n" + text);
    const std::vector<std::uint8_t> onBytes = bytesOf(on);
    const std::vector<std::uint8_t> plainBytes = bytesOf(plain);
    EXPECT_EQ(bytesOf(offAgain), plainBytes);
    EXPECT_NE(onBytes, plainBytes);
    EXPECT_EQ(onBytes.size(), plainBytes.size());
}

TEST(InstructionGroupingsTest, FnopCountsOfLines)
{
    test::ParsedSource source(std::string(loadChain) + "x:\n.byte 1\n");
    source.settle();
    std::vector<VormLine*> lines = source.lines();
    // ldw, ldw (empties the buffer), ldw, add, add; the label is skipped.
    std::vector<VormLine*> code(lines.begin(), lines.begin() + 6);
    EXPECT_EQ(fnopCounts(code, 4), (std::pair<std::uint32_t, std::uint32_t>{1, 6}));
    EXPECT_EQ(fnopCounts(std::vector<VormLine*>{}, 6), (std::pair<std::uint32_t, std::uint32_t>{0, 6}));
    // Bytes that are no instruction end the count.
    EXPECT_EQ(fnopCounts(lines, 4), (std::pair<std::uint32_t, std::uint32_t>{0xFFFFFFFF, 0}));
}

TEST(InstructionGroupingsTest, DebugOutputShowsBothOrders)
{
    test::ParsedSource source(std::string(".scheduling on\n") + loadChain, true);
    testing::internal::CaptureStderr();
    source.settle();
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_EQ(printed, "Before scheduling:\nldw r0, sp [ 1 ]\nldw r1, sp [ 2 ]\nldw r2, sp [ 3 ]\nadd r4, r5, r6\n"
                       "add r7, r8, r9\naligned: fnops 1, ibuf bytes 6\nAfter scheduling:\nadd r7, r8, r9\n"
                       "ldw r0, sp [ 1 ]\nadd r4, r5, r6\nldw r1, sp [ 2 ]\nldw r2, sp [ 3 ]\n"
                       "aligned: fnops 0, ibuf bytes 2\n");
}

} // namespace
} // namespace vorp
