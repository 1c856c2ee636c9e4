#include "schedule/SchedulerState.h"

#include "model/VormLine.h"

#include <algorithm>
#include <cassert>
#include <cstdio>

namespace vorp {

namespace {

// The order of the ready vector: latest first.
bool laterThan(const DependencyGraphNode* a, const DependencyGraphNode* b)
{
    return a->getIndex() > b->getIndex();
}

} // namespace

SchedulerState::SchedulerState(const NodeSet& waiting, std::uint32_t iBuffBytes, std::uint32_t address)
    : m_waiting(waiting.rbegin(), waiting.rend()), m_iBuffBytes(iBuffBytes), m_address(address)
{
}

void SchedulerState::addWaiting(DependencyGraphNode* node)
{
    const auto at = std::lower_bound(m_waiting.begin(), m_waiting.end(), node, laterThan);
    if (at == m_waiting.end() || *at != node)
        m_waiting.insert(at, node);
}

void SchedulerState::removeWaiting(DependencyGraphNode* node)
{
    const auto at = std::lower_bound(m_waiting.begin(), m_waiting.end(), node, laterThan);
    if (at != m_waiting.end() && *at == node)
        m_waiting.erase(at);
}

bool SchedulerState::isScheduled(const DependencyGraphNode* node) const
{
    const std::uint32_t index = node->getIndex();
    return index < m_isScheduled.size() && m_isScheduled[index];
}

bool SchedulerState::canAddToWaiting(const DependencyGraphNode* node) const
{
    for (const DependencyGraphNode* predecessor : node->getPredecessors())
        if (!isScheduled(predecessor))
            return false;
    return true;
}

IBuffer SchedulerState::issue(const DependencyGraphNode* node) const
{
    IBuffer buffer;
    buffer.modelCycle(node->isLong() ? 4 : 2, node->isMemoryAccess(), node->isBranch(), m_iBuffBytes, m_address);
    return buffer;
}

void SchedulerState::doInst(DependencyGraphNode* node)
{
    const IBuffer buffer = issue(node);
    m_iBuffBytes = buffer.getIBuffBytes();
    m_address = buffer.getAddress();
    m_fnops += buffer.getFnops();
    m_score += buffer.getScore();

    m_scheduled.push_back(node);
    if (node->getIndex() >= m_isScheduled.size())
        m_isScheduled.resize(node->getIndex() + 1, false);
    m_isScheduled[node->getIndex()] = true;
    removeWaiting(node);
    for (DependencyGraphNode* successor : node->getSuccessors())
        if (canAddToWaiting(successor))
            addWaiting(successor);
}

void SchedulerState::undo(std::uint32_t iBuffBytes, std::uint32_t address, std::uint32_t fnops, std::int32_t score)
{
    assert(!m_scheduled.empty());
    m_iBuffBytes = iBuffBytes;
    m_address = address;
    m_fnops = fnops;
    m_score = score;
    DependencyGraphNode* node = m_scheduled.back();
    m_scheduled.pop_back();
    m_isScheduled[node->getIndex()] = false;
    addWaiting(node);
    for (DependencyGraphNode* successor : node->getSuccessors())
        removeWaiting(successor);
}

void SchedulerState::dump() const
{
    for (const DependencyGraphNode* node : m_scheduled)
        node->getLine()->dump();
    fprintf(stderr, "Score: %d\n\n", static_cast<int>(m_score));
}

} // namespace vorp
