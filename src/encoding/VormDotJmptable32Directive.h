#pragma once

#include "model/VormDirective.h"

namespace vorp {

// `.jmptable32 L1, L2, ...`: a table of 4-byte branches, one per label.
class VormDotJmptable32Directive : public VormDirective {
public:
    void initialise(VormDirectiveLine* line, VormAssembler& assembler, VorpErrorHandler& errorHandler) override;
    void encode(Relocations&, VormDirectiveLine*, VormAssembler&, VorpErrorHandler&) override {}
};

} // namespace vorp
