#pragma once

#include "elf/ElfTypes.h"

#include <cstdio>

namespace vorp {

class ElfStrings;

// One entry of the symbol table.
class ElfSymbol : public Elf32_Sym {
public:
    ElfSymbol(Elf32_Word nameOffset, Elf32_Addr value, Elf32_Half section, unsigned char binding,
              unsigned char type, Elf32_Word size);
    // Decodes the 16 bytes of a record as it stands in the file.
    explicit ElfSymbol(const unsigned char* record);
    virtual ~ElfSymbol();

    unsigned char getBinding() const { return st_info >> 4; }
    unsigned char getType() const { return st_info & 0xF; }

    // Writes the 16 bytes of the record.
    void encode(unsigned char* out) const;
    void display(const ElfStrings* strings, FILE* out = stdout) const;
};

} // namespace vorp
