#pragma once

#include "model/VormTokenLine.h"

#include <string>

namespace vorp {

class VormAssembler;
class VormLabel;

// A bound of an elimination block: `.cc_top NAME[, PREDICATE]` or `.cc_bottom NAME`. Takes no bytes.
class VormCCDirectiveLine : public VormTokenLine {
public:
    // `top` is the matching cc_top of a cc_bottom, or null.
    VormCCDirectiveLine(LineType type, std::unique_ptr<TokenLine> tokens, VormCCDirectiveLine* top);

    void encode(std::uint8_t*, Relocations&, VormAssembler&, VorpErrorHandler&) override {}
    void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const override { minBytes = maxBytes = 0; }
    void printListing(FILE*) override {}

    // Puts a nameless label on the line.
    void defineLabels(VormAssembler& assembler);
    VormLabel* getLabel() const { return m_label; }
    VormCCDirectiveLine* getTop() const { return m_top; }
    const char* getName() const;
    // The predicate of a cc_top with one, else "".
    const char* getPredicate() const;

private:
    VormLabel* m_label = nullptr;
    VormCCDirectiveLine* m_top;
};

} // namespace vorp
