#pragma once

#include "elf/ElfRelocation.h"
#include "elf/ElfTypes.h"

#include <cstdio>
#include <list>

namespace vorp {

class ElfBlock;
class ElfSectionHeader;

// The relocations of one section, in order of addition; nothing sorts them. Encoded once into the
// block of the section ".rela" plus the section's name.
class ElfRelocationTable {
public:
    ElfRelocationTable();
    // Decodes a table read from a file: the section's bytes in `block`. SHT_REL (9) tables carry
    // no addends, SHT_RELA (4) tables do.
    ElfRelocationTable(ElfBlock* block, ElfSectionHeader* sectionHeader);
    virtual ~ElfRelocationTable();

    // Symbol 0 is the null symbol, which can't be relocated against.
    void addRelocation(Elf32_Addr offset, unsigned char type, Elf32_Word symbol, Elf32_Sword addend);
    unsigned getNumEntries() const { return static_cast<unsigned>(m_relocations.size()); }
    std::list<ElfRelocation>& getRelocations() { return m_relocations; }
    const std::list<ElfRelocation>& getRelocations() const { return m_relocations; }
    bool getRequiresAddend() const { return m_requiresAddend; }
    bool getWriteAddend() const { return m_writeAddend; }
    ElfBlock* getElfBlock() const { return m_elfBlock; }

    // Makes the block of the table, 12 bytes an entry with addends, 8 without. A table is encoded
    // once; the caller's block list owns the result.
    ElfBlock* encode(bool writeAddend);

    // Accounts for `delta` bytes removed just before `offset` (a negative delta inserts bytes):
    // later relocations move down, those in the removed range are marked removed.
    void adjustOffsets(Elf32_Addr offset, int delta);
    void substituteSymbol(Elf32_Word oldSymbol, Elf32_Word newSymbol);

    void display(FILE* out = stdout) const;

private:
    std::list<ElfRelocation> m_relocations;
    bool m_requiresAddend = false;
    bool m_writeAddend = false;
    ElfBlock* m_elfBlock = nullptr;
};

} // namespace vorp
