#pragma once

#include <cstdint>

namespace vorp {

// The target's addresses are 30 bits wide: no byte of a section lies above this one.
constexpr std::uint32_t MAX_ADDRESS = 0x3fffffff;

// An address range that only ever narrows: while instruction sizes are undecided a line knows only
// the lowest and the highest address it can end up at.
struct VormAddress {
    std::uint32_t min = 0;
    std::uint32_t max = MAX_ADDRESS;

    std::uint32_t getVariance() const { return max - min; }
    bool operator==(const VormAddress&) const = default;
};

} // namespace vorp
