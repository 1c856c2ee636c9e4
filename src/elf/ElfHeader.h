#pragma once

#include "elf/ElfTypes.h"

#include <cstdio>
#include <istream>
#include <ostream>

namespace vorp {

// The file header. It always stands at offset 0 and takes 52 bytes.
class ElfHeader : public Elf32_Ehdr {
public:
    static constexpr Elf32_Half MACHINE_TL3 = 0xB49E;

    // All fields 0, as for a file still to be read.
    ElfHeader();
    virtual ~ElfHeader();

    // The values of a new file of the given type (1 relocatable, 2 executable) with no program or
    // section headers yet.
    void createDefaultHeader(unsigned char type);
    bool hasElfMagic() const;

    void read(std::istream& in);
    void write(std::ostream& out) const;
    void display(FILE* out = stdout) const;
};

} // namespace vorp
