#pragma once

#include "isa/Tl3bDecoder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vorp {

class ElfHandler;
class ElfSectionHeader;

// Shows the code sections of an object (those with SHF_EXECINSTR) as instructions.
//
// A section is read from its start, one instruction after the other. Bytes that decode to no
// instruction (data in code, padding) become `.short` lines, a trailing odd byte a `.byte`, and a
// data relocation of the object (`.word`, `.short`, `.byte` of a label) is shown as that data.
// A 4-byte instruction that would swallow a label is read as two `.short`s instead, so that every
// label stands where the symbol table puts it.
class Disassembler {
public:
    Disassembler(const ElfHandler& elf, const Tl3bDecoder& decoder);
    Disassembler(const Disassembler&) = delete;
    Disassembler& operator=(const Disassembler&) = delete;

    // For reading: "address: bytes  mnemonic operands" in the default syntax, labels where they
    // stand, pc-relative targets as an address and <label+offset>, operands a relocation fills by
    // its symbol with the type in a comment, and jump tables marked by a comment.
    std::string listing() const;
    // Source that vorp assembles back to the same bytes in every code section: each instruction by
    // the name of its format, branches to labels (made up where the object has none), data as
    // numbers.
    std::string reassembly() const;

    struct Relocation {
        std::string symbol;
        std::uint32_t type = 0;
        std::int32_t addend = 0;
        bool sameSection = false; // the symbol is in the relocated section: pc-relative bits are filled
    };
    struct Label {
        std::uint32_t offset;
        std::string name;
    };
    enum ItemKind { ITEM_INSTRUCTION, ITEM_BYTE, ITEM_SHORT, ITEM_WORD };
    struct Item {
        std::uint32_t offset;
        unsigned size;
        ItemKind kind;
        DecodedInstruction instruction;
        const Relocation* relocation; // at the item's first byte, or null
    };
    struct JumpTable {
        std::uint32_t start; // the first entry
        std::uint32_t entries;
        std::uint32_t trampolines; // where the trampolines begin
        std::string counter;       // "0x1"
    };
    struct Section {
        unsigned index = 0;
        std::string name;
        const unsigned char* bytes = nullptr;
        std::uint32_t size = 0;
        std::vector<Label> labels;                                   // by offset, then symbol order
        std::vector<std::pair<std::uint32_t, Relocation>> relocations; // by offset
        std::vector<Item> items;
        std::vector<JumpTable> jumpTables;
    };

private:
    void readSection(const ElfSectionHeader* header);
    void readItems(Section& section) const;
    void findJumpTables(Section& section) const;

    const Relocation* relocationAt(const Section& section, std::uint32_t offset) const;
    // The immediate operand a relocation fills: the first one that allows a label.
    static int relocatedOperand(const DecodedInstruction& instruction);
    std::string itemBytes(const Section& section, const Item& item) const;
    std::string dataText(const Section& section, const Item& item) const;
    std::string targetText(const Section& section, std::int64_t target) const;

    const ElfHandler& m_elf;
    const Tl3bDecoder& m_decoder;
    std::vector<Section> m_sections;
};

} // namespace vorp
