#pragma once

#include "model/VormDirective.h"

namespace vorp {

// `.assert CONSTANT, SYMBOL, "MESSAGE"`: a check the linker makes, written as a record.
class VormDotAssertDirective : public VormDirective {
public:
    void initialise(VormDirectiveLine*, VormAssembler&, VorpErrorHandler&) override {}
    // At encoding, when every label exists.
    void encode(Relocations& relocations, VormDirectiveLine* line, VormAssembler& assembler,
                VorpErrorHandler& errorHandler) override;
};

} // namespace vorp
