#include "elf/ElfProgramHeader.h"

namespace vorp {

ElfProgramHeader::ElfProgramHeader(unsigned num, Elf32_Word type, Elf32_Addr address, Elf32_Word fileBytes,
                                   Elf32_Word memBytes, Elf32_Word flags, Elf32_Word alignment)
    : Elf32_Phdr()
    , m_num(num)
{
    p_type = type;
    p_offset = 0;
    p_vaddr = address;
    p_paddr = address;
    p_filesz = fileBytes;
    p_memsz = memBytes;
    p_flags = flags;
    p_align = alignment;
}

ElfProgramHeader::ElfProgramHeader(unsigned num, std::istream& in)
    : Elf32_Phdr()
    , m_num(num)
{
    readElfField(in, p_type);
    readElfField(in, p_offset);
    readElfField(in, p_vaddr);
    readElfField(in, p_paddr);
    readElfField(in, p_filesz);
    readElfField(in, p_memsz);
    readElfField(in, p_flags);
    readElfField(in, p_align);
}

ElfProgramHeader::~ElfProgramHeader() = default;

void ElfProgramHeader::write(std::ostream& out) const
{
    writeElfField(out, p_type);
    writeElfField(out, p_offset);
    writeElfField(out, p_vaddr);
    writeElfField(out, p_paddr);
    writeElfField(out, p_filesz);
    writeElfField(out, p_memsz);
    writeElfField(out, p_flags);
    writeElfField(out, p_align);
}

void ElfProgramHeader::display(FILE* out) const
{
    fprintf(out, "Elf32_Phdr.p_type = %08x\n", p_type);
    fprintf(out, "Elf32_Phdr.p_offset = %08x\n", p_offset);
    fprintf(out, "Elf32_Phdr.p_vaddr = %08x\n", p_vaddr);
    fprintf(out, "Elf32_Phdr.p_paddr = %08x\n", p_paddr);
    fprintf(out, "Elf32_Phdr.p_filesz = %08x\n", p_filesz);
    fprintf(out, "Elf32_Phdr.p_memsz = %08x\n", p_memsz);
    fprintf(out, "Elf32_Phdr.p_flags = %08x\n", p_flags);
    fprintf(out, "Elf32_Phdr.p_align = %08x\n", p_align);
}

} // namespace vorp
