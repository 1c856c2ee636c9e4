#pragma once

#include "schedule/DependencyGraphNode.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace vorp {

// The order constraints of one block: a DAG with one root and no edge that another path already
// implies. The graph owns its nodes; it is built once and never changes.
class DependencyGraph {
public:
    using NodeSet = DependencyGraphNode::NodeSet;

    DependencyGraph();
    DependencyGraph(const DependencyGraph&) = delete;
    DependencyGraph& operator=(const DependencyGraph&) = delete;

    // A new node after the given predecessors. The list may repeat nodes and name the root; a
    // predecessor from which another one of the list is reachable is implied and gets no edge.
    DependencyGraphNode* add(std::uint32_t flags, DependencyGraphNode* const* predecessors, unsigned count);
    DependencyGraphNode* add(std::uint32_t flags, DependencyGraphNode* predecessor);

    // Whether one of the targets is reachable from a successor of `from`.
    static bool pathFrom(const DependencyGraphNode* from, DependencyGraphNode* const* targets, unsigned count,
                         NodeSet& visited);
    static bool explore(DependencyGraphNode* node, DependencyGraphNode* const* targets, unsigned count,
                        NodeSet& visited);

    DependencyGraphNode* getRoot() const { return m_root; }
    // Nodes added, the root not counted.
    std::uint32_t getNumNodes() const { return m_numNodes; }
    // The node created `index`-th; 0 is the root.
    DependencyGraphNode* getNode(std::uint32_t index) const { return m_nodes[index].get(); }

    // The graph in dot form, to `file` and to standard output alike; `printNode` writes the text of
    // a node's line. Only for a person at a debugger.
    void dumpDotGraph(FILE* file, void (*printNode)(FILE*, void*)) const;

private:
    void dumpNode(FILE* file, void (*printNode)(FILE*, void*), DependencyGraphNode* node, NodeSet& seen) const;

    std::vector<std::unique_ptr<DependencyGraphNode>> m_nodes;
    DependencyGraphNode* m_root;
    std::uint32_t m_numNodes = 0;
};

} // namespace vorp
