#include "isa/EncoderFormat.h"

#include <cassert>
#include <cctype>

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

std::uint32_t EncoderFormat::encodeFields(const Fields& written) const
{
    Fields op = written;
    if (!m_placement.empty()) {
        op = Fields{};
        for (std::size_t i = 0; i < m_placement.size(); ++i)
            op[i] = written[m_placement[i]];
    }
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
