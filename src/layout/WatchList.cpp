#include "layout/WatchList.h"

#include <algorithm>

namespace vorp {

void WatchList::reset(std::size_t positions)
{
    const std::size_t blocks = positions / BLOCK + 1;
    m_blocks.assign(blocks, Block{});
    m_treeSize = 1;
    while (m_treeSize < blocks)
        m_treeSize *= 2;
    m_min.assign(2 * m_treeSize, NONE);
    m_offset.assign(2 * m_treeSize, 0);
}

std::int64_t WatchList::pathOffset(std::size_t block) const
{
    std::int64_t sum = 0;
    for (std::size_t node = m_treeSize + block; node >= 1; node /= 2)
        sum += m_offset[node];
    return sum;
}

void WatchList::refresh(std::size_t block)
{
    std::int64_t least = NONE;
    for (const Watch& w : m_blocks[block].watches)
        least = std::min(least, w.budget);
    std::size_t node = m_treeSize + block;
    m_min[node] = least + m_offset[node];
    for (node /= 2; node >= 1; node /= 2)
        m_min[node] = std::min(m_min[2 * node], m_min[2 * node + 1]) + m_offset[node];
}

void WatchList::lowered(std::size_t block, std::int64_t budget)
{
    std::size_t node = m_treeSize + block;
    std::int64_t value = budget + m_offset[node];
    if (value >= m_min[node])
        return;
    m_min[node] = value;
    for (node /= 2; node >= 1; node /= 2) {
        value += m_offset[node];
        if (value >= m_min[node])
            return;
        m_min[node] = value;
    }
}

void WatchList::addRange(std::size_t node, std::size_t lo, std::size_t hi, std::size_t from, std::int64_t delta)
{
    if (hi <= from)
        return;
    if (lo >= from) {
        m_offset[node] += delta;
        m_min[node] += delta;
        return;
    }
    const std::size_t mid = (lo + hi) / 2;
    addRange(2 * node, lo, mid, from, delta);
    addRange(2 * node + 1, mid, hi, from, delta);
    m_min[node] = std::min(m_min[2 * node], m_min[2 * node + 1]) + m_offset[node];
}

void WatchList::moved(std::uint32_t position, std::uint32_t bound)
{
    if (bound == 0)
        return;
    const std::size_t index = position / BLOCK;
    Block& block = m_blocks[index];
    std::int64_t least = NONE;
    for (Watch& w : block.watches) {
        if (w.position > position) {
            w.budget -= bound;
            least = std::min(least, w.budget);
        }
    }
    if (least != NONE)
        lowered(index, least);
    if (index + 1 < m_treeSize)
        addRange(1, 0, m_treeSize, index + 1, -static_cast<std::int64_t>(bound));
}

} // namespace vorp
