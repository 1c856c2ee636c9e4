#include "schedule/DependencyGraph.h"

#include <algorithm>
#include <cstdarg>

namespace vorp {

DependencyGraph::DependencyGraph()
{
    m_nodes.push_back(std::make_unique<DependencyGraphNode>(DependencyGraphNode::ROOT, 0));
    m_root = m_nodes.front().get();
}

DependencyGraphNode* DependencyGraph::add(std::uint32_t flags, DependencyGraphNode* const* predecessors,
                                          unsigned count)
{
    ++m_numNodes;
    m_nodes.push_back(std::make_unique<DependencyGraphNode>(flags, m_numNodes));
    DependencyGraphNode* node = m_nodes.back().get();
    // Only edges that no other path implies. The root is implied by any other predecessor, and
    // must be: a node that kept it beside another would never become ready.
    bool besideRoot = false;
    for (unsigned i = 0; i < count; ++i)
        besideRoot = besideRoot || !predecessors[i]->isRoot();
    for (unsigned i = 0; i < count; ++i) {
        DependencyGraphNode* predecessor = predecessors[i];
        // The root reaches every node, so any other predecessor implies it; asking the search
        // would walk the whole block.
        if (predecessor->isRoot() && besideRoot)
            continue;
        NodeSet visited;
        if (count > 1 && pathFrom(predecessor, predecessors, count, visited))
            continue;
        predecessor->addSuccessor(node);
    }
    return node;
}

DependencyGraphNode* DependencyGraph::add(std::uint32_t flags, DependencyGraphNode* predecessor)
{
    return add(flags, &predecessor, 1);
}

namespace {

std::uint32_t latestOf(DependencyGraphNode* const* targets, unsigned count)
{
    std::uint32_t latest = 0;
    for (unsigned i = 0; i < count; ++i)
        latest = std::max(latest, targets[i]->getIndex());
    return latest;
}

} // namespace

bool DependencyGraph::pathFrom(const DependencyGraphNode* from, DependencyGraphNode* const* targets, unsigned count,
                               NodeSet& visited)
{
    // Edges only lead to later nodes, and successors come in creation order: a node made after the
    // latest target can't lead to one.
    const std::uint32_t latest = latestOf(targets, count);
    for (DependencyGraphNode* successor : from->getSuccessors()) {
        if (successor->getIndex() > latest)
            break;
        if (explore(successor, targets, count, visited))
            return true;
    }
    return false;
}

bool DependencyGraph::explore(DependencyGraphNode* node, DependencyGraphNode* const* targets, unsigned count,
                              NodeSet& visited)
{
    for (unsigned i = 0; i < count; ++i)
        if (targets[i] == node)
            return true;
    visited.insert(node);
    const std::uint32_t latest = latestOf(targets, count);
    for (DependencyGraphNode* successor : node->getSuccessors()) {
        if (successor->getIndex() > latest)
            break;
        if (!visited.count(successor) && explore(successor, targets, count, visited))
            return true;
    }
    return false;
}

namespace {

// The dot text goes to the given file and to standard output alike.
void printBoth(FILE* file, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    vfprintf(file, format, args);
    vfprintf(stdout, format, copy);
    va_end(copy);
    va_end(args);
}

} // namespace

void DependencyGraph::dumpDotGraph(FILE* file, void (*printNode)(FILE*, void*)) const
{
    printBoth(file, "digraph g {\n");
    NodeSet seen;
    dumpNode(file, printNode, m_root, seen);
    printBoth(file, "}\n");
}

void DependencyGraph::dumpNode(FILE* file, void (*printNode)(FILE*, void*), DependencyGraphNode* node,
                               NodeSet& seen) const
{
    seen.insert(node);
    printBoth(file, "node%p [label=\"", static_cast<void*>(node));
    if (node->isRoot()) {
        printBoth(file, "root");
    } else {
        printNode(file, node->getLine());
        printNode(stdout, node->getLine());
    }
    printBoth(file, "\"];\n");
    for (DependencyGraphNode* successor : node->getSuccessors())
        printBoth(file, "node%p -> node%p;\n", static_cast<void*>(node), static_cast<void*>(successor));
    for (DependencyGraphNode* successor : node->getSuccessors())
        if (!seen.count(successor))
            dumpNode(file, printNode, successor, seen);
}

} // namespace vorp
