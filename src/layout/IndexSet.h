#pragma once

#include <bit>
#include <cstdint>
#include <vector>

namespace vorp {

// A set of indexes below a fixed bound, in bits, with a summary bit per word so that the next
// member from a point is found by skipping empty words 64 at a time.
class IndexSet {
public:
    static constexpr std::uint32_t NONE = UINT32_MAX;

    void reset(std::size_t bound)
    {
        m_words.assign(bound / 64 + 1, 0);
        m_summary.assign(m_words.size() / 64 + 1, 0);
    }
    void insert(std::uint32_t index)
    {
        m_words[index / 64] |= std::uint64_t{1} << (index % 64);
        m_summary[index / 4096] |= std::uint64_t{1} << (index / 64 % 64);
    }
    void erase(std::uint32_t index)
    {
        std::uint64_t& word = m_words[index / 64];
        word &= ~(std::uint64_t{1} << (index % 64));
        if (!word)
            m_summary[index / 4096] &= ~(std::uint64_t{1} << (index / 64 % 64));
    }
    bool contains(std::uint32_t index) const { return (m_words[index / 64] >> (index % 64)) & 1; }
    // The least member at or above `from`, or NONE.
    std::uint32_t next(std::uint32_t from) const
    {
        std::size_t w = from / 64;
        if (w >= m_words.size())
            return NONE;
        const std::uint64_t here = m_words[w] & (~std::uint64_t{0} << (from % 64));
        if (here)
            return static_cast<std::uint32_t>(w * 64 + std::countr_zero(here));
        // Words after w, by the summary.
        ++w;
        for (std::size_t s = w / 64; s < m_summary.size(); ++s) {
            std::uint64_t bits = m_summary[s];
            if (s == w / 64)
                bits &= w % 64 ? ~std::uint64_t{0} << (w % 64) : ~std::uint64_t{0};
            if (bits) {
                const std::size_t word = s * 64 + std::countr_zero(bits);
                return static_cast<std::uint32_t>(word * 64 + std::countr_zero(m_words[word]));
            }
        }
        return NONE;
    }

private:
    std::vector<std::uint64_t> m_words;
    std::vector<std::uint64_t> m_summary;
};

} // namespace vorp
