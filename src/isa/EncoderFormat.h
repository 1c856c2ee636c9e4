#pragma once

#include "isa/EncodingFailInfo.h"
#include "isa/OperandDescriptor.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vorp {

class Relocations;
class VormCodeLine;
class VormOperImm;

// The answer of a format to a line's tokens.
enum EncodeResult {
    ENCODE_DEFINITE = 0,     // fits for every address still possible
    ENCODE_CURRENT = 1,      // fits at the present estimate of addresses
    ENCODE_POSSIBLE = 2,     // doesn't fit at the present estimate, but may come to
    ENCODE_NO = 3,           // can never fit
    ENCODE_OUT_OF_RANGE = 4, // can never fit: an immediate lies outside its ranges
};

// How the operands are packed into one or two halfwords; the name of a format ends in it.
enum FormatLayout {
    LAYOUT_0r, LAYOUT_1r, LAYOUT_2r, LAYOUT_r2r, LAYOUT_rus, LAYOUT_3r, LAYOUT_2rus, LAYOUT_u6, LAYOUT_ru6,
    LAYOUT_u10, LAYOUT_lu6, LAYOUT_lru6, LAYOUT_lu10, LAYOUT_l2r, LAYOUT_lr2r, LAYOUT_l3r, LAYOUT_l2rus,
    LAYOUT_l4r, LAYOUT_l5r, LAYOUT_l6r,
};

// One concrete machine encoding of an instruction: its size, the pattern its operands must show
// (`%r` a register, `%i` an immediate, all else literal text), the operand slots and the bits.
// Formats are built once and shared, read-only, by every line.
class EncoderFormat {
public:
    static constexpr int NUM_REGISTERS = 25;
    // The field values of the operands in the order the signature writes them: registers by number,
    // immediates as they go into the bits (mapped, inverted, in units). Missing operands are 0.
    using Fields = std::array<std::uint32_t, 6>;

    // `placement`, when not empty, says for each operand of the layout which written operand goes
    // there: a few instructions write their operands in another order in the default syntax.
    EncoderFormat(std::string name, std::string signature, FormatLayout layout, std::uint32_t base,
                  std::uint32_t relocationType, std::vector<unsigned> placement);
    EncoderFormat(const EncoderFormat&) = delete;
    EncoderFormat& operator=(const EncoderFormat&) = delete;
    virtual ~EncoderFormat() = default;

    // The bits, for a line whose format is final: the high halfword of a 4-byte value comes first.
    std::uint32_t getOpcode(VormCodeLine* line, VormOperImm& immediates, Relocations* relocations) const;
    // The bits for given field values, as getOpcode packs them; needs no line.
    std::uint32_t encodeFields(const Fields& written) const;

    const std::string& getName() const { return m_name; }
    const std::string& getSignature() const { return m_signature; }
    int getNumBytes() const { return m_numBytes; }
    unsigned numDescriptors() const { return static_cast<unsigned>(m_descriptors.size()); }
    const OperandDescriptor* getDescriptor(unsigned descNum) const;
    void addDescriptor(std::unique_ptr<OperandDescriptor> descriptor) { m_descriptors.push_back(std::move(descriptor)); }

    bool isBranch() const { return m_isBranch; }
    bool isLoad() const { return m_isLoad; }
    bool isStore() const { return m_isStore; }
    bool isBarrier() const { return m_isBarrier; }
    bool isLink() const { return m_isLink; }
    void setRelocationType(std::uint32_t type) { m_relocationType = type; }
    void setFlags(bool branch, bool load, bool store, bool barrier, bool link);
    void setImplicitRegisters(const bool (&uses)[NUM_REGISTERS], const bool (&defs)[NUM_REGISTERS]);
    bool usesRegister(int index) const { return m_useRegs[index]; }
    bool definesRegister(int index) const { return m_defRegs[index]; }

    // Walks the signature and the line's tokens together. Registers met are recorded on the line,
    // even when the format is then rejected. Only ENCODE_NO stops the walk early: the answer of the
    // last operand is the one that counts.
    EncodeResult canEncode(VormCodeLine* line, VormOperImm& immediates, bool largest, EncodingFailInfo::Ranges& ranges,
                           int& value) const;

    static std::uint32_t getBits(unsigned shift, unsigned width, std::uint32_t value);
    static std::uint32_t encode1OpSubOpc(std::uint32_t r);
    static std::uint32_t encode2OpExtraBits(std::uint32_t x, std::uint32_t y);
    static std::uint32_t encode2OpBit5(std::uint32_t x, std::uint32_t y);
    static std::uint32_t encode2OpSubOpc(std::uint32_t x, std::uint32_t y);
    static std::uint32_t encode3OpSubOpc(std::uint32_t a, std::uint32_t b, std::uint32_t c);

private:
    EncodeResult regOperandMatches(VormCodeLine* line, unsigned& tokenNum, const OperandDescriptorReg* desc) const;
    EncodeResult immOperandMatches(VormCodeLine* line, VormOperImm& immediates, unsigned& tokenNum,
                                   const OperandDescriptorImm* desc, bool largest, EncodingFailInfo::Ranges& ranges,
                                   int& value) const;
    // The field values of the line's operands, in written order.
    Fields readOperands(VormCodeLine* line, VormOperImm& immediates, Relocations* relocations) const;

    int m_numBytes;
    std::string m_name;
    std::string m_signature;
    bool m_isBranch = false;
    bool m_isLoad = false;
    bool m_isStore = false;
    bool m_isBarrier = false;
    bool m_isLink = false;
    bool m_useRegs[NUM_REGISTERS] = {};
    bool m_defRegs[NUM_REGISTERS] = {};
    std::vector<std::unique_ptr<OperandDescriptor>> m_descriptors;
    FormatLayout m_layout;
    std::uint32_t m_base;
    std::uint32_t m_relocationType;
    std::vector<unsigned> m_placement;
    std::vector<unsigned> m_operandTokens; // the token each operand starts at
};

} // namespace vorp
