#pragma once

#include <cstdint>
#include <limits>
#include <vector>

namespace vorp {

// Budgets of watched distances between groupings. A distance between two groupings moves only
// when a size in front of the later one changes, and never by more than the change (rounded up
// to the largest alignment, which is what a change can grow to behind an alignment). So every
// watch sits at the later grouping with a budget, how far its distance may move before a choice
// could answer otherwise; a change of size takes its bound off the budget of every watch behind
// it (one tree update for all of them), and a watch whose budget runs out is handed back, for its
// owner to work out the distance exactly.
class WatchList {
public:
    void reset(std::size_t positions);
    // A watch for `owner` at grouping `position`; `generation` lets the owner disown old watches,
    // `live(owner, generation)` says whether it still stands.
    template <class Live>
    void add(std::uint32_t position, std::uint32_t owner, std::uint32_t generation, std::int64_t budget,
             Live&& live);
    // A size in front of every grouping behind `position` changed by at most `bound`.
    void moved(std::uint32_t position, std::uint32_t bound);
    // Hands every live watch whose budget has run out to `fire(owner)`, and drops it.
    template <class Live, class Fire>
    void collect(Live&& live, Fire&& fire);

private:
    static constexpr std::size_t BLOCK = 64;
    static constexpr std::int64_t NONE = std::numeric_limits<std::int64_t>::max() / 4;
    struct Watch {
        std::uint32_t position;
        std::uint32_t owner;
        std::uint32_t generation;
        std::int64_t budget; // less the offsets on the block's path of the tree
    };
    struct Block {
        std::vector<Watch> watches;
        std::size_t compactAt = 16;
    };

    std::int64_t pathOffset(std::size_t block) const;
    // After budgets in the block rose or went: the minimum of the block worked out again.
    void refresh(std::size_t block);
    // After budgets in the block fell, the least of them now `budget`: cheaper than refresh.
    void lowered(std::size_t block, std::int64_t budget);
    void addRange(std::size_t node, std::size_t lo, std::size_t hi, std::size_t from, std::int64_t delta);
    template <class Live>
    void compact(Block& block, Live&& live);

    std::vector<Block> m_blocks;
    std::size_t m_treeSize = 1;
    // Per node: the smallest budget below it (its own offset included) and its own offset.
    std::vector<std::int64_t> m_min;
    std::vector<std::int64_t> m_offset;
};

template <class Live>
void WatchList::compact(Block& block, Live&& live)
{
    std::erase_if(block.watches, [&](const Watch& w) { return !live(w.owner, w.generation); });
    block.compactAt = 2 * block.watches.size() + 16;
}

template <class Live>
void WatchList::add(std::uint32_t position, std::uint32_t owner, std::uint32_t generation, std::int64_t budget,
                    Live&& live)
{
    const std::size_t index = position / BLOCK;
    Block& block = m_blocks[index];
    if (block.watches.size() >= block.compactAt)
        compact(block, live);
    const std::int64_t raw = budget - pathOffset(index);
    block.watches.push_back(Watch{position, owner, generation, raw});
    lowered(index, raw);
}

template <class Live, class Fire>
void WatchList::collect(Live&& live, Fire&& fire)
{
    while (m_min[1] <= 0) {
        // Down to a block whose budget has run out.
        std::size_t node = 1;
        std::int64_t above = 0;
        while (node < m_treeSize) {
            above += m_offset[node];
            node = m_min[2 * node] + above <= 0 ? 2 * node : 2 * node + 1;
        }
        const std::size_t index = node - m_treeSize;
        const std::int64_t offset = pathOffset(index);
        std::vector<Watch>& watches = m_blocks[index].watches;
        for (std::size_t i = 0; i < watches.size();) {
            Watch& w = watches[i];
            if (w.budget + offset > 0) {
                ++i;
                continue;
            }
            const std::uint32_t owner = w.owner;
            const bool stands = live(owner, w.generation);
            w = watches.back();
            watches.pop_back();
            if (stands)
                fire(owner);
        }
        refresh(index);
    }
}

} // namespace vorp
