#pragma once

#include "model/VormDirective.h"

namespace vorp {

// `.jmptable L1, L2, ...`: a table of 2-byte branches, one per label. A target no short branch
// reaches is reached through a trampoline behind the table, one per distinct target.
class VormDotJmptableDirective : public VormDirective {
public:
    void initialise(VormDirectiveLine* line, VormAssembler& assembler, VorpErrorHandler& errorHandler) override;
    void encode(Relocations&, VormDirectiveLine*, VormAssembler&, VorpErrorHandler&) override {}

private:
    // Counts the tables of the run, for the trampoline label names.
    std::uint32_t m_tableCounter = 0;
};

} // namespace vorp
