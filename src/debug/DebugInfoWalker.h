#pragma once

#include "debug/DataReader.h"
#include "debug/DebugInfoVisitor.h"
#include "debug/DwarfAbbrevTable.h"

#include <cstdint>

namespace vorp {

class VormAssembler;
class VormLabel;
class VormSection;

// Walks the one compilation unit of a ".debug_info" made of data lines, entry by entry.
class DebugInfoWalker {
public:
    DebugInfoWalker(VormAssembler& assembler, VormSection* section, const DwarfAbbrevTable* abbrevs)
        : m_assembler(assembler), m_section(section), m_abbrevs(abbrevs)
    {
    }

    // False when the unit can't be walked to its end exactly.
    bool accept(DebugInfoVisitor& visitor);

    // Readers of attribute values; each works on a copy, so `reader` stays where it is.
    static bool readBlockLength(DataReader& reader, unsigned form, std::uint32_t& length);
    static bool readReferenceAttribute(const DataReader& reader, const DwarfAbbrevAttribute& attribute,
                                       std::uint64_t& value);
    // The label of a 4-byte address given as a `.word` of a label, else null.
    static VormLabel* readAddressAttribute(const DataReader& reader, const DwarfAbbrevAttribute& attribute);
    // The label of a location that is exactly DW_OP_addr of a `.word` label, else null.
    static VormLabel* readLocationAttribute(const DataReader& reader, const DwarfAbbrevAttribute& attribute);

private:
    bool walkEntry(DebugInfoVisitor& visitor, DataReader& reader, std::uint32_t code, Optional<LinePosition> position,
                   std::uint32_t offset);

    VormAssembler& m_assembler;
    VormSection* m_section;
    const DwarfAbbrevTable* m_abbrevs;
};

} // namespace vorp
