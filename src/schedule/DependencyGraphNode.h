#pragma once

#include <cstdint>
#include <set>

namespace vorp {

class VormLine;

// One instruction of a scheduled block, or the root above them all. Edges say that the one end
// must stay before the other.
class DependencyGraphNode {
public:
    // Flag bits.
    static constexpr std::uint32_t LONG_INSTRUCTION = 1; // 4 bytes
    static constexpr std::uint32_t MEMORY_ACCESS = 2;    // load or store
    static constexpr std::uint32_t BRANCH = 4;
    static constexpr std::uint32_t ROOT = 8;

    // Node sets are ordered by creation, never by address: ties between equal schedules must come
    // out the same in every run.
    struct CreationOrder {
        bool operator()(const DependencyGraphNode* a, const DependencyGraphNode* b) const
        {
            return a->m_index < b->m_index;
        }
    };
    using NodeSet = std::set<DependencyGraphNode*, CreationOrder>;

    DependencyGraphNode(std::uint32_t flags, std::uint32_t index) : m_flags(flags), m_index(index) {}
    DependencyGraphNode(const DependencyGraphNode&) = delete;
    DependencyGraphNode& operator=(const DependencyGraphNode&) = delete;

    const NodeSet& getSuccessors() const { return m_successors; }
    const NodeSet& getPredecessors() const { return m_predecessors; }
    // Records the edge this -> successor on both ends.
    void addSuccessor(DependencyGraphNode* successor);

    std::uint32_t getFlags() const { return m_flags; }
    bool isLong() const { return (m_flags & LONG_INSTRUCTION) != 0; }
    bool isMemoryAccess() const { return (m_flags & MEMORY_ACCESS) != 0; }
    bool isBranch() const { return (m_flags & BRANCH) != 0; }
    bool isRoot() const { return (m_flags & ROOT) != 0; }

    // The position in creation order: 0 for the root.
    std::uint32_t getIndex() const { return m_index; }
    VormLine* getLine() const { return m_line; }
    void setLine(VormLine* line) { m_line = line; }

private:
    NodeSet m_successors;
    std::uint32_t m_flags;
    NodeSet m_predecessors;
    VormLine* m_line = nullptr;
    std::uint32_t m_index;
};

} // namespace vorp
