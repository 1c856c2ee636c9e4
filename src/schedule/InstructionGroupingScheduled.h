#pragma once

#include "encoding/InstructionGrouping.h"
#include "schedule/VormBasicBlock.h"
#include "schedule/DependencyGraph.h"
#include "schedule/DependencyGraphBuilder.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace vorp {

class VormLine;

// Fnops and the bytes left in the buffer after issuing the given instructions in order, from a
// start with `iBuffBytes` buffered and a word-aligned fetch position. Lines of 0 bytes are
// skipped; any other line that is not an instruction makes the count 0xFFFFFFFF.
std::pair<std::uint32_t, std::uint32_t> fnopCounts(const std::vector<VormLine*>& lines, std::uint32_t iBuffBytes);
std::pair<std::uint32_t, std::uint32_t> fnopCounts(const std::vector<DependencyGraphNode*>& schedule,
                                                   std::uint32_t iBuffBytes);

// A block of settled instructions that the scheduler may reorder. Every line in it is done, so the
// block's size is the same in any order and the format iteration treats it as one fixed unit;
// only its start alignment is open. A schedule is made, when first asked for, for each of the two
// alignments, and commit puts the lines in the order for the alignment that came out.
class InstructionGroupingScheduled : public InstructionGrouping {
public:
    using Schedule = std::vector<DependencyGraphNode*>;

    // With `debugOutput`, commit shows the block before and after scheduling on standard error.
    explicit InstructionGroupingScheduled(const VormBasicBlock& block, bool debugOutput = false);
    InstructionGroupingScheduled(const InstructionGroupingScheduled&) = delete;
    InstructionGroupingScheduled& operator=(const InstructionGroupingScheduled&) = delete;

    // Only kept: the lines get their addresses in commit.
    void setAddress(const VormAddress& address) override { m_address = address; }
    VormAddress getNextAddress() const override;
    bool isDone() const override { return true; }
    bool chooseEncoder(bool force, VormLabels& labels, AddressReader* addresses, bool& changed,
                       EncodingFailInfo& failInfo) override;
    void commit() override;

    // The order for a start at a word boundary (aligned) or half way into a word.
    const Schedule& getSchedule(bool aligned) const;
    std::uint32_t getScheduleSize(bool aligned) const;
    std::uint32_t getNextAddress(std::uint32_t address) const;
    // The misaligned order: a misaligned start may find one halfword buffered or three.
    void calcMisalignedSchedule(Schedule& schedule) const;
    // Puts the block's lines in the order of the schedule; non-code lines stay in front of the
    // instruction they stood in front of.
    void rewriteBlock(const Schedule& schedule);
    // fnopCounts of the block's lines in their present order.
    std::pair<std::uint32_t, std::uint32_t> fnopCount(std::uint32_t iBuffBytes) const;

    const VormBasicBlock& getBlock() const { return m_block; }
    const DependencyGraph& getGraph() const { return m_graph; }
    const DependencyGraphBuilder& getBuilder() const { return m_builder; }
    VormAddress getAddress() const override { return m_address; }
    // The block's size, which no order changes: the sum of its settled lines.
    std::uint32_t getFixedSize() const { return m_fixedSize; }

private:
    // The debug line of fnop counts for the present order.
    void printCounts(bool aligned, const char* secondHalf) const;

    VormAddress m_address{0, 0x3fffffff};
    VormBasicBlock m_block;
    DependencyGraph m_graph;
    DependencyGraphBuilder m_builder;
    mutable Schedule m_schedule[2];
    mutable std::uint32_t m_scheduleSize[2] = {0, 0};
    bool m_debugOutput;
    std::uint32_t m_fixedSize = 0;
};

} // namespace vorp
