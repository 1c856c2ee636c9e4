#pragma once

#include <cstdint>
#include <limits>
#include <vector>

namespace vorp {

// Thresholds on one end of the groupings' address ranges: "tell me when the lowest address of
// grouping k has risen to V" (a rising watch) or "when the highest has fallen to V" (a falling
// one); ranges only narrow, so each end only moves one way. Finding out exactly means computing
// the address, so every watch carries a budget, an estimate of how far its end can still move
// before it might fire: a change of size in front of a watch takes a bound of its effect off the
// budget (one tree update for all watches behind it), and only watches whose budget runs out are
// looked at exactly; those that have not fired get a fresh budget from the exact address.
class WatchList {
public:
    explicit WatchList(bool rising) : m_rising(rising) {}

    void reset(std::size_t positions);
    // Watches end `position` of grouping-to-be-told `owner`; `exact` is the end's present value.
    // `tag` is handed back when it fires; `generation` lets the owner disown old watches.
    template <class Live>
    void add(std::uint32_t position, std::uint32_t owner, std::uint32_t tag, std::uint32_t generation,
             std::int64_t threshold, std::int64_t exact, Live&& live);
    // Every end behind `position` moved by at most `bound` towards its watches.
    void moved(std::uint32_t position, std::uint32_t bound);
    // Looks at every watch whose budget has run out: `value(position)` gives the exact end,
    // `fire(owner, tag)` is called for each watch that is reached.
    template <class Value, class Live, class Fire>
    void collect(Value&& value, Live&& live, Fire&& fire);

private:
    static constexpr std::size_t BLOCK = 64;
    static constexpr std::int64_t NONE = std::numeric_limits<std::int64_t>::max() / 4;
    struct Watch {
        std::uint32_t position;
        std::uint32_t owner;
        std::uint32_t generation;
        std::uint32_t tag;
        std::int64_t threshold;
        std::int64_t budget; // less the offsets on the block's path of the tree
    };
    struct Block {
        std::vector<Watch> watches;
        std::size_t compactAt = 16;
    };

    std::int64_t distance(std::int64_t threshold, std::int64_t exact) const
    {
        return m_rising ? threshold - exact : exact - threshold;
    }
    std::int64_t pathOffset(std::size_t block) const;
    void refresh(std::size_t block);
    void addRange(std::size_t node, std::size_t lo, std::size_t hi, std::size_t from, std::int64_t delta);
    template <class Live>
    void compact(Block& block, Live&& live);

    bool m_rising;
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
void WatchList::add(std::uint32_t position, std::uint32_t owner, std::uint32_t tag, std::uint32_t generation,
                    std::int64_t threshold, std::int64_t exact, Live&& live)
{
    const std::size_t index = position / BLOCK;
    Block& block = m_blocks[index];
    if (block.watches.size() >= block.compactAt)
        compact(block, live);
    block.watches.push_back(
        Watch{position, owner, generation, tag, threshold, distance(threshold, exact) - pathOffset(index)});
    refresh(index);
}

template <class Value, class Live, class Fire>
void WatchList::collect(Value&& value, Live&& live, Fire&& fire)
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
        Block& block = m_blocks[index];
        std::uint32_t lastPosition = UINT32_MAX;
        std::int64_t lastValue = 0;
        std::vector<Watch>& watches = block.watches;
        for (std::size_t i = 0; i < watches.size();) {
            Watch& w = watches[i];
            if (w.budget + offset > 0) {
                ++i;
                continue;
            }
            if (!live(w.owner, w.generation)) {
                w = watches.back();
                watches.pop_back();
                continue;
            }
            if (w.position != lastPosition) {
                lastPosition = w.position;
                lastValue = value(w.position);
            }
            const std::int64_t left = distance(w.threshold, lastValue);
            if (left > 0) {
                w.budget = left - offset;
                ++i;
                continue;
            }
            const std::uint32_t owner = w.owner;
            const std::uint32_t tag = w.tag;
            w = watches.back();
            watches.pop_back();
            fire(owner, tag);
        }
        refresh(index);
    }
}

} // namespace vorp
