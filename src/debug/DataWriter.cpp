#include "debug/DataWriter.h"

#include "diag/IdStrings.h"
#include "frontend/Operand.h"
#include "model/VormAssembler.h"

#include <cassert>
#include <memory>

namespace vorp {

namespace {

const char* unknownFile()
{
    static const char* const file = IdStrings::idString("<unknown>");
    return file;
}

LineLocation unknownLocation()
{
    return LineLocation(unknownFile(), 0);
}

Token unknownToken(int symbol, const std::string& text)
{
    return newToken(symbol, text.c_str(), 0, unknownFile());
}

Operand* constantLeaf(unsigned value)
{
    auto* leaf = new Operand(Operand::INTEGER);
    leaf->addToken(newUnsignedConstToken(value, 0, unknownFile()));
    return leaf;
}

Operand* labelLeaf(const std::string& name)
{
    auto* leaf = new Operand(Operand::SYMBOL);
    leaf->addToken(unknownToken(S_NAME, name));
    return leaf;
}

Operand* binary(Operand::Opcode opcode, int symbol, const char* spelling, Operand* left, Operand* right)
{
    auto* node = new Operand(opcode, left, right);
    node->addToken(unknownToken(symbol, spelling));
    return node;
}

} // namespace

DataWriter::~DataWriter()
{
    assert(currentCC.empty() && "Unterminated cc_top");
}

void DataWriter::emitData(int type, Operand* operand)
{
    m_assembler.addData(m_section, unknownLocation(), static_cast<VormDataLine::Type>(type), {operand});
}

void DataWriter::emitU8(unsigned char value)
{
    emitData(VormDataLine::BYTE, constantLeaf(value));
}

void DataWriter::emitU16(unsigned short value)
{
    emitData(VormDataLine::SHORT, constantLeaf(value));
}

void DataWriter::emitU32(unsigned int value)
{
    emitData(VormDataLine::WORD, constantLeaf(value));
}

void DataWriter::emitUleb128(unsigned int value)
{
    emitData(VormDataLine::ULEB128, constantLeaf(value));
}

void DataWriter::emitSleb128(int value)
{
    // Deliberately unsigned: the readers of these sections expect the five-byte form.
    emitData(VormDataLine::ULEB128, constantLeaf(static_cast<unsigned>(value)));
}

void DataWriter::emitReference(const std::string& label)
{
    emitData(VormDataLine::WORD, labelLeaf(label));
}

void DataWriter::emitReference(const std::string& label, int offset)
{
    emitData(VormDataLine::WORD,
             binary(Operand::ADD, S_PLUS, "+", labelLeaf(label), constantLeaf(static_cast<unsigned>(offset))));
}

void DataWriter::emitDifference(const std::string& a, const std::string& b)
{
    emitData(VormDataLine::WORD, binary(Operand::SUBTRACT, S_MINUS, "-", labelLeaf(a), labelLeaf(b)));
}

void DataWriter::emitString(const std::string& text)
{
    Token token = unknownToken(S_STVAL, "");
    token.stringData = IdStrings::idString(std::string_view(text));
    token.stringLength = static_cast<unsigned>(text.size() + 1);
    token.text = token.stringData;
    m_assembler.addAscii(m_section, unknownLocation(), true, {token});
}

void DataWriter::emitLabel(const std::string& name)
{
    m_assembler.addLabel(m_section, unknownToken(S_NAME, name), false);
}

void DataWriter::emitAlign(unsigned int alignment, int fill)
{
    m_assembler.addAlign(m_section, alignment, static_cast<std::uint32_t>(fill), unknownLocation(), false);
}

void DataWriter::emitCCTop(const std::string& name, const std::string& predicate)
{
    assert(!name.empty() && "no name for cc_top");
    assert(currentCC.empty() && "nested cc_top");
    auto tokens = std::make_unique<TokenLine>();
    tokens->push_back(unknownToken(S_D_CCTOP, "cc_top"));
    tokens->push_back(unknownToken(S_NAME, name));
    if (!predicate.empty()) {
        tokens->push_back(unknownToken(S_COMMA, ","));
        tokens->push_back(unknownToken(S_NAME, predicate));
    }
    m_assembler.addCCTop(m_section, std::move(tokens));
    currentCC = name;
}

void DataWriter::emitCCBottom()
{
    assert(!currentCC.empty() && "cc_bottom with no cc_top");
    auto tokens = std::make_unique<TokenLine>();
    tokens->push_back(unknownToken(S_D_CCBOT, "cc_bottom"));
    tokens->push_back(unknownToken(S_NAME, currentCC));
    m_assembler.addCCBottom(m_section, std::move(tokens));
    currentCC.clear();
}

} // namespace vorp
