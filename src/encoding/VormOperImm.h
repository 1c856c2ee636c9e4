#pragma once

#include <cstdint>

namespace vorp {

class AddressReader;
class OperandDescriptorImm;
class Relocations;
class VormCodeLine;
class VormLabels;

// Values of immediate operands: constants, labels and label+expression, in the operand's units.
// Made for the lines at hand: it keeps nothing between them.
class VormOperImm {
public:
    // Labels are looked up, and errors reported, in `labels`; `addresses` says where lines are
    // while formats are chosen, null for the lines' own addresses.
    VormOperImm(VormLabels& labels, AddressReader* addresses) : m_labels(labels), m_reader(addresses) {}

    // The lowest, the optimistic and the highest value the operand at `tokenNum` can have at the
    // line's present address. False when the operand can't be valued for this format: the answer
    // for an unknown label is `largest`, so that only the longest format keeps it. With `final`,
    // relocations are added and misalignment is fatal. `tokenNum` ends on the operand's last token.
    bool getValues(VormCodeLine* line, unsigned& tokenNum, unsigned instructionBytes, int& minimum, int& current,
                   int& maximum, const OperandDescriptorImm* desc, bool largest, Relocations* relocations,
                   std::uint32_t relocationType, bool final);
    // The one value, for a line at its exact address.
    void getValue(VormCodeLine* line, unsigned tokenNum, unsigned instructionBytes, int& value,
                  const OperandDescriptorImm* desc, Relocations* relocations, std::uint32_t relocationType);

private:
    VormLabels& m_labels;
    AddressReader* m_reader;
};

} // namespace vorp
