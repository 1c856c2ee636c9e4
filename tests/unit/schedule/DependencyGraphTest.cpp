#include "ParsedSource.h"
#include "schedule/VormBasicBlock.h"
#include "schedule/DependencyGraph.h"
#include "schedule/DependencyGraphBuilder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace vorp {
namespace {

// The edges of a graph as "from>to" by creation index, 0 being the root.
std::set<std::string> edges(const DependencyGraph& graph)
{
    std::set<std::string> result;
    for (std::uint32_t i = 0; i <= graph.getNumNodes(); ++i)
        for (const DependencyGraphNode* successor : graph.getNode(i)->getSuccessors())
            result.insert(std::to_string(i) + ">" + std::to_string(successor->getIndex()));
    return result;
}

// Settles the source without scheduling, then builds the graph of all of ".text" as one block.
struct BuiltGraph {
    explicit BuiltGraph(const std::string& text) : source(text)
    {
        source.settle();
        LineList& lines = source.section()->getLines();
        block = std::make_unique<VormBasicBlock>(source.section(), lines.begin(), lines.end());
        builder = std::make_unique<DependencyGraphBuilder>(block.get());
        builder->removeNonCode();
        builder->build(graph);
    }

    std::string text(const VormLine* line) const
    {
        std::ostringstream out;
        line->dump(out);
        return out.str();
    }

    test::ParsedSource source;
    std::unique_ptr<VormBasicBlock> block;
    std::unique_ptr<DependencyGraphBuilder> builder;
    DependencyGraph graph;
};

TEST(DependencyGraphTest, AddKeepsOnlyEdgesNoOtherPathImplies)
{
    DependencyGraph graph;
    DependencyGraphNode* root = graph.getRoot();
    EXPECT_TRUE(root->isRoot());
    DependencyGraphNode* a = graph.add(0, root);
    DependencyGraphNode* b = graph.add(0, a);
    DependencyGraphNode* c = graph.add(0, root);
    // The root, a repeated node and a node that b already follows are all implied by b.
    DependencyGraphNode* list[] = {root, a, b, b, root};
    DependencyGraphNode* d = graph.add(DependencyGraphNode::MEMORY_ACCESS, list, 5);
    EXPECT_EQ(edges(graph), (std::set<std::string>{"0>1", "1>2", "0>3", "2>4"}));
    EXPECT_EQ(d->getPredecessors().size(), 1u);
    EXPECT_EQ(graph.getNumNodes(), 4u);
    EXPECT_TRUE(d->isMemoryAccess());

    // Two independent predecessors both keep their edge.
    DependencyGraphNode* both[] = {c, d};
    DependencyGraphNode* e = graph.add(0, both, 2);
    EXPECT_EQ(e->getPredecessors().size(), 2u);

    DependencyGraph::NodeSet visited;
    DependencyGraphNode* target[] = {e};
    EXPECT_TRUE(DependencyGraph::pathFrom(root, target, 1, visited));
    visited.clear();
    DependencyGraphNode* notReachable[] = {c};
    EXPECT_FALSE(DependencyGraph::pathFrom(a, notReachable, 1, visited));
}

TEST(DependencyGraphTest, PathsAreFoundPastLaterSiblings)
{
    // a leads to c through b; z, made last, also follows a. The search may skip what was made
    // after its targets, but never the nodes on the way.
    DependencyGraph graph;
    DependencyGraphNode* a = graph.add(0, graph.getRoot());
    DependencyGraphNode* b = graph.add(0, a);
    DependencyGraphNode* c = graph.add(0, b);
    DependencyGraphNode* z = graph.add(0, a);
    DependencyGraph::NodeSet visited;
    DependencyGraphNode* targets[] = {c};
    EXPECT_TRUE(DependencyGraph::pathFrom(a, targets, 1, visited));
    visited.clear();
    DependencyGraphNode* late[] = {z, b};
    EXPECT_TRUE(DependencyGraph::pathFrom(a, late, 2, visited));
    visited.clear();
    EXPECT_FALSE(DependencyGraph::pathFrom(b, late, 2, visited));

    // A new node after a and c keeps only c; after the root and z only z.
    DependencyGraphNode* ac[] = {a, c};
    EXPECT_EQ(graph.add(0, ac, 2)->getPredecessors(), (DependencyGraph::NodeSet{c}));
    DependencyGraphNode* rootAndZ[] = {graph.getRoot(), z};
    EXPECT_EQ(graph.add(0, rootAndZ, 2)->getPredecessors(), (DependencyGraph::NodeSet{z}));
}

TEST(DependencyGraphTest, SetsFollowCreationOrder)
{
    DependencyGraph graph;
    std::vector<DependencyGraphNode*> nodes;
    for (int i = 0; i < 20; ++i)
        nodes.push_back(graph.add(0, graph.getRoot()));
    std::vector<DependencyGraphNode*> order(graph.getRoot()->getSuccessors().begin(),
                                            graph.getRoot()->getSuccessors().end());
    EXPECT_EQ(order, nodes);
}

TEST(DependencyGraphTest, DotOutputGoesToTheFileAndStandardOutput)
{
    DependencyGraph graph;
    DependencyGraphNode* a = graph.add(0, graph.getRoot());
    graph.add(0, a);
    FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    testing::internal::CaptureStdout();
    graph.dumpDotGraph(file, [](FILE* out, void*) { fputs("line", out); });
    const std::string printed = testing::internal::GetCapturedStdout();
    std::rewind(file);
    std::string written;
    for (int c; (c = std::fgetc(file)) != EOF;)
        written += static_cast<char>(c);
    std::fclose(file);
    EXPECT_EQ(written, printed);
    EXPECT_EQ(written.rfind("digraph g {\n", 0), 0u);
    EXPECT_NE(written.find("[label=\"root\"];\n"), std::string::npos);
    EXPECT_NE(written.find("[label=\"line\"];\n"), std::string::npos);
    EXPECT_EQ(written.substr(written.size() - 2), "}\n");
    // Three nodes, two edges.
    std::size_t arrows = 0;
    for (std::size_t at = written.find(" -> "); at != std::string::npos; at = written.find(" -> ", at + 1))
        ++arrows;
    EXPECT_EQ(arrows, 2u);
}

TEST(DependencyGraphBuilderTest, RegisterDependences)
{
    // One instruction hangs under the root.
    EXPECT_EQ(edges(BuiltGraph("add r0, r1, r2\n").graph), (std::set<std::string>{"0>1"}));
    // Two readers of the same registers are free of each other.
    EXPECT_EQ(edges(BuiltGraph("add r0, r1, r2\nadd r3, r1, r2\n").graph),
              (std::set<std::string>{"0>1", "0>2"}));
    // A read follows the last write, a write follows the reads since the last write.
    EXPECT_EQ(edges(BuiltGraph("add r0, r1, r2\nadd r3, r0, r0\n").graph), (std::set<std::string>{"0>1", "1>2"}));
    EXPECT_EQ(edges(BuiltGraph("add r1, r0, r0\nadd r0, r2, r3\n").graph), (std::set<std::string>{"0>1", "1>2"}));
    EXPECT_EQ(edges(BuiltGraph("add r0, r1, r2\nadd r0, r3, r4\n").graph), (std::set<std::string>{"0>1", "1>2"}));
    // The third reads r0 from the first and r3 from the second: only the nearer writer gets an edge.
    EXPECT_EQ(edges(BuiltGraph("add r0, r1, r2\nadd r3, r0, r0\nadd r4, r0, r3\n").graph),
              (std::set<std::string>{"0>1", "1>2", "2>3"}));
}

TEST(DependencyGraphBuilderTest, MemoryAccessesKeepTheirOrder)
{
    BuiltGraph loads("ldw r0, sp[1]\nldw r1, sp[2]\nadd r2, r3, r4\nstw r5, sp[3]\n");
    EXPECT_EQ(edges(loads.graph), (std::set<std::string>{"0>1", "1>2", "0>3", "2>4"}));
    EXPECT_EQ(loads.graph.getNode(1)->getFlags(), DependencyGraphNode::MEMORY_ACCESS);
    EXPECT_EQ(loads.graph.getNode(3)->getFlags(), 0u);
    EXPECT_EQ(loads.graph.getNode(4)->getFlags(), DependencyGraphNode::MEMORY_ACCESS);
    EXPECT_EQ(loads.text(loads.graph.getNode(4)->getLine()), "stw r5, sp [ 3 ]");
}

TEST(DependencyGraphBuilderTest, BarriersAndFreeInstructions)
{
    // ssync follows every leaf before it; later nodes that name a register follow it; nop names
    // none and stays under the root.
    BuiltGraph sync("add r0, r1, r2\nadd r3, r4, r5\nssync\nadd r6, r7, r8\nnop\n");
    EXPECT_EQ(edges(sync.graph), (std::set<std::string>{"0>1", "0>2", "1>3", "2>3", "3>4", "0>5"}));

    // A branch is a barrier too, and a long instruction is flagged.
    BuiltGraph branch("x:\nadd r0, r1, r2\nldc r3, 1000\nbu x\n");
    EXPECT_EQ(edges(branch.graph), (std::set<std::string>{"0>1", "0>2", "1>3", "2>3"}));
    EXPECT_EQ(branch.graph.getNode(2)->getFlags(), DependencyGraphNode::LONG_INSTRUCTION);
    EXPECT_EQ(branch.graph.getNode(3)->getFlags(), DependencyGraphNode::BRANCH);

    // After a barrier, memory accesses follow it through lastLoad and lastStore.
    BuiltGraph memory("ldw r0, sp[1]\nclre\nnop\nldw r1, sp[2]\n");
    EXPECT_EQ(edges(memory.graph), (std::set<std::string>{"0>1", "1>2", "0>3", "2>4"}));
}

TEST(DependencyGraphBuilderTest, NonCodeLinesAreKeptByPosition)
{
    BuiltGraph graph("a:\nadd r0, r1, r2\nb:\nc:\nadd r3, r4, r5\nadd r6, r7, r8\nd:\n");
    const auto& header = graph.builder->getNonCodeHeader();
    ASSERT_EQ(header.size(), 1u);
    EXPECT_EQ(graph.text(header[0]), "a:");
    const auto& nonCode = graph.builder->getNonCode();
    ASSERT_EQ(nonCode.size(), 1u);
    EXPECT_EQ(nonCode.begin()->first, graph.graph.getNode(2)->getLine());
    ASSERT_EQ(nonCode.begin()->second.size(), 2u);
    EXPECT_EQ(graph.text(nonCode.begin()->second[0]), "b:");
    EXPECT_EQ(graph.text(nonCode.begin()->second[1]), "c:");
    const auto& footer = graph.builder->getNonCodeFooter();
    ASSERT_EQ(footer.size(), 1u);
    EXPECT_EQ(graph.text(footer[0]), "d:");
    EXPECT_EQ(graph.graph.getNumNodes(), 3u);
}

} // namespace
} // namespace vorp
