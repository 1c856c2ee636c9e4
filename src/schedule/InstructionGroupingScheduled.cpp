#include "schedule/InstructionGroupingScheduled.h"

#include "encoding/VormCodeLine.h"
#include "model/VormLine.h"
#include "schedule/IBuffer.h"
#include "schedule/VorpScheduler.h"

#include <cassert>
#include <cstdio>

namespace vorp {

std::pair<std::uint32_t, std::uint32_t> fnopCounts(const std::vector<VormLine*>& lines, std::uint32_t iBuffBytes)
{
    if (lines.empty())
        return {0, iBuffBytes};
    IBuffer buffer;
    std::uint32_t address = iBuffBytes & 3;
    std::uint32_t fnops = 0;
    for (VormLine* line : lines) {
        const std::uint32_t bytes = line->getNumBytes();
        if (bytes == 0)
            continue;
        if (line->getType() != CODE_LINE)
            return {0xFFFFFFFF, 0};
        const auto* code = static_cast<const VormCodeLine*>(line);
        buffer.modelCycle(bytes, code->isLoad() || code->isStore(), code->isBranch(), iBuffBytes, address);
        iBuffBytes = buffer.getIBuffBytes();
        address = buffer.getAddress();
        fnops += buffer.getFnops();
    }
    return {fnops, iBuffBytes};
}

std::pair<std::uint32_t, std::uint32_t> fnopCounts(const std::vector<DependencyGraphNode*>& schedule,
                                                   std::uint32_t iBuffBytes)
{
    std::vector<VormLine*> lines;
    lines.reserve(schedule.size());
    for (const DependencyGraphNode* node : schedule)
        lines.push_back(node->getLine());
    return fnopCounts(lines, iBuffBytes);
}

InstructionGroupingScheduled::InstructionGroupingScheduled(const VormBasicBlock& block, bool debugOutput)
    : m_block(block), m_builder(&m_block), m_debugOutput(debugOutput)
{
    m_builder.removeNonCode();
    m_builder.build(m_graph);
    for (std::uint32_t i = 1; i <= m_graph.getNumNodes(); ++i)
        m_fixedSize += m_graph.getNode(i)->getLine()->getNumBytes();
}

bool InstructionGroupingScheduled::chooseEncoder(bool, VormLabels&, AddressReader*, bool& changed, EncodingFailInfo&)
{
    changed = false;
    return true;
}

const InstructionGroupingScheduled::Schedule& InstructionGroupingScheduled::getSchedule(bool aligned) const
{
    const int which = aligned ? 0 : 1;
    Schedule& schedule = m_schedule[which];
    if (!schedule.empty())
        return schedule;
    if (aligned)
        VorpScheduler().schedule(2, m_graph, schedule);
    else
        calcMisalignedSchedule(schedule);
    assert(schedule.size() == m_graph.getNumNodes());
    std::uint32_t size = 0;
    for (const DependencyGraphNode* node : schedule)
        size += node->getLine()->getNumBytes();
    m_scheduleSize[which] = size;
    return schedule;
}


std::uint32_t InstructionGroupingScheduled::getScheduleSize(bool aligned) const
{
    getSchedule(aligned);
    return m_scheduleSize[aligned ? 0 : 1];
}

void InstructionGroupingScheduled::calcMisalignedSchedule(Schedule& schedule) const
{
    VorpScheduler scheduler;
    scheduler.schedule(1, m_graph, schedule);
    const auto oneHalfword = fnopCounts(schedule, 2);
    if (oneHalfword.first == 0)
        return;
    Schedule other;
    scheduler.schedule(3, m_graph, other);
    const auto threeHalfwords = fnopCounts(other, 6);
    if (threeHalfwords.first < oneHalfword.first)
        schedule = other;
}

std::uint32_t InstructionGroupingScheduled::getNextAddress(std::uint32_t address) const
{
    // Every order holds the same settled lines, so the size of the schedule for either alignment
    // is the block's own: the schedule itself is only made when commit asks for it, for the
    // alignment that came out, instead of for both ends of every address range on the way.
    return address + m_fixedSize;
}

VormAddress InstructionGroupingScheduled::getNextAddress() const
{
    if (m_address.min == m_address.max) {
        const std::uint32_t next = getNextAddress(m_address.min);
        return VormAddress{next, next};
    }
    const std::uint32_t min = getNextAddress(m_address.min);
    const std::uint32_t max = getNextAddress(m_address.max);
    // Across a change of alignment the block's end must still move with its start.
    if (m_address.max - m_address.min >= 2) {
        assert(getNextAddress(m_address.min + 2) >= min);
        assert(getNextAddress(m_address.max - 2) <= max);
    }
    return min <= max ? VormAddress{min, max} : VormAddress{max, min};
}

void InstructionGroupingScheduled::rewriteBlock(const Schedule& schedule)
{
    std::vector<VormLine*> order(m_builder.getNonCodeHeader());
    const auto& nonCode = m_builder.getNonCode();
    for (const DependencyGraphNode* node : schedule) {
        const auto found = nonCode.find(node->getLine());
        if (found != nonCode.end())
            order.insert(order.end(), found->second.begin(), found->second.end());
        order.push_back(node->getLine());
    }
    order.insert(order.end(), m_builder.getNonCodeFooter().begin(), m_builder.getNonCodeFooter().end());
    assert(order.size() == static_cast<std::size_t>(std::distance(m_block.begin(), m_block.end())));

    const LinePosition oldBegin = m_block.begin();
    for (VormLine* line : order)
        m_block.insert(oldBegin, line);
    m_block.erase(oldBegin, m_block.end());
}

std::pair<std::uint32_t, std::uint32_t> InstructionGroupingScheduled::fnopCount(std::uint32_t iBuffBytes) const
{
    return fnopCounts(std::vector<VormLine*>(m_block.begin(), m_block.end()), iBuffBytes);
}

void InstructionGroupingScheduled::printCounts(bool aligned, const char* secondHalf) const
{
    const auto first = fnopCount(aligned ? 4 : 2);
    fprintf(stderr, "%s: fnops %u, ibuf bytes %u", aligned ? "aligned" : "misaligned", first.first, first.second);
    if (!aligned) {
        const auto second = fnopCount(6);
        fprintf(stderr, "%s%u, ibuf bytes %u", secondHalf, second.first, second.second);
    }
    fprintf(stderr, "\n");
}

void InstructionGroupingScheduled::commit()
{
    const bool aligned = (m_address.min & 2) == 0;
    std::pair<std::uint32_t, std::uint32_t> before[2];
    if (m_debugOutput) {
        fprintf(stderr, "Before scheduling:\n");
        m_block.dump();
        printCounts(aligned, " | : fnops ");
        before[0] = fnopCount(aligned ? 4 : 2);
        before[1] = fnopCount(6);
    }

    rewriteBlock(getSchedule(aligned));

    VormAddress address = m_address;
    for (auto position = m_block.begin(); position != m_block.end(); ++position) {
        (*position)->setAddress(address);
        address = (*position)->getNextAddress();
    }
    assert(address.min - m_address.min == getScheduleSize(aligned));

    if (m_debugOutput) {
        fprintf(stderr, "After scheduling:\n");
        m_block.dump();
        printCounts(aligned, " | fnops ");
        auto worse = [](std::pair<std::uint32_t, std::uint32_t> was, std::pair<std::uint32_t, std::uint32_t> is) {
            return is.first > was.first || (is.first == was.first && is.second < was.second);
        };
        bool pessimised = worse(before[0], fnopCount(aligned ? 4 : 2));
        if (!aligned)
            pessimised = pessimised && worse(before[1], fnopCount(6));
        if (pessimised)
            fprintf(stderr, "*** scheduling pessimised code ***\n");
    }
}

} // namespace vorp
