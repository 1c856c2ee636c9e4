#pragma once

#include "model/VormAddress.h"

#include <array>
#include <cstdint>
#include <vector>

namespace vorp {

// What a run of groupings does to the address in front of it: add their sizes, and round up at
// each alignment. Any run folds into the form
//     x -> roundup(... roundup(roundup(x + c0, a1) + c1, a2) ..., ak) + ck
// with a1 < a2 < ... < ak: a smaller alignment behind a larger one only rounds the constant
// after it, because what it rounds is already a multiple of the larger one. Alignments are powers
// of two, so k stays small; a run that needs more steps than fit is refused.
class ChainStep {
public:
    static constexpr std::size_t MAX_STEPS = 8;

    static ChainStep add(std::uint32_t bytes)
    {
        ChainStep step;
        step.m_c0 = bytes;
        return step;
    }
    static ChainStep align(std::uint32_t alignment);

    std::uint32_t apply(std::uint32_t address) const;
    // This step followed by `next`; false when the result has too many alignments.
    bool then(const ChainStep& next);
    std::size_t numAlignments() const { return m_count; }
    // The same with `bytes` more added in front of any alignment: only for a step without one.
    void grow(std::int64_t bytes)
    {
        m_c0 = static_cast<std::uint32_t>(m_c0 + bytes);
    }

private:
    std::uint32_t m_c0 = 0;
    std::uint8_t m_count = 0;
    std::array<std::uint32_t, MAX_STEPS> m_align{};
    std::array<std::uint32_t, MAX_STEPS> m_after{};
};

// The addresses of a section's groupings as sizes change: one leaf per grouping (its size range,
// or its alignment), folded in blocks and a tree over the blocks, so that a grouping's address
// range is found without walking what is in front of it, and a change of size costs a block and a
// path of the tree.
class AddressChain {
public:
    enum Kind : std::uint8_t { SIZE, ALIGN };
    struct Leaf {
        Kind kind = SIZE;
        std::uint32_t minBytes = 0; // the alignment for ALIGN
        std::uint32_t maxBytes = 0;
    };

    // False when an alignment is not a power of two or the folded runs grow too long.
    bool build(std::vector<Leaf> leaves);
    const Leaf& leaf(std::size_t index) const { return m_leaves[index]; }
    // Changes the size range of a SIZE leaf.
    void setSize(std::size_t index, std::uint32_t minBytes, std::uint32_t maxBytes);
    // The address range in front of grouping `index` (index may be the count: the end).
    VormAddress addressOf(std::size_t index) const;
    // The address range behind grouping `index`, given the range in front of it.
    VormAddress nextAddress(std::size_t index, const VormAddress& address) const;
    std::size_t size() const { return m_leaves.size(); }

private:
    static constexpr std::size_t BLOCK = 16;
    struct Fold {
        ChainStep min;
        ChainStep max;
    };
    bool foldBlock(std::size_t block, Fold& fold) const;
    bool combine(const Fold& left, const Fold& right, Fold& out) const;
    bool rebuildNode(std::size_t node);
    void applyPrefix(std::size_t blocks, VormAddress& address) const;

    std::vector<Leaf> m_leaves;
    std::size_t m_numBlocks = 0;
    std::size_t m_treeSize = 1; // leaves of the tree, a power of two
    std::vector<Fold> m_tree;   // 1-based heap order; leaf b at m_treeSize + b
};

} // namespace vorp
