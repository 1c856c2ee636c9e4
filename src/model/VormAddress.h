#pragma once

#include <cstdint>

namespace vorp {

// An address range that only ever narrows: while instruction sizes are undecided a line knows only
// the lowest and the highest address it can end up at.
struct VormAddress {
    std::uint32_t min = 0;
    std::uint32_t max = 0x3fffffff;

    std::uint32_t getVariance() const { return max - min; }
    bool operator==(const VormAddress&) const = default;
};

} // namespace vorp
