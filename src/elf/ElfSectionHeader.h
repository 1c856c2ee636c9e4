#pragma once

#include "elf/ElfTypes.h"

#include <cstdio>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace vorp {

class ElfRelocationTable;
class ElfStrings;

// One section header. Its number is its index in the file's section header table; the relocation
// tables that apply to the section hang off it.
class ElfSectionHeader : public Elf32_Shdr {
public:
    ElfSectionHeader(unsigned num, Elf32_Word name, Elf32_Word type, Elf32_Word flags, Elf32_Addr address,
                     Elf32_Word size, Elf32_Word link, Elf32_Word info, Elf32_Word alignment, Elf32_Word entrySize);
    // Reads the 40 bytes of the header at the stream's position.
    ElfSectionHeader(unsigned num, std::istream& in);
    virtual ~ElfSectionHeader();

    unsigned getNum() const { return m_num; }
    unsigned getSectionNumber() const { return m_num; }
    // The name as it stands in the string table; empty if sh_name lies outside it.
    std::string getName(const ElfStrings* strings) const;

    const std::vector<ElfRelocationTable*>& getRelocations() const { return m_relocations; }
    void addRelocations(ElfRelocationTable* table) { m_relocations.push_back(table); }

    void write(std::ostream& out) const;
    void display(const ElfStrings* strings, FILE* out = stdout) const;

private:
    unsigned m_num;
    std::vector<ElfRelocationTable*> m_relocations;
};

} // namespace vorp
