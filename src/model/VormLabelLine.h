#pragma once

#include "model/VormLine.h"

namespace vorp {

class VormLabel;

// The place a label stands for. Takes no bytes.
class VormLabelLine : public VormLine {
public:
    VormLabelLine(VormLabel* label, const LineLocation& location, bool schedule);

    void encode(std::uint8_t*, Relocations&, VormAssembler&, VorpErrorHandler&) override {}
    LineLocation getLocation() const override { return m_location; }
    // A label that something branches to, or that is visible outside, starts a basic block.
    bool isTargetLine() const override;
    void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const override { minBytes = maxBytes = 0; }
    void dump(std::ostream& out) const override;
    void printListing(FILE* file) override;

    VormLabel* getLabel() const { return m_label; }

private:
    VormLabel* m_label;
    LineLocation m_location;
};

} // namespace vorp
