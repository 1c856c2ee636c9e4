#pragma once

#include "elf/ElfTypes.h"

#include <cstdio>
#include <istream>
#include <ostream>

namespace vorp {

// One program header (segment). Its number is its index in the file's program header table.
class ElfProgramHeader : public Elf32_Phdr {
public:
    ElfProgramHeader(unsigned num, Elf32_Word type, Elf32_Addr address, Elf32_Word fileBytes, Elf32_Word memBytes,
                     Elf32_Word flags, Elf32_Word alignment);
    // Reads the 32 bytes of the header at the stream's position.
    ElfProgramHeader(unsigned num, std::istream& in);
    virtual ~ElfProgramHeader();

    unsigned getNum() const { return m_num; }

    void write(std::ostream& out) const;
    void display(FILE* out = stdout) const;

private:
    unsigned m_num;
};

} // namespace vorp
