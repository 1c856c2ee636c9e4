#pragma once

#include "schedule/DependencyGraphNode.h"

#include <cstdint>
#include <queue>
#include <vector>

namespace vorp {

class DependencyGraph;
class SchedulerState;

// Looks for the order of a block's instructions with the fewest fetch stalls: a beam search in
// stages of 6 instructions. From each of up to 10 states of a stage every order of the next 6 ready
// instructions is tried depth first; the survivors seed the next stage.
class VorpScheduler {
public:
    static constexpr unsigned STAGE_DEPTH = 6;
    static constexpr std::size_t QUEUE_SIZE = 10;
    // Steps of the depth-first search allowed for one block. A stage tries every order of 6 of the
    // ready instructions, which for a block of dozens of independent instructions is hundreds of
    // millions of orders; past this budget the search only completes the orders it is on, taking
    // the ready instructions in source order, and keeps the best complete one.
    static constexpr std::uint64_t SEARCH_BUDGET = 500000;

    // The best order for a block that starts with `iBufferHalfWords` halfwords in the buffer
    // (below 4); the fetch position starts word-aligned.
    void schedule(unsigned iBufferHalfWords, const DependencyGraph& graph, std::vector<DependencyGraphNode*>& out);

    // What the last search found.
    std::uint32_t getBestFnops() const { return m_bestFnops; }
    std::uint32_t getBestIBuffBytes() const { return m_bestIBuffBytes; }

private:
    struct StateLess {
        bool operator()(const SchedulerState* a, const SchedulerState* b) const;
    };
    // Its top is the state with the highest score.
    using StatePriorityQueue = std::priority_queue<SchedulerState*, std::vector<SchedulerState*>, StateLess>;

    void schedule(unsigned iBufferHalfWords);
    void base(SchedulerState& state, unsigned depth, StatePriorityQueue& queue);
    void next(SchedulerState& state, DependencyGraphNode* inst, unsigned depth, StatePriorityQueue& queue);
    // Tries each ready node in creation order, or only the first once the budget is spent.
    void branch(SchedulerState& state, unsigned depth, StatePriorityQueue& queue);
    void testSchedule(const SchedulerState& state);
    // No stall and a buffer that starts the next block well: nothing can beat it.
    bool foundKnownOptimalSchedule() const;
    // Whether the search should try no other ready instruction at this point.
    bool stopBranching() const;
    void enqueue(const SchedulerState& state, StatePriorityQueue& queue);
    // The same for a state that is handed over; false if the queue turned it down.
    bool enqueue(SchedulerState* state, StatePriorityQueue& queue);
    // The search from a state once the budget is spent; false if the state was not queued.
    bool advance(SchedulerState* state, unsigned depth, StatePriorityQueue& queue);

    const DependencyGraph* m_root = nullptr;
    std::vector<DependencyGraphNode*> m_best;
    std::uint32_t m_bestFnops = 0xFFFFFFFF;
    std::uint32_t m_bestIBuffBytes = 0;
    std::uint64_t m_steps = 0;
};

} // namespace vorp
