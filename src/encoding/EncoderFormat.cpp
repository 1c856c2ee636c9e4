#include "encoding/EncoderFormat.h"

#include "encoding/VormCodeLine.h"
#include "encoding/VormOperImm.h"
#include "encoding/VormOperReg.h"

#include <cassert>
#include <cctype>
#include <cstdlib>

namespace vorp {

namespace {

bool isWordCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// The token index each operand of a signature starts at: the literal text splits into tokens as
// the source would, words and numbers whole, any other character alone.
std::vector<unsigned> operandTokens(const std::string& signature)
{
    std::vector<unsigned> tokens;
    unsigned position = 1;
    for (std::size_t i = 0; i < signature.size(); ++position) {
        if (signature[i] == '%') {
            tokens.push_back(position);
            i += 2;
        } else if (isWordCharacter(signature[i])) {
            while (i < signature.size() && isWordCharacter(signature[i]))
                ++i;
        } else {
            ++i;
        }
    }
    return tokens;
}

std::uint32_t hi(std::uint32_t v)
{
    return EncoderFormat::getBits(2, 2, v);
}

std::uint32_t lo(std::uint32_t v)
{
    return EncoderFormat::getBits(0, 2, v);
}

std::uint32_t w3(std::uint32_t a, std::uint32_t b, std::uint32_t c)
{
    return (EncoderFormat::encode3OpSubOpc(a, b, c) << 6) | (lo(a) << 4) | (lo(b) << 2) | lo(c);
}

// The base holds subopcode 27; the remainder of 5 is added to it.
std::uint32_t w2(std::uint32_t x, std::uint32_t y)
{
    return ((EncoderFormat::encode2OpExtraBits(x, y) % 5) << 6) | (EncoderFormat::encode2OpBit5(x, y) << 5) |
           (lo(x) << 2) | lo(y);
}

std::uint32_t w1(std::uint32_t r)
{
    return EncoderFormat::getBits(0, 4, r);
}

std::uint32_t u6(std::uint32_t i)
{
    return EncoderFormat::getBits(0, 6, i);
}

std::uint32_t ru6(std::uint32_t r, std::uint32_t i)
{
    return (EncoderFormat::getBits(0, 4, r) << 6) | u6(i);
}

std::uint32_t u10(std::uint32_t i)
{
    return EncoderFormat::getBits(0, 10, i);
}

// The prefix halfword's own bits; its base 0xF000 is in the format's base.
std::uint32_t pfx(std::uint32_t v)
{
    return EncoderFormat::getBits(0, 10, v);
}

std::uint32_t pair(std::uint32_t first, std::uint32_t second)
{
    return (first << 16) | second;
}

} // namespace

EncoderFormat::EncoderFormat(std::string name, std::string signature, FormatLayout layout, std::uint32_t base,
                             std::uint32_t relocationType, std::vector<unsigned> placement)
    : m_numBytes(layout >= LAYOUT_lu6 ? 4 : 2), m_name(std::move(name)), m_signature(std::move(signature)),
      m_layout(layout), m_base(base), m_relocationType(relocationType), m_placement(std::move(placement)),
      m_operandTokens(operandTokens(m_signature))
{
}

const OperandDescriptor* EncoderFormat::getDescriptor(unsigned descNum) const
{
    assert(descNum < numDescriptors());
    return m_descriptors[descNum].get();
}

void EncoderFormat::setFlags(bool branch, bool load, bool store, bool barrier, bool link)
{
    m_isBranch = branch;
    m_isLoad = load;
    m_isStore = store;
    m_isBarrier = barrier;
    m_isLink = link;
}

void EncoderFormat::setImplicitRegisters(const bool (&uses)[NUM_REGISTERS], const bool (&defs)[NUM_REGISTERS])
{
    for (int i = 0; i < NUM_REGISTERS; ++i) {
        m_useRegs[i] = uses[i];
        m_defRegs[i] = defs[i];
    }
}

std::uint32_t EncoderFormat::getBits(unsigned shift, unsigned width, std::uint32_t value)
{
    return (value >> shift) & ((1u << width) - 1);
}

std::uint32_t EncoderFormat::encode1OpSubOpc(std::uint32_t r)
{
    return hi(r) + 27;
}

std::uint32_t EncoderFormat::encode2OpExtraBits(std::uint32_t x, std::uint32_t y)
{
    const std::uint32_t code = hi(x) + 3 * hi(y);
    assert(code < 10);
    return code;
}

std::uint32_t EncoderFormat::encode2OpBit5(std::uint32_t x, std::uint32_t y)
{
    return encode2OpExtraBits(x, y) / 5;
}

std::uint32_t EncoderFormat::encode2OpSubOpc(std::uint32_t x, std::uint32_t y)
{
    return encode2OpExtraBits(x, y) % 5 + 27;
}

std::uint32_t EncoderFormat::encode3OpSubOpc(std::uint32_t a, std::uint32_t b, std::uint32_t c)
{
    return hi(a) + 3 * hi(b) + 9 * hi(c);
}

EncodeResult EncoderFormat::regOperandMatches(VormCodeLine* line, unsigned& tokenNum,
                                              const OperandDescriptorReg* desc) const
{
    int number = 0;
    if (!VormOperReg::instance().getRegNum(line, tokenNum, number))
        return ENCODE_NO;
    if (desc->isUse())
        line->addUseReg(number);
    if (desc->isDef())
        line->addDefReg(number);
    return desc->matches(number) ? ENCODE_DEFINITE : ENCODE_NO;
}

EncodeResult EncoderFormat::immOperandMatches(VormCodeLine* line, unsigned& tokenNum, const OperandDescriptorImm* desc,
                                              bool largest, EncodingFailInfo::Ranges& ranges, int& value) const
{
    int minimum = 0;
    int current = 0;
    int maximum = 0;
    if (!VormOperImm::instance().getValues(line, tokenNum, static_cast<unsigned>(m_numBytes), minimum, current,
                                           maximum, desc, largest, nullptr, 0, false))
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

EncodeResult EncoderFormat::canEncode(VormCodeLine* line, bool largest, Relocations*,
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
                    result = immOperandMatches(line, tokenNum, static_cast<const OperandDescriptorImm*>(desc),
                                               largest, ranges, value);
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

std::vector<std::uint32_t> EncoderFormat::readOperands(VormCodeLine* line, Relocations* relocations) const
{
    std::vector<std::uint32_t> written;
    unsigned operandNum = 0;
    for (std::size_t i = 0; i + 1 < m_signature.size(); ++i) {
        if (m_signature[i] != '%')
            continue;
        const unsigned tokenNum = m_operandTokens[operandNum];
        const OperandDescriptor* desc = getDescriptor(operandNum);
        if (m_signature[++i] == 'r') {
            int number = 0;
            const bool isRegister = VormOperReg::instance().getRegNum(line, tokenNum, number);
            assert(isRegister);
            written.push_back(static_cast<std::uint32_t>(number));
        } else {
            int value = 0;
            VormOperImm::instance().getValue(line, tokenNum, static_cast<unsigned>(m_numBytes), value,
                                             static_cast<const OperandDescriptorImm*>(desc), relocations,
                                             m_relocationType);
            if (desc->hasMap())
                value = desc->map(value);
            written.push_back(static_cast<std::uint32_t>(value));
        }
        ++operandNum;
    }
    // Missing operands (`mov`, `nop`) are 0.
    written.resize(6, 0);
    if (m_placement.empty())
        return written;
    std::vector<std::uint32_t> placed(6, 0);
    for (std::size_t i = 0; i < m_placement.size(); ++i)
        placed[i] = written[m_placement[i]];
    return placed;
}

std::uint32_t EncoderFormat::getOpcode(VormCodeLine* line, Relocations* relocations) const
{
    const std::vector<std::uint32_t> op = readOperands(line, relocations);
    const std::uint32_t first = m_base >> 16;
    const std::uint32_t second = m_base & 0xFFFF;
    switch (m_layout) {
    case LAYOUT_0r: return m_base;
    case LAYOUT_1r: return m_base + w1(op[0]);
    case LAYOUT_2r:
    case LAYOUT_rus: return m_base + w2(op[0], op[1]);
    case LAYOUT_r2r: return m_base + w2(op[1], op[0]);
    case LAYOUT_3r:
    case LAYOUT_2rus: return m_base + w3(op[0], op[1], op[2]);
    case LAYOUT_u6: return m_base + u6(op[0]);
    case LAYOUT_ru6: return m_base + ru6(op[0], op[1]);
    case LAYOUT_u10: return m_base + u10(op[0]);
    case LAYOUT_lu6: return pair(first + pfx(op[0] >> 6), second + u6(op[0]));
    case LAYOUT_lru6: return pair(first + pfx(op[1] >> 6), second + ru6(op[0], op[1]));
    case LAYOUT_lu10: return pair(first + pfx(op[0] >> 10), second + u10(op[0]));
    case LAYOUT_l2r: return pair(first + w2(op[0], op[1]), second);
    case LAYOUT_lr2r: return pair(first + w2(op[1], op[0]), second);
    case LAYOUT_l3r:
    case LAYOUT_l2rus: return pair(first + w3(op[0], op[1], op[2]), second);
    case LAYOUT_l4r: return pair(first + w3(op[0], op[2], op[3]), second + w1(op[1]));
    case LAYOUT_l5r: return pair(first + w3(op[0], op[2], op[3]), second + w2(op[1], op[4]));
    case LAYOUT_l6r: return pair(first + w3(op[0], op[2], op[3]), second + w3(op[1], op[4], op[5]));
    }
    assert(0 && "unknown layout");
    return 0;
}

} // namespace vorp
