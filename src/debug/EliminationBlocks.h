#pragma once

#include "model/VormSection.h"

namespace vorp {

class VormAssembler;
class VormLabel;

// Blocks of a section that the linker may drop, described to it by ".expr" records.
class EliminationBlocks {
public:
    // Wraps the lines [start, end) in a new block named "vorp.cc<n>"; with a label, the block goes
    // when that label's code goes.
    static void addEliminationBlock(VormAssembler& assembler, VormSection* section, LinePosition start,
                                    LinePosition end, VormLabel* label);
    // The records of every block and alignment line of the section, walking backwards so that each
    // label learns the bottom of its block at once. Runs when all addresses are final.
    static void addEliminationBlocks(VormAssembler& assembler, VormSection* section);
};

} // namespace vorp
