#pragma once

#include <cstdint>
#include <vector>

namespace vorp {

class VormLabel;

// One place the linker must patch.
struct RelocationEntry {
    VormLabel* m_sym;        // as written in the source: aliases not followed
    std::uint32_t m_address; // section offset of the instruction or data entry
    std::uint32_t m_type;    // the target's relocation type, never 0
    std::int32_t m_addEnd;
};

// The relocations of one section, in the order the lines were encoded.
class Relocations {
public:
    void add(VormLabel* label, std::uint32_t address, std::int32_t addEnd, std::uint32_t relocationType);

    std::size_t numRelocationEntries() const { return m_relocations.size(); }
    VormLabel* relocationEntrySym(std::size_t rIndex) const { return entry(rIndex).m_sym; }
    std::uint32_t relocationEntryAddress(std::size_t rIndex) const { return entry(rIndex).m_address; }
    std::uint32_t relocationEntryType(std::size_t rIndex) const { return entry(rIndex).m_type; }
    std::int32_t relocationEntryAddEnd(std::size_t rIndex) const { return entry(rIndex).m_addEnd; }

private:
    const RelocationEntry& entry(std::size_t rIndex) const;

    std::vector<RelocationEntry> m_relocations;
};

} // namespace vorp
