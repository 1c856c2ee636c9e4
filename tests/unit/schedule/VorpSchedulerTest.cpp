#include "schedule/DependencyGraph.h"
#include "schedule/SchedulerState.h"
#include "schedule/VorpScheduler.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <vector>

namespace vorp {
namespace {

using Schedule = std::vector<DependencyGraphNode*>;
constexpr std::uint32_t ALU = 0;
constexpr std::uint32_t MEM = DependencyGraphNode::MEMORY_ACCESS;
constexpr std::uint32_t LONG = DependencyGraphNode::LONG_INSTRUCTION;

// Issues an order on a fresh state; the order must respect the graph.
SchedulerState replay(const DependencyGraph& graph, const Schedule& order, unsigned halfWords)
{
    SchedulerState state(graph.getRoot()->getSuccessors(), 2 * halfWords, (2 * halfWords) & 3);
    for (DependencyGraphNode* node : order) {
        const SchedulerState::Ready& ready = state.getWaiting();
        EXPECT_TRUE(std::find(ready.begin(), ready.end(), node) != ready.end())
            << "node " << node->getIndex() << " issued before it was ready";
        state.doInst(node);
    }
    EXPECT_TRUE(state.getWaiting().empty());
    EXPECT_EQ(state.getScheduled().size(), graph.getNumNodes());
    return state;
}

// A chain of loads with ALU instructions beside it, all in the order written.
struct LoadChain {
    LoadChain(int loads, int alus)
    {
        DependencyGraphNode* last = graph.getRoot();
        for (int i = 0; i < loads; ++i)
            written.push_back(last = graph.add(MEM, last));
        for (int i = 0; i < alus; ++i)
            written.push_back(graph.add(ALU, graph.getRoot()));
    }
    DependencyGraph graph;
    Schedule written;
};

TEST(SchedulerStateTest, DoInstAndUndoRestoreEachOther)
{
    DependencyGraph graph;
    DependencyGraphNode* a = graph.add(MEM, graph.getRoot());
    DependencyGraphNode* b = graph.add(ALU, graph.getRoot());
    DependencyGraphNode* list[] = {a, b};
    DependencyGraphNode* c = graph.add(LONG, list, 2);

    SchedulerState state(graph.getRoot()->getSuccessors(), 4, 0);
    state.doInst(a);
    EXPECT_EQ(state.getWaiting(), (SchedulerState::Ready{b}));
    EXPECT_EQ(state.getIBuffBytes(), 2u);
    EXPECT_EQ(state.getAddress(), 2u);
    state.doInst(b);
    // c becomes ready only once both its predecessors have issued.
    EXPECT_EQ(state.getWaiting(), (SchedulerState::Ready{c}));
    EXPECT_TRUE(state.isScheduled(b));
    EXPECT_EQ(state.getIBuffBytes(), 4u);

    state.undo(2, 2, 0, 0);
    EXPECT_EQ(state.getWaiting(), (SchedulerState::Ready{b}));
    EXPECT_FALSE(state.isScheduled(b));
    EXPECT_FALSE(state.canAddToWaiting(c));
    EXPECT_EQ(state.getScheduled(), (Schedule{a}));
    EXPECT_EQ(state.getIBuffBytes(), 2u);
}

TEST(VorpSchedulerTest, SmallGraphs)
{
    VorpScheduler scheduler;
    Schedule result;

    DependencyGraph empty;
    scheduler.schedule(2, empty, result);
    EXPECT_TRUE(result.empty());
    EXPECT_EQ(scheduler.getBestFnops(), 0u);
    EXPECT_EQ(scheduler.getBestIBuffBytes(), 4u);

    DependencyGraph one;
    DependencyGraphNode* only = one.add(LONG, one.getRoot());
    scheduler.schedule(1, one, result);
    EXPECT_EQ(result, (Schedule{only}));
    // One halfword is not enough for a 4-byte instruction.
    EXPECT_EQ(scheduler.getBestFnops(), 1u);
}

TEST(VorpSchedulerTest, StopsAtAKnownOptimalSchedule)
{
    // Three ALU instructions from an aligned start end with 6 bytes and no fnop: the first order
    // tried is kept, though the others are as good.
    LoadChain block(0, 3);
    VorpScheduler scheduler;
    Schedule result;
    scheduler.schedule(2, block.graph, result);
    EXPECT_EQ(result, block.written);
    EXPECT_EQ(scheduler.getBestFnops(), 0u);
    EXPECT_EQ(scheduler.getBestIBuffBytes(), 6u);
}

TEST(VorpSchedulerTest, TiesGoToTheLaterSchedule)
{
    // Two independent memory accesses: both orders cost one fnop and end with 4 bytes; the order
    // found last wins.
    DependencyGraph graph;
    DependencyGraphNode* a = graph.add(MEM, graph.getRoot());
    DependencyGraphNode* b = graph.add(MEM, graph.getRoot());
    VorpScheduler scheduler;
    Schedule result;
    scheduler.schedule(2, graph, result);
    EXPECT_EQ(result, (Schedule{b, a}));
    EXPECT_EQ(scheduler.getBestFnops(), 1u);
    EXPECT_EQ(scheduler.getBestIBuffBytes(), 4u);
}

TEST(VorpSchedulerTest, MovesAluInstructionsBetweenLoads)
{
    // Written order: the loads run the buffer dry once. Interleaved, they never do; every order
    // without an fnop ends with 2 bytes, and of those the search keeps the last it meets.
    LoadChain block(3, 2);
    EXPECT_EQ(replay(block.graph, block.written, 2).getFnops(), 1u);
    VorpScheduler scheduler;
    Schedule result;
    scheduler.schedule(2, block.graph, result);
    const SchedulerState best = replay(block.graph, result, 2);
    EXPECT_EQ(best.getFnops(), 0u);
    EXPECT_EQ(scheduler.getBestFnops(), 0u);
    EXPECT_EQ(scheduler.getBestIBuffBytes(), 2u);
    const Schedule& w = block.written;
    EXPECT_EQ(result, (Schedule{w[4], w[0], w[3], w[1], w[2]}));
}

TEST(VorpSchedulerTest, LongBlocksGoThroughSeveralStages)
{
    // Twenty nodes take four stages; the result must be complete, legal and no worse than the
    // order written.
    for (int alus : {3, 5, 7}) {
        LoadChain block(20 - alus, alus);
        const std::uint32_t writtenFnops = replay(block.graph, block.written, 2).getFnops();
        VorpScheduler scheduler;
        Schedule result;
        scheduler.schedule(2, block.graph, result);
        ASSERT_EQ(result.size(), 20u);
        const SchedulerState best = replay(block.graph, result, 2);
        EXPECT_EQ(best.getFnops(), scheduler.getBestFnops());
        EXPECT_EQ(best.getIBuffBytes(), scheduler.getBestIBuffBytes());
        EXPECT_LT(best.getFnops(), writtenFnops) << alus << " ALU instructions";
    }
}

TEST(VorpSchedulerTest, StartStateFollowsTheBufferFill)
{
    // A lone long instruction: no fnop from 4 or 6 bytes, one from 2.
    DependencyGraph graph;
    graph.add(LONG, graph.getRoot());
    VorpScheduler scheduler;
    Schedule result;
    scheduler.schedule(3, graph, result);
    EXPECT_EQ(scheduler.getBestFnops(), 0u);
    EXPECT_EQ(scheduler.getBestIBuffBytes(), 2u);
    scheduler.schedule(2, graph, result);
    EXPECT_EQ(scheduler.getBestFnops(), 0u);
    EXPECT_EQ(scheduler.getBestIBuffBytes(), 4u);
    scheduler.schedule(1, graph, result);
    EXPECT_EQ(scheduler.getBestFnops(), 1u);
}

} // namespace
} // namespace vorp
