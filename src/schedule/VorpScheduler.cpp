#include "schedule/VorpScheduler.h"

#include "schedule/DependencyGraph.h"
#include "schedule/SchedulerState.h"

#include <cassert>

namespace vorp {

bool VorpScheduler::StateLess::operator()(const SchedulerState* a, const SchedulerState* b) const
{
    return a->getScore() < b->getScore();
}

void VorpScheduler::schedule(unsigned iBufferHalfWords, const DependencyGraph& graph,
                             std::vector<DependencyGraphNode*>& out)
{
    m_root = &graph;
    m_best.clear();
    m_bestFnops = 0xFFFFFFFF;
    m_bestIBuffBytes = 0;
    m_steps = 0;
    schedule(iBufferHalfWords);
    out = m_best;
}

void VorpScheduler::schedule(unsigned iBufferHalfWords)
{
    assert(m_root);
    assert(iBufferHalfWords < 4);
    const std::uint32_t iBuffBytes = 2 * iBufferHalfWords;
    StatePriorityQueue current;
    StatePriorityQueue following;
    current.push(new SchedulerState(m_root->getRoot()->getSuccessors(), iBuffBytes, iBuffBytes & 3));
    unsigned depth = STAGE_DEPTH;
    while (!current.empty()) {
        while (!current.empty()) {
            SchedulerState* top = current.top();
            current.pop();
            if (stopBranching()) {
                if (!advance(top, depth, following))
                    delete top;
            } else {
                base(*top, depth, following);
                delete top;
            }
        }
        std::swap(current, following);
        depth += STAGE_DEPTH;
    }
}

void VorpScheduler::base(SchedulerState& state, unsigned depth, StatePriorityQueue& queue)
{
    if (m_bestFnops < state.getFnops())
        return;
    if (state.getWaiting().empty()) {
        testSchedule(state);
        return;
    }
    branch(state, depth, queue);
}

void VorpScheduler::branch(SchedulerState& state, unsigned depth, StatePriorityQueue& queue)
{
    // Each try is undone before the next, which leaves the ready set as it was: no copy of it is
    // needed, and in a long block of independent instructions a copy per step would be quadratic.
    for (std::size_t i = 0; i < state.waitingSize(); ++i) {
        if (foundKnownOptimalSchedule() || (i > 0 && stopBranching()))
            break;
        next(state, state.waitingAt(i), depth, queue);
    }
}

void VorpScheduler::next(SchedulerState& state, DependencyGraphNode* inst, unsigned depth, StatePriorityQueue& queue)
{
    assert(inst);
    if (state.getScheduled().size() + 1 == depth && state.waitingSize() > 1) {
        // The last step of a stage, with other instructions still ready after it: most orders end
        // here unqueued, which the issue model alone can tell without touching the ready set.
        const IBuffer after = state.issue(inst);
        const std::uint32_t fnops = state.getFnops() + after.getFnops();
        const std::int32_t score = state.getScore() + after.getScore();
        if (m_bestFnops < fnops || (queue.size() >= QUEUE_SIZE && queue.top()->getScore() >= score)) {
            ++m_steps;
            return;
        }
    }
    const std::uint32_t iBuffBytes = state.getIBuffBytes();
    const std::uint32_t address = state.getAddress();
    const std::uint32_t fnops = state.getFnops();
    const std::int32_t score = state.getScore();
    state.doInst(inst);
    ++m_steps;

    if (m_bestFnops < state.getFnops()) {
        state.undo(iBuffBytes, address, fnops, score);
        return;
    }
    if (state.getWaiting().empty())
        testSchedule(state);
    if (state.getScheduled().size() == depth) {
        enqueue(state, queue);
    } else {
        branch(state, depth, queue);
    }
    state.undo(iBuffBytes, address, fnops, score);
}

bool VorpScheduler::advance(SchedulerState* state, unsigned depth, StatePriorityQueue& queue)
{
    // What base, next and enqueue do once the budget is spent, where the search no longer
    // branches: the one path from the state is followed on the state itself, which then goes into
    // the queue instead of a copy. A block of many thousands of instructions would otherwise copy
    // its whole schedule at every stage.
    if (m_bestFnops < state->getFnops())
        return false;
    if (state->waitingSize() == 0) {
        testSchedule(*state);
        return false;
    }
    while (state->waitingSize() != 0 && !foundKnownOptimalSchedule()) {
        state->doInst(state->waitingAt(0));
        ++m_steps;
        if (m_bestFnops < state->getFnops())
            return false;
        if (state->waitingSize() == 0)
            testSchedule(*state);
        if (state->getScheduled().size() == depth)
            return enqueue(state, queue);
    }
    return false;
}

bool VorpScheduler::enqueue(SchedulerState* state, StatePriorityQueue& queue)
{
    if (queue.size() < QUEUE_SIZE) {
        queue.push(state);
        return true;
    }
    // The top is the best of the ten: a state gets in only if it beats them all, and it then
    // takes the place of that best one. Odd, but the objects depend on it.
    if (queue.top()->getScore() >= state->getScore())
        return false;
    SchedulerState* replaced = queue.top();
    queue.pop();
    delete replaced;
    queue.push(state);
    return true;
}

void VorpScheduler::enqueue(const SchedulerState& state, StatePriorityQueue& queue)
{
    // Copy only what gets in.
    if (queue.size() < QUEUE_SIZE || queue.top()->getScore() < state.getScore())
        enqueue(new SchedulerState(state), queue);
}

void VorpScheduler::testSchedule(const SchedulerState& state)
{
    const std::uint32_t fnops = state.getFnops();
    const std::uint32_t bytes = state.getIBuffBytes();
    if (m_bestFnops < fnops)
        return;
    if (m_bestFnops == fnops && m_bestIBuffBytes > bytes)
        return;
    // On a full tie the later schedule wins: keep it that way, the objects depend on it.
    m_best = state.getScheduled();
    m_bestFnops = fnops;
    m_bestIBuffBytes = bytes;
}

bool VorpScheduler::stopBranching() const
{
    // Once the budget is spent, the orders already begun are completed without branching.
    return m_steps > SEARCH_BUDGET;
}

bool VorpScheduler::foundKnownOptimalSchedule() const
{
    return m_bestFnops == 0 && m_bestIBuffBytes > 4;
}

} // namespace vorp
