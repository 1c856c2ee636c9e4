#pragma once

#include "schedule/DependencyGraphNode.h"
#include "schedule/IBuffer.h"

#include <cstdint>
#include <vector>

namespace vorp {

// A partial schedule of a block: what has issued, in order, what is ready, and the state of the
// instruction buffer after it. The search changes one state in place (doInst, undo) and copies it
// only into the queues between stages.
class SchedulerState {
public:
    using NodeSet = DependencyGraphNode::NodeSet;
    // The ready nodes, latest first: a sorted vector, as the search changes it at every step and it
    // mostly holds a few nodes. The search mostly takes the earliest, which then comes off the end,
    // so a block of thousands of independent instructions costs no shifting.
    using Ready = std::vector<DependencyGraphNode*>;

    SchedulerState(const NodeSet& waiting, std::uint32_t iBuffBytes, std::uint32_t address);

    bool isScheduled(const DependencyGraphNode* node) const;
    // All the node's predecessors have issued.
    bool canAddToWaiting(const DependencyGraphNode* node) const;
    // The instruction buffer across the issue of a node, the state left as it is.
    IBuffer issue(const DependencyGraphNode* node) const;
    // Issues a ready node.
    void doInst(DependencyGraphNode* node);
    // Takes back the last doInst; the four values are those from before it.
    void undo(std::uint32_t iBuffBytes, std::uint32_t address, std::uint32_t fnops, std::int32_t score);
    // The scheduled lines and the score, on standard error.
    void dump() const;

    const std::vector<DependencyGraphNode*>& getScheduled() const { return m_scheduled; }
    const Ready& getWaiting() const { return m_waiting; }
    // The ready nodes in creation order.
    std::size_t waitingSize() const { return m_waiting.size(); }
    DependencyGraphNode* waitingAt(std::size_t i) const { return m_waiting[m_waiting.size() - 1 - i]; }
    std::uint32_t getIBuffBytes() const { return m_iBuffBytes; }
    std::uint32_t getAddress() const { return m_address; }
    std::uint32_t getFnops() const { return m_fnops; }
    std::int32_t getScore() const { return m_score; }

private:
    void addWaiting(DependencyGraphNode* node);
    void removeWaiting(DependencyGraphNode* node);

    std::vector<DependencyGraphNode*> m_scheduled;
    Ready m_waiting;
    std::uint32_t m_iBuffBytes;
    std::uint32_t m_address;
    std::uint32_t m_fnops = 0;
    std::int32_t m_score = 0;
    // m_scheduled again, by node index, so that the readiness test is cheap in long blocks.
    std::vector<bool> m_isScheduled;
};

} // namespace vorp
