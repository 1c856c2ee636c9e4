#include "elf/ElfRelocationTable.h"

#include "elf/ElfBlock.h"
#include "elf/ElfSectionHeader.h"

#include <cassert>
#include <cstdint>

namespace vorp {

ElfRelocationTable::ElfRelocationTable() = default;

ElfRelocationTable::ElfRelocationTable(ElfBlock* block, ElfSectionHeader* sectionHeader)
{
    assert(sectionHeader->sh_type == 9 || sectionHeader->sh_type == 4);
    const bool hasAddend = sectionHeader->sh_type == 4;
    const unsigned entryBytes = hasAddend ? ELF32_RELA_BYTES : ELF32_REL_BYTES;
    // A stride below the entry size would read past the entries; a zero one would never end.
    const unsigned stride = sectionHeader->sh_entsize < entryBytes ? entryBytes : sectionHeader->sh_entsize;
    unsigned start = 0;
    if (!block->findSection(sectionHeader, start))
        start = 0;
    const unsigned available = block->getSize() > start ? block->getSize() - start : 0;
    const unsigned bytes = sectionHeader->sh_size < available ? sectionHeader->sh_size : available;
    for (unsigned at = 0; at + entryBytes <= bytes; at += stride) {
        m_relocations.emplace_back(hasAddend, block->getData() + start + at);
        if (m_relocations.back().getAddend() != 0)
            m_requiresAddend = true;
    }
    m_writeAddend = hasAddend;
    // Already in the file: encoding it again would lose the block that holds it.
    m_elfBlock = block;
}

ElfRelocationTable::~ElfRelocationTable() = default;

void ElfRelocationTable::addRelocation(Elf32_Addr offset, unsigned char type, Elf32_Word symbol, Elf32_Sword addend)
{
    assert(symbol != 0);
    m_relocations.emplace_back(offset, type, symbol, addend);
    if (addend != 0)
        m_writeAddend = true;
}

ElfBlock* ElfRelocationTable::encode(bool writeAddend)
{
    assert(m_elfBlock == __null);
    assert(writeAddend | !m_requiresAddend);
    m_writeAddend = writeAddend;
    const unsigned entryBytes = writeAddend ? ELF32_RELA_BYTES : ELF32_REL_BYTES;
    const unsigned size = entryBytes * getNumEntries();
    unsigned char* data = new unsigned char[size];
    unsigned char* out = data;
    for (const ElfRelocation& relocation : m_relocations) {
        relocation.encode(writeAddend, out);
        out += entryBytes;
    }
    m_elfBlock = new ElfBlock(size, data);
    return m_elfBlock;
}

void ElfRelocationTable::adjustOffsets(Elf32_Addr offset, int delta)
{
    const std::int64_t removedFrom = static_cast<std::int64_t>(offset) - delta;
    for (ElfRelocation& relocation : m_relocations) {
        const Elf32_Addr at = relocation.getOffset();
        if (at >= offset)
            relocation.setOffset(static_cast<Elf32_Addr>(at - delta));
        else if (delta > 0 && static_cast<std::int64_t>(at) >= removedFrom)
            relocation.setRemoved();
    }
}

void ElfRelocationTable::substituteSymbol(Elf32_Word oldSymbol, Elf32_Word newSymbol)
{
    for (ElfRelocation& relocation : m_relocations) {
        if (relocation.getSymbol() == oldSymbol)
            relocation.setSymbol(newSymbol);
    }
}

void ElfRelocationTable::display(FILE* out) const
{
    fprintf(out, "\nRelocation table contains %d %s:\n", static_cast<int>(getNumEntries()),
            getNumEntries() == 1 ? " entry:" : " entries:");
    int index = 0;
    for (const ElfRelocation& relocation : m_relocations) {
        fprintf(out, "Index %d\n", index++);
        relocation.display(out);
    }
}

} // namespace vorp
