#include "layout/AddressChain.h"

#include <cassert>

namespace vorp {

namespace {

bool isPowerOfTwo(std::uint32_t value)
{
    return value != 0 && (value & (value - 1)) == 0;
}

std::uint32_t roundUp(std::uint32_t address, std::uint32_t alignment)
{
    return (address + alignment - 1) & ~(alignment - 1);
}

} // namespace

ChainStep ChainStep::align(std::uint32_t alignment)
{
    ChainStep step;
    // An alignment of 0 or 1 moves nothing.
    if (alignment > 1) {
        step.m_count = 1;
        step.m_align[0] = alignment;
    }
    return step;
}

std::uint32_t ChainStep::apply(std::uint32_t address) const
{
    address += m_c0;
    for (std::size_t i = 0; i < m_count; ++i)
        address = roundUp(address, m_align[i]) + m_after[i];
    return address;
}

bool ChainStep::then(const ChainStep& next)
{
    std::uint32_t& tail = m_count ? m_after[m_count - 1] : m_c0;
    tail += next.m_c0;
    for (std::size_t i = 0; i < next.m_count; ++i) {
        const std::uint32_t alignment = next.m_align[i];
        if (m_count && m_align[m_count - 1] % alignment == 0) {
            std::uint32_t& last = m_after[m_count - 1];
            last = roundUp(last, alignment) + next.m_after[i];
            continue;
        }
        if (m_count == MAX_STEPS)
            return false;
        m_align[m_count] = alignment;
        m_after[m_count] = next.m_after[i];
        ++m_count;
    }
    return true;
}

bool AddressChain::build(std::vector<Leaf> leaves)
{
    m_leaves = std::move(leaves);
    for (const Leaf& leaf : m_leaves) {
        if (leaf.kind == ALIGN && leaf.minBytes > 1 && !isPowerOfTwo(leaf.minBytes))
            return false;
    }
    m_numBlocks = (m_leaves.size() + BLOCK - 1) / BLOCK;
    m_treeSize = 1;
    while (m_treeSize < m_numBlocks)
        m_treeSize *= 2;
    m_tree.assign(2 * m_treeSize, Fold{});
    for (std::size_t block = 0; block < m_numBlocks; ++block) {
        if (!foldBlock(block, m_tree[m_treeSize + block]))
            return false;
    }
    for (std::size_t node = m_treeSize - 1; node >= 1; --node) {
        if (!combine(m_tree[2 * node], m_tree[2 * node + 1], m_tree[node]))
            return false;
    }
    return true;
}

bool AddressChain::foldBlock(std::size_t block, Fold& fold) const
{
    fold = Fold{};
    const std::size_t end = std::min(m_leaves.size(), (block + 1) * BLOCK);
    for (std::size_t i = block * BLOCK; i < end; ++i) {
        const Leaf& leaf = m_leaves[i];
        const bool fits = leaf.kind == SIZE
                              ? fold.min.then(ChainStep::add(leaf.minBytes)) && fold.max.then(ChainStep::add(leaf.maxBytes))
                              : fold.min.then(ChainStep::align(leaf.minBytes)) &&
                                    fold.max.then(ChainStep::align(leaf.minBytes));
        if (!fits)
            return false;
    }
    return true;
}

bool AddressChain::combine(const Fold& left, const Fold& right, Fold& out) const
{
    out = left;
    return out.min.then(right.min) && out.max.then(right.max);
}

void AddressChain::setSize(std::size_t index, std::uint32_t minBytes, std::uint32_t maxBytes)
{
    Leaf& leaf = m_leaves[index];
    assert(leaf.kind == SIZE);
    const std::int64_t minDelta = std::int64_t{minBytes} - leaf.minBytes;
    const std::int64_t maxDelta = std::int64_t{maxBytes} - leaf.maxBytes;
    leaf.minBytes = minBytes;
    leaf.maxBytes = maxBytes;
    // Sizes change, alignments don't: the folded forms keep their number of steps. Where a fold
    // has no alignment it is a plain sum, and takes the change as it is.
    for (std::size_t node = m_treeSize + index / BLOCK; node >= 1; node /= 2) {
        Fold& fold = m_tree[node];
        if (fold.min.numAlignments() == 0) {
            fold.min.grow(minDelta);
            fold.max.grow(maxDelta);
            continue;
        }
        [[maybe_unused]] const bool fits = node >= m_treeSize
                                                ? foldBlock(node - m_treeSize, fold)
                                                : combine(m_tree[2 * node], m_tree[2 * node + 1], fold);
        assert(fits);
    }
}

void AddressChain::applyPrefix(std::size_t blocks, VormAddress& address) const
{
    // One path down the tree: where the prefix covers a left child whole, that child's fold.
    std::size_t node = 1;
    std::size_t lo = 0;
    std::size_t hi = m_treeSize;
    while (blocks > lo) {
        const Fold* fold = nullptr;
        if (hi <= blocks) {
            fold = &m_tree[node];
            lo = hi;
        } else {
            const std::size_t mid = (lo + hi) / 2;
            if (blocks >= mid) {
                fold = &m_tree[2 * node];
                node = 2 * node + 1;
                lo = mid;
            } else {
                node = 2 * node;
                hi = mid;
            }
        }
        if (fold) {
            address.min = fold->min.apply(address.min);
            address.max = fold->max.apply(address.max);
        }
    }
}

VormAddress AddressChain::addressOf(std::size_t index) const
{
    VormAddress address{0, 0};
    const std::size_t blocks = index / BLOCK;
    applyPrefix(blocks, address);
    for (std::size_t i = blocks * BLOCK; i < index; ++i)
        address = nextAddress(i, address);
    return address;
}

VormAddress AddressChain::nextAddress(std::size_t index, const VormAddress& address) const
{
    const Leaf& leaf = m_leaves[index];
    if (leaf.kind == SIZE)
        return VormAddress{address.min + leaf.minBytes, address.max + leaf.maxBytes};
    if (leaf.minBytes <= 1)
        return address;
    return VormAddress{roundUp(address.min, leaf.minBytes), roundUp(address.max, leaf.minBytes)};
}

} // namespace vorp
