#pragma once

#include <string>

namespace vorp {

class Operand;
class VormAssembler;
class VormSection;

// Writes a generated section as lines of assembly, through the same adding operations the parser
// uses: labels, label differences and relocations then take the normal path through format choice,
// label finalisation and encoding. Every line sits at "<unknown>" line 0.
class DataWriter {
public:
    DataWriter(VormAssembler& assembler, VormSection* section) : m_assembler(assembler), m_section(section) {}
    DataWriter(const DataWriter&) = delete;
    DataWriter& operator=(const DataWriter&) = delete;
    ~DataWriter();

    void emitU8(unsigned char value);
    void emitU16(unsigned short value);
    void emitU32(unsigned int value);
    void emitUleb128(unsigned int value);
    // Written as `.uleb128` of the value taken unsigned: -4 comes out as the five bytes of 0xFFFFFFFC.
    void emitSleb128(int value);
    // A `.word` naming the label, which the linker relocates.
    void emitReference(const std::string& label);
    void emitReference(const std::string& label, int offset);
    // A `.word` of a - b.
    void emitDifference(const std::string& a, const std::string& b);
    // The bytes of the text and a terminating zero.
    void emitString(const std::string& text);
    void emitLabel(const std::string& name);
    void emitAlign(unsigned int alignment, int fill);
    // Opens an elimination block; with a predicate the block goes when that label's code goes.
    void emitCCTop(const std::string& name, const std::string& predicate);
    void emitCCBottom();

    VormSection* getSection() const { return m_section; }
    VormAssembler& getAssembler() const { return m_assembler; }

private:
    void emitData(int type, Operand* operand);

    VormAssembler& m_assembler;
    VormSection* m_section;
    std::string currentCC;
};

} // namespace vorp
