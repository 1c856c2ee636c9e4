#include "debug/DataWriter.h"

#include "diag/IdStrings.h"
#include "frontend/Operand.h"
#include "model/VormAssembler.h"

#include <cassert>
#include <memory>

namespace vorp {

namespace {

Token generatedToken(VormAssembler& assembler, int symbol, const std::string& text)
{
    return newGeneratedToken(assembler.getIdStrings(), symbol, text.c_str());
}

} // namespace

DataWriter::~DataWriter()
{
    assert(currentCC.empty() && "Unterminated cc_top");
}

void DataWriter::emitData(int type, Operand* operand)
{
    m_assembler.addData(m_section, m_assembler.generatedLocation(), static_cast<VormDataLine::Type>(type), {operand});
}

void DataWriter::emitU8(unsigned char value)
{
    emitData(VormDataLine::BYTE, newConstantOperand(m_assembler.getIdStrings(), value));
}

void DataWriter::emitU16(unsigned short value)
{
    emitData(VormDataLine::SHORT, newConstantOperand(m_assembler.getIdStrings(), value));
}

void DataWriter::emitU32(unsigned int value)
{
    emitData(VormDataLine::WORD, newConstantOperand(m_assembler.getIdStrings(), value));
}

void DataWriter::emitUleb128(unsigned int value)
{
    emitData(VormDataLine::ULEB128, newConstantOperand(m_assembler.getIdStrings(), value));
}

void DataWriter::emitSleb128(int value)
{
    // Deliberately unsigned: the readers of these sections expect the five-byte form.
    emitData(VormDataLine::ULEB128, newConstantOperand(m_assembler.getIdStrings(), static_cast<unsigned>(value)));
}

void DataWriter::emitReference(const std::string& label)
{
    emitData(VormDataLine::WORD, newSymbolOperand(m_assembler.getIdStrings(), label.c_str()));
}

void DataWriter::emitReference(const std::string& label, int offset)
{
    emitData(VormDataLine::WORD,
             newBinaryOperand(m_assembler.getIdStrings(), Operand::ADD, newSymbolOperand(m_assembler.getIdStrings(), label.c_str()), newConstantOperand(m_assembler.getIdStrings(), static_cast<unsigned>(offset))));
}

void DataWriter::emitDifference(const std::string& a, const std::string& b)
{
    emitData(VormDataLine::WORD, newBinaryOperand(m_assembler.getIdStrings(), Operand::SUBTRACT, newSymbolOperand(m_assembler.getIdStrings(), a.c_str()), newSymbolOperand(m_assembler.getIdStrings(), b.c_str())));
}

void DataWriter::emitString(const std::string& text)
{
    Token token = generatedToken(m_assembler, S_STVAL, "");
    token.stringData = m_assembler.getIdStrings().idString(std::string_view(text));
    token.stringLength = static_cast<unsigned>(text.size() + 1);
    token.text = token.stringData;
    m_assembler.addAscii(m_section, m_assembler.generatedLocation(), true, {token});
}

void DataWriter::emitLabel(const std::string& name)
{
    m_assembler.addLabel(m_section, generatedToken(m_assembler, S_NAME, name), false);
}

void DataWriter::emitAlign(unsigned int alignment, int fill)
{
    m_assembler.addAlign(m_section, alignment, static_cast<std::uint32_t>(fill), m_assembler.generatedLocation(), false);
}

void DataWriter::emitCCTop(const std::string& name, const std::string& predicate)
{
    assert(!name.empty() && "no name for cc_top");
    assert(currentCC.empty() && "nested cc_top");
    auto tokens = std::make_unique<TokenLine>();
    tokens->push_back(generatedToken(m_assembler, S_D_CCTOP, "cc_top"));
    tokens->push_back(generatedToken(m_assembler, S_NAME, name));
    if (!predicate.empty()) {
        tokens->push_back(generatedToken(m_assembler, S_COMMA, ","));
        tokens->push_back(generatedToken(m_assembler, S_NAME, predicate));
    }
    m_assembler.addCCTop(m_section, std::move(tokens));
    currentCC = name;
}

void DataWriter::emitCCBottom()
{
    assert(!currentCC.empty() && "cc_bottom with no cc_top");
    auto tokens = std::make_unique<TokenLine>();
    tokens->push_back(generatedToken(m_assembler, S_D_CCBOT, "cc_bottom"));
    tokens->push_back(generatedToken(m_assembler, S_NAME, currentCC));
    m_assembler.addCCBottom(m_section, std::move(tokens));
    currentCC.clear();
}

} // namespace vorp
