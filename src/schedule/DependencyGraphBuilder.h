#pragma once

#include <map>
#include <vector>

namespace vorp {

class DependencyGraph;
class VormBasicBlock;
class VormLine;

// Builds the dependency graph of a block's instructions, and keeps apart the lines that hold no
// instruction so that they can go back in front of the instruction they stood before.
class DependencyGraphBuilder {
public:
    using Lines = std::vector<VormLine*>;

    explicit DependencyGraphBuilder(const VormBasicBlock* block) : m_block(block) {}

    // Sorts the non-code lines of the block: before the first instruction (header), before each
    // later instruction, after the last one (footer).
    void removeNonCode();
    // One node for each code line of the block, in order.
    void build(DependencyGraph& graph) const;

    const std::map<const VormLine*, Lines>& getNonCode() const { return m_nonCode; }
    const Lines& getNonCodeHeader() const { return m_nonCodeHeader; }
    const Lines& getNonCodeFooter() const { return m_nonCodeFooter; }

private:
    const VormBasicBlock* m_block;
    std::map<const VormLine*, Lines> m_nonCode;
    Lines m_nonCodeHeader;
    Lines m_nonCodeFooter;
};

} // namespace vorp
