#include "isa/EncoderFormat.h"

#include "encoding/VormCodeLine.h"
#include "encoding/VormOperImm.h"
#include "encoding/VormOperReg.h"

#include <cassert>
#include <cstdlib>

// The part of a format that reads a line's tokens: it needs the assembly model, the rest of the
// format doesn't.

namespace vorp {

EncodeResult EncoderFormat::regOperandMatches(VormCodeLine* line, unsigned& tokenNum,
                                              const OperandDescriptorReg* desc) const
{
    int number = 0;
    if (!VormOperReg::getRegNum(line, tokenNum, number))
        return ENCODE_NO;
    if (desc->isUse())
        line->addUseReg(number);
    if (desc->isDef())
        line->addDefReg(number);
    return desc->matches(number) ? ENCODE_DEFINITE : ENCODE_NO;
}

EncodeResult EncoderFormat::immOperandMatches(VormCodeLine* line, VormOperImm& immediates, unsigned& tokenNum,
                                              const OperandDescriptorImm* desc, bool largest,
                                              EncodingFailInfo::Ranges& ranges, int& value) const
{
    int minimum = 0;
    int current = 0;
    int maximum = 0;
    if (!immediates.getValues(line, tokenNum, static_cast<unsigned>(m_numBytes), minimum, current, maximum, desc,
                              largest, nullptr, 0, false))
        return ENCODE_NO;
    switch (desc->matches(minimum, current, maximum)) {
    case OperandDescriptor::MATCH_POSSIBLE:
        return ENCODE_POSSIBLE;
    case OperandDescriptor::MATCH_DEFINITE:
        return ENCODE_DEFINITE;
    case OperandDescriptor::MATCH_CURRENT:
        return ENCODE_CURRENT;
    case OperandDescriptor::MATCH_NONE:
        break;
    }
    desc->findRanges(ranges);
    value = current;
    return ENCODE_OUT_OF_RANGE;
}

EncodeResult EncoderFormat::canEncode(VormCodeLine* line, VormOperImm& immediates, bool largest,
                                      EncodingFailInfo::Ranges& ranges, int& value) const
{
    const char* signature = m_signature.c_str();
    const unsigned numTokens = line->numTokens();
    unsigned tokenNum = 1;
    unsigned operandNum = 0;
    EncodeResult result = ENCODE_DEFINITE;

    if (numTokens > 1 && *signature) {
        for (;;) {
            if (*signature == '%') {
                ++signature;
                assert(*signature);
                assert(operandNum < numDescriptors());
                const OperandDescriptor* desc = getDescriptor(operandNum);
                switch (*signature++) {
                case 'r':
                    assert(desc->isReg());
                    result = regOperandMatches(line, tokenNum, static_cast<const OperandDescriptorReg*>(desc));
                    break;
                case 'i':
                    assert(desc->isImm());
                    result = immOperandMatches(line, immediates, tokenNum,
                                               static_cast<const OperandDescriptorImm*>(desc), largest, ranges, value);
                    break;
                default:
                    assert(0);
                }
                ++operandNum;
            } else {
                const Token& token = line->getToken(tokenNum);
                if (token.symbol == S_INTVAL || token.symbol == S_CHVAL) {
                    // Numbers compare by value. Where the signature has no digits the number reads as
                    // 0 and nothing is consumed, so a 0 token slips past: old sources rely on it.
                    char* end = nullptr;
                    const unsigned long number = std::strtoul(signature, &end, 0);
                    if (static_cast<std::uint32_t>(number) != token.constantValue)
                        return ENCODE_NO;
                    signature = end;
                } else {
                    for (const char* text = tokenCharStar(&token); *text; ++text, ++signature) {
                        if (*signature != *text)
                            return ENCODE_NO;
                    }
                }
            }
            ++tokenNum;
            if (!*signature)
                break;
            if (tokenNum >= numTokens) {
                if (*signature)
                    return ENCODE_NO;
                break;
            }
            if (result == ENCODE_NO)
                return result;
        }
    } else if (*signature) {
        return ENCODE_NO;
    }

    if (tokenNum != numTokens)
        return ENCODE_NO;
    for (int i = 0; i < NUM_REGISTERS; ++i) {
        if (m_useRegs[i])
            line->addUseReg(i);
        if (m_defRegs[i])
            line->addDefReg(i);
    }
    return result;
}

EncoderFormat::Fields EncoderFormat::readOperands(VormCodeLine* line, VormOperImm& immediates,
                                                  Relocations* relocations) const
{
    // Missing operands (`mov`, `nop`) are 0.
    Fields written{};
    unsigned operandNum = 0;
    for (std::size_t i = 0; i + 1 < m_signature.size(); ++i) {
        if (m_signature[i] != '%')
            continue;
        const unsigned tokenNum = m_operandTokens[operandNum];
        const OperandDescriptor* desc = getDescriptor(operandNum);
        if (m_signature[++i] == 'r') {
            int number = 0;
            const bool isRegister = VormOperReg::getRegNum(line, tokenNum, number);
            assert(isRegister);
            written[operandNum] = static_cast<std::uint32_t>(number);
        } else {
            int value = 0;
            immediates.getValue(line, tokenNum, static_cast<unsigned>(m_numBytes), value,
                                static_cast<const OperandDescriptorImm*>(desc), relocations, m_relocationType);
            if (desc->hasMap())
                value = desc->map(value);
            written[operandNum] = static_cast<std::uint32_t>(value);
        }
        ++operandNum;
    }
    return written;
}

std::uint32_t EncoderFormat::getOpcode(VormCodeLine* line, VormOperImm& immediates, Relocations* relocations) const
{
    return encodeFields(readOperands(line, immediates, relocations));
}

} // namespace vorp
