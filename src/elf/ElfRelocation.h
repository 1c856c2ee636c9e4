#pragma once

#include "elf/ElfTypes.h"

#include <cstdio>

namespace vorp {

// One relocation: where, what kind, against which symbol, and the addend. The type is the low
// byte of r_info and is kept as given; the symbol number is the upper 24 bits.
class ElfRelocation {
public:
    ElfRelocation(Elf32_Addr offset, unsigned char type, Elf32_Word symbol, Elf32_Sword addend);
    // Decodes one entry of 8 bytes, or of 12 when `hasAddend` is set; without one the addend is 0.
    ElfRelocation(bool hasAddend, const unsigned char* entry);
    virtual ~ElfRelocation();

    Elf32_Addr getOffset() const { return r_offset; }
    void setOffset(Elf32_Addr offset) { r_offset = offset; }
    unsigned char getType() const { return static_cast<unsigned char>(r_info & 0xFF); }
    Elf32_Word getSymbol() const { return r_info >> 8; }
    // Keeps the type.
    void setSymbol(Elf32_Word symbol) { r_info = (symbol << 8) | (r_info & 0xFF); }
    Elf32_Sword getAddend() const { return r_addend; }
    bool getRemoved() const { return m_removed; }
    void setRemoved() { m_removed = true; }

    // Writes 12 bytes with the addend, 8 without.
    void encode(bool writeAddend, unsigned char* out) const;
    void display(FILE* out = stdout) const;

private:
    Elf32_Addr r_offset;
    Elf32_Word r_info;
    Elf32_Sword r_addend;
    bool m_removed = false;
};

} // namespace vorp
