#pragma once

#include "model/VormDirective.h"

#include <string>

namespace vorp {

// `.skip N[, FILL]` and `.space N[, FILL]`: N bytes of FILL (0 when not given). N must be known
// when the line is read.
class VormDotSkipDirective : public VormDirective {
public:
    explicit VormDotSkipDirective(std::string name) : m_name(std::move(name)) {}

    void initialise(VormDirectiveLine* line, VormAssembler& assembler, VorpErrorHandler& errorHandler) override;
    void encode(Relocations& relocations, VormDirectiveLine* line, VormAssembler& assembler,
                VorpErrorHandler& errorHandler) override;
    void printListing(VormDirectiveLine* line, FILE* file) override;

private:
    std::string m_name;
};

} // namespace vorp
