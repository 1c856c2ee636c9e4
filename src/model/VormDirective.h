#pragma once

#include <cstdint>
#include <cstdio>

namespace vorp {

class Relocations;
class VormAssembler;
class VormDirectiveLine;
class VormLabel;
class VorpErrorHandler;

// The shared, stateless meaning of one directive word; its lines hold tokens and bytes.
class VormDirective {
public:
    virtual ~VormDirective() = default;
    // When the line is added, during the parse.
    virtual void initialise(VormDirectiveLine* line, VormAssembler& assembler, VorpErrorHandler& errorHandler) = 0;
    // When the object is written; the bytes are left in the line.
    virtual void encode(Relocations& relocations, VormDirectiveLine* line, VormAssembler& assembler,
                        VorpErrorHandler& errorHandler) = 0;
    virtual void printListing(VormDirectiveLine*, FILE*) {}

    // When the label's name ends in `suffix`, a record of kind `opcode` on the label of the rest of
    // the name, with `label` as its operand.
    static void makeReference(VormLabel* label, const char* suffix, std::int32_t opcode, VormAssembler& assembler,
                              VorpErrorHandler& errorHandler);
};

} // namespace vorp
