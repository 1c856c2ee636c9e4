#include "schedule/DependencyGraphBuilder.h"

#include "isa/EncoderFormat.h"
#include "encoding/VormCodeLine.h"
#include "schedule/VormBasicBlock.h"
#include "schedule/DependencyGraph.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace vorp {

namespace {

// Register indices with a meaning of their own here.
constexpr int STATUS_REGISTER = 16;
constexpr int FX_REGISTER = 24;

bool contains(const std::vector<int>& registers, int reg)
{
    return std::find(registers.begin(), registers.end(), reg) != registers.end();
}

[[maybe_unused]] bool isRegisterIndex(int reg)
{
    return reg >= 0 && reg < EncoderFormat::NUM_REGISTERS;
}

} // namespace

void DependencyGraphBuilder::removeNonCode()
{
    m_nonCode.clear();
    m_nonCodeHeader.clear();
    m_nonCodeFooter.clear();
    bool sawCode = false;
    Lines pending;
    for (auto position = m_block->begin(); position != m_block->end(); ++position) {
        VormLine* line = *position;
        if (line->getType() != CODE_LINE) {
            (sawCode ? pending : m_nonCodeHeader).push_back(line);
            continue;
        }
        sawCode = true;
        if (!pending.empty()) {
            m_nonCode[line] = pending;
            pending.clear();
        }
    }
    m_nonCodeFooter = pending;
}

void DependencyGraphBuilder::build(DependencyGraph& graph) const
{
    using NodeSet = DependencyGraph::NodeSet;
    DependencyGraphNode* root = graph.getRoot();
    NodeSet leaves{root};
    std::array<DependencyGraphNode*, EncoderFormat::NUM_REGISTERS> lastDef;
    std::array<std::vector<DependencyGraphNode*>, EncoderFormat::NUM_REGISTERS> uses;
    lastDef.fill(root);
    for (auto& readers : uses)
        readers = {root};
    DependencyGraphNode* lastLoad = root;
    DependencyGraphNode* lastStore = root;

    for (auto position = m_block->begin(); position != m_block->end(); ++position) {
        if ((*position)->getType() != CODE_LINE)
            continue;
        auto* line = static_cast<VormCodeLine*>(*position);
        const std::vector<int>& reads = line->getRegUse();
        const std::vector<int>& writes = line->getRegDef();
        assert(std::all_of(reads.begin(), reads.end(), isRegisterIndex) &&
               std::all_of(writes.begin(), writes.end(), isRegisterIndex));
        const bool isLoad = line->isLoad();
        const bool isStore = line->isStore();

        std::uint32_t minBytes = 0;
        std::uint32_t maxBytes = 0;
        line->getByteRange(minBytes, maxBytes);
        std::uint32_t flags = 0;
        if (isLoad || isStore)
            flags |= DependencyGraphNode::MEMORY_ACCESS;
        if (line->isBranch())
            flags |= DependencyGraphNode::BRANCH;
        if (maxBytes == 4)
            flags |= DependencyGraphNode::LONG_INSTRUCTION;

        // Resource, control and memory instructions all touch fx; those that also read and write
        // the status register, and every branch, fence off everything around them.
        const bool touchesFx = contains(reads, FX_REGISTER) || contains(writes, FX_REGISTER);
        const bool barrier = (touchesFx && contains(reads, STATUS_REGISTER) && contains(writes, STATUS_REGISTER)) ||
                             line->isBranch();

        std::vector<DependencyGraphNode*> predecessors;
        if (barrier) {
            predecessors.assign(leaves.begin(), leaves.end());
            leaves.clear();
        } else {
            for (int reg : reads)
                predecessors.push_back(lastDef[reg]);
            for (int reg : writes)
                predecessors.push_back(lastDef[reg]);
            for (int reg : writes)
                predecessors.insert(predecessors.end(), uses[reg].begin(), uses[reg].end());
            if (isLoad || isStore) {
                predecessors.push_back(lastLoad);
                predecessors.push_back(lastStore);
            }
        }
        if (predecessors.empty())
            predecessors.push_back(root);
        for (DependencyGraphNode* predecessor : predecessors)
            leaves.erase(predecessor);

        DependencyGraphNode* node =
            graph.add(flags, predecessors.data(), static_cast<unsigned>(predecessors.size()));
        node->setLine(line);
        leaves.insert(node);

        if (barrier) {
            lastLoad = node;
            lastStore = node;
            lastDef.fill(node);
            for (auto& readers : uses)
                readers = {node};
        } else {
            for (int reg : writes) {
                lastDef[reg] = node;
                uses[reg] = {node};
            }
            for (int reg : reads)
                uses[reg].push_back(node);
            if (isLoad)
                lastLoad = node;
            if (isStore)
                lastStore = node;
        }
    }
}

} // namespace vorp
