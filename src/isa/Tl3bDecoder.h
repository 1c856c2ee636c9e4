#pragma once

#include "isa/EncoderFormat.h"
#include "isa/Tl3bInstructionTable.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace vorp {

// One instruction read back from its bits.
struct DecodedInstruction {
    const EncoderFormat* format = nullptr;
    unsigned numBytes = 0;
    unsigned numOperands = 0;
    // In the order the signature writes them: register numbers, and immediates as a constant would be
    // written in the source: in the operand's units, negative for a backward (inverted) field.
    std::array<std::int32_t, 6> operands{};
};

// Reads TL3 code with the formats the assembler encodes with. Nothing here is a second table:
// every format's fixed bits and operand fields are found by encoding with its own encodeFields()
// while its operands run over the values their descriptors allow.
//
// How the fields are found. An immediate with more than LINEAR_LIMIT values lies in plain bit
// slices (the 16- and 20-bit immediates of the long forms): each of its bits, set alone, sets one
// bit of the instruction. Every other operand (registers, short immediates) is folded into sums
// with its neighbours (the subopcode of the register layouts), so it is not sliced: for each
// halfword, every combination of the short operands that reach it is encoded once, and the
// halfword, with the bits of long immediates masked out, is the key to that combination.
//
// Decoding then looks up the first halfword in a table of 65536 entries that lists, for that
// halfword, the formats it can start and the combination of their first-halfword operands. A 2-byte
// format is decided there; a 4-byte one (its prefix halfword comes first) looks up its second
// halfword the same way and checks that its fields encode back to the same word.
//
// Aliases: a few instructions of the default syntax share their format's bits with another one
// (`nop` and `mov` are `add rX, rY, 0` written shorter). Where several formats give the same bits,
// the one with the fewest written operands is chosen: `nop` for `add r0, r0, 0`, `mov` for
// `add rX, rY, 0`. Each of them assembles back to the very bits: `nop` and `mov` have that one
// format, and `add` with an immediate third operand never fits its register form.
class Tl3bDecoder {
public:
    static constexpr std::size_t LINEAR_LIMIT = 4096;

    // The formats of one syntax, as the table builds them for the assembler.
    explicit Tl3bDecoder(bool architectural = false);
    Tl3bDecoder(const Tl3bDecoder&) = delete;
    Tl3bDecoder& operator=(const Tl3bDecoder&) = delete;
    ~Tl3bDecoder();

    // Decodes the instruction at `bytes`, `available` bytes long at most: halfwords little-endian,
    // the prefix of a 4-byte format first. False when the bytes are no instruction of the syntax.
    bool decode(const unsigned char* bytes, std::size_t available, DecodedInstruction& out) const;

    // The mnemonic that shows a format: the name of an instruction of the syntax that lists it.
    const std::string& displayName(const EncoderFormat* format) const;
    // A name of the syntax that selects this format and no other one (its format name, say).
    const std::string& exactName(const EncoderFormat* format) const;
    std::size_t numFormats() const;
    const EncoderFormat* format(std::size_t index) const;

    // The instruction's text in its signature: `name` then the operands, registers by name and the
    // immediates as `immediate(operand number)` writes them.
    static std::string render(const DecodedInstruction& instruction, const std::string& name,
                              const std::function<std::string(unsigned)>& immediate);
    // Where a pc-relative immediate points when the instruction stands at `address`: behind the
    // instruction, plus the operand scaled to bytes.
    static std::int64_t pcTarget(const DecodedInstruction& instruction, unsigned operand, std::uint32_t address);

private:
    struct FormatInfo;

    const FormatInfo& infoOf(const EncoderFormat* format) const;
    void analyse(FormatInfo& info) const;
    void buildIndex();
    bool decodeLong(const FormatInfo& info, std::uint32_t comboFirst, std::uint32_t word,
                    DecodedInstruction& out) const;

    Tl3bInstructionTable m_table;
    EncoderMap m_defaultEncoders;
    EncoderMap m_architecturalEncoders;
    std::vector<FormatInfo> m_formats;
    std::unordered_map<const EncoderFormat*, std::size_t> m_numbers; // in m_formats
    // For each first halfword: the entries m_offsets[h] .. m_offsets[h + 1] of m_entries.
    struct Entry {
        std::uint32_t format;
        std::uint32_t combo;
    };
    std::vector<std::uint32_t> m_offsets;
    std::vector<Entry> m_entries;
};

} // namespace vorp
