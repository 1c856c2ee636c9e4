#pragma once

#include "frontend/Operand.h"
#include "model/VormLine.h"

#include <vector>

namespace vorp {

class VormLabel;

// Numbers: `.byte`, `.short`, `.word` (also `.int`, `.long`), `.uleb128`, `.sleb128`. An entry that
// isn't constant is relocated against one label, made by compiling its expression for the linker.
class VormDataLine : public VormLine {
public:
    enum Type { BYTE = 0, SHORT = 1, WORD = 2, ULEB128 = 3, SLEB128 = 4 };

    // Takes ownership of the operands.
    VormDataLine(const LineLocation& location, Type type, std::vector<Operand*> operands);
    ~VormDataLine() override;

    // Runs once the line is in its section: folds constants and compiles the rest, all operands
    // sharing one label for ".", the start of the line.
    void init(VormAssembler& assembler);

    void encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler& assembler,
                VorpErrorHandler& errorHandler) override;
    LineLocation getLocation() const override { return m_location; }
    void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const override;
    // The directive's name, a blank and the operands separated by ", ".
    void dump(std::ostream& out) const override;
    void printListing(FILE* file) override;

    Type getDataType() const { return m_type; }
    std::uint32_t getSize() const;
    // For the fixed types only.
    std::uint32_t getEntrySize() const;
    std::uint32_t getEntrySize(const Operand* operand) const;
    // The number of entries, constant or not.
    std::size_t numEntries() const { return m_operands.empty() ? m_values.size() : m_operands.size(); }
    bool hasVariableEntrySize() const { return m_type == ULEB128 || m_type == SLEB128; }
    bool requiresRelocations() const;
    std::uint32_t getRelocationType() const;
    const char* getDirectiveName() const;
    // The entries' trees and labels; both empty for a line of constants only, which keeps values.
    const std::vector<Operand*>& getOperands() const { return m_operands; }
    const std::vector<VormLabel*>& getLabels() const { return m_labels; }
    // Replaces one entry (debug rewriting); the new operand is folded and compiled like the others.
    void replaceOperand(VormAssembler& assembler, unsigned num, Operand* operand);

    // Whether a constant fits the directive: .byte -128 to 255, .short -32768 to 65535.
    static bool valueFits(Type type, int value);

private:
    void compileOperand(VormAssembler& assembler, unsigned index, VormLabel* currentLabel);
    std::uint32_t valueSize(std::uint32_t value) const;
    std::uint8_t* writeValue(std::uint8_t* out, std::uint32_t value) const;
    // Trees again for a line of constants, for an entry to be replaced.
    void expandConstants(IdStrings& strings);

    LineLocation m_location;
    Type m_type;
    std::vector<Operand*> m_operands;
    std::vector<VormLabel*> m_labels;
    // A line of constants only (tables, images: most data) keeps each entry as its value and the
    // text it was written as, instead of a tree and a null label.
    std::vector<std::uint32_t> m_values;
    std::vector<const char*> m_texts;
};

} // namespace vorp
