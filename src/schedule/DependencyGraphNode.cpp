#include "schedule/DependencyGraphNode.h"

namespace vorp {

void DependencyGraphNode::addSuccessor(DependencyGraphNode* successor)
{
    m_successors.insert(successor);
    successor->m_predecessors.insert(this);
}

} // namespace vorp
