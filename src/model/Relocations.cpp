#include "model/Relocations.h"

#include <cassert>

namespace vorp {

void Relocations::add(VormLabel* label, std::uint32_t address, std::int32_t addEnd, std::uint32_t relocationType)
{
    assert(relocationType != 0);
    m_relocations.push_back(RelocationEntry{label, address, relocationType, addEnd});
}

const RelocationEntry& Relocations::entry(std::size_t rIndex) const
{
    assert(rIndex < m_relocations.size());
    return m_relocations[rIndex];
}

} // namespace vorp
