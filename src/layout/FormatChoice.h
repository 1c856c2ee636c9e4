#pragma once

#include "encoding/InstructionGrouping.h"

namespace vorp {

class VormAssembler;
class VormSection;

// The units the format iteration walks for a section; `hasScheduling` says whether any of them is a
// scheduled block.
void getInstructionGroupings(VormAssembler& assembler, VormSection* section, InstructionGroupings& groupings,
                             bool& hasScheduling);

// Sizes every line of the section (or of every section): the iteration over its groupings, then
// each line at its exact address, which leaves the section's size set.
void chooseInstructionFormats(VormAssembler& assembler, VormSection* section);
void chooseInstructionFormats(VormAssembler& assembler);

} // namespace vorp
