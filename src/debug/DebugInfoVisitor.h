#pragma once

#include "debug/DataReader.h"
#include "debug/DwarfAbbrevTable.h"

namespace vorp {

// Receives the entries of a compilation unit as the walker meets them. Positions are empty where an
// entry starts or ends inside a line.
class DebugInfoVisitor {
public:
    virtual ~DebugInfoVisitor() = default;
    virtual void debugEntryBegin(Optional<LinePosition> position, const DwarfAbbrevEntry& entry, void*& userData) = 0;
    // `reader` stands at the attribute's value; read from a copy.
    virtual void debugEntryAttribute(const DataReader& reader, const DwarfAbbrevEntry& entry,
                                     const DwarfAbbrevAttribute& attribute, void* userData) = 0;
    virtual void debugEntryEnd(Optional<LinePosition> position, const DwarfAbbrevEntry& entry, void* userData) = 0;
    virtual void debugEnd(Optional<LinePosition> position) = 0;
};

} // namespace vorp
