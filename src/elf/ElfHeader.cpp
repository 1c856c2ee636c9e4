#include "elf/ElfHeader.h"

#include <cstring>

namespace vorp {

ElfHeader::ElfHeader()
    : Elf32_Ehdr()
{
}

ElfHeader::~ElfHeader() = default;

void ElfHeader::createDefaultHeader(unsigned char type)
{
    std::memset(e_ident, 0, sizeof(e_ident));
    e_ident[0] = 0x7F;
    e_ident[1] = 'E';
    e_ident[2] = 'L';
    e_ident[3] = 'F';
    e_ident[4] = 1; // 32-bit
    e_ident[5] = 1; // little-endian
    e_ident[6] = 1; // current version
    e_ident[7] = 0; // no OS ABI
    e_type = type;
    e_machine = MACHINE_TL3;
    e_version = 1;
    e_entry = 0;
    // No program headers yet: the section headers follow the file header directly.
    e_phoff = ELF32_EHDR_BYTES;
    e_shoff = ELF32_EHDR_BYTES;
    e_flags = 0;
    e_ehsize = ELF32_EHDR_BYTES;
    e_phentsize = ELF32_PHDR_BYTES;
    e_phnum = 0;
    e_shentsize = ELF32_SHDR_BYTES;
    e_shnum = 0;
    e_shstrndx = 0;
}

bool ElfHeader::hasElfMagic() const
{
    return e_ident[0] == 0x7F && e_ident[1] == 'E' && e_ident[2] == 'L' && e_ident[3] == 'F';
}

void ElfHeader::read(std::istream& in)
{
    in.read(reinterpret_cast<char*>(e_ident), EI_NIDENT);
    readElfField(in, e_type);
    readElfField(in, e_machine);
    readElfField(in, e_version);
    readElfField(in, e_entry);
    readElfField(in, e_phoff);
    readElfField(in, e_shoff);
    readElfField(in, e_flags);
    readElfField(in, e_ehsize);
    readElfField(in, e_phentsize);
    readElfField(in, e_phnum);
    readElfField(in, e_shentsize);
    readElfField(in, e_shnum);
    readElfField(in, e_shstrndx);
}

void ElfHeader::write(std::ostream& out) const
{
    out.write(reinterpret_cast<const char*>(e_ident), EI_NIDENT);
    writeElfField(out, e_type);
    writeElfField(out, e_machine);
    writeElfField(out, e_version);
    writeElfField(out, e_entry);
    writeElfField(out, e_phoff);
    writeElfField(out, e_shoff);
    writeElfField(out, e_flags);
    writeElfField(out, e_ehsize);
    writeElfField(out, e_phentsize);
    writeElfField(out, e_phnum);
    writeElfField(out, e_shentsize);
    writeElfField(out, e_shnum);
    writeElfField(out, e_shstrndx);
}

void ElfHeader::display(FILE* out) const
{
    fprintf(out, "Elf32_Ehdr.e_ident = ");
    for (unsigned i = 0; i < EI_NIDENT; ++i)
        fprintf(out, "%02x", e_ident[i]);
    fprintf(out, "\n");
    fprintf(out, "Elf32_Ehdr.e_type = %08x\n", e_type);
    fprintf(out, "Elf32_Ehdr.e_machine = %08x\n", e_machine);
    fprintf(out, "Elf32_Ehdr.e_version = %08x\n", e_version);
    fprintf(out, "Elf32_Ehdr.e_entry = %08x\n", e_entry);
    fprintf(out, "Elf32_Ehdr.e_phoff = %08x\n", e_phoff);
    fprintf(out, "Elf32_Ehdr.e_shoff = %08x\n", e_shoff);
    fprintf(out, "Elf32_Ehdr.e_flags = %08x\n", e_flags);
    fprintf(out, "Elf32_Ehdr.e_ehsize = %08x\n", e_ehsize);
    fprintf(out, "Elf32_Ehdr.e_phentsize = %08x\n", e_phentsize);
    fprintf(out, "Elf32_Ehdr.e_phnum = %08x\n", e_phnum);
    fprintf(out, "Elf32_Ehdr.e_shentsize = %08x\n", e_shentsize);
    fprintf(out, "Elf32_Ehdr.e_shnum = %08x\n", e_shnum);
    fprintf(out, "Elf32_Ehdr.e_shstrndx = %08x\n", e_shstrndx);
}

} // namespace vorp
