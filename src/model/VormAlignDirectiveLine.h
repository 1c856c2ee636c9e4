#pragma once

#include "model/VormLine.h"

namespace vorp {

class VormLabel;

// Padding up to a multiple of the alignment. While addresses are uncertain its size is a range,
// and the address after it is rounded up at both ends: alignment absorbs the variance of what
// stands before it.
class VormAlignDirectiveLine : public VormLine {
public:
    VormAlignDirectiveLine(std::uint32_t alignment, const LineLocation& location, bool schedule);
    VormAlignDirectiveLine(std::uint32_t alignment, std::uint32_t fill, const LineLocation& location, bool schedule);

    // Runs once the line is in its section: its label, the alignment check (error 7), and the
    // default fill, which in code is the no-op pattern.
    void initialise(VormAssembler& assembler, VorpErrorHandler& errorHandler);

    void encode(std::uint8_t* buffer, Relocations&, VormAssembler&, VorpErrorHandler&) override;
    LineLocation getLocation() const override { return m_location; }
    void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const override;
    VormAddress getNextAddress() const override;
    void dump(std::ostream& out) const override;
    void printListing(FILE*) override {}

    std::uint32_t getAlignment() const { return m_alignment; }
    std::uint32_t getFill() const { return m_fill; }
    VormLabel* getLabel() const { return m_label; }

private:
    std::uint32_t pad(std::uint32_t address) const;
    std::uint32_t roundUp(std::uint32_t address) const;

    std::uint32_t m_alignment;
    std::uint32_t m_fill;
    bool m_hasFill;
    VormLabel* m_label = nullptr;
    LineLocation m_location;
};

} // namespace vorp
