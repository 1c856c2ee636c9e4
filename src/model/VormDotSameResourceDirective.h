#pragma once

#include "model/VormDirective.h"

namespace vorp {

// `.sameresource A, B, N`: tells the linker that A and B use the same resource.
class VormDotSameResourceDirective : public VormDirective {
public:
    void initialise(VormDirectiveLine* line, VormAssembler& assembler, VorpErrorHandler& errorHandler) override;
    // With a label "A.info", a second record ties it to A.
    void encode(Relocations& relocations, VormDirectiveLine* line, VormAssembler& assembler,
                VorpErrorHandler& errorHandler) override;
};

} // namespace vorp
