#include "elf/ElfSectionHeader.h"

#include "elf/ElfStrings.h"

namespace vorp {

ElfSectionHeader::ElfSectionHeader(unsigned num, Elf32_Word name, Elf32_Word type, Elf32_Word flags,
                                   Elf32_Addr address, Elf32_Word size, Elf32_Word link, Elf32_Word info,
                                   Elf32_Word alignment, Elf32_Word entrySize)
    : Elf32_Shdr()
    , m_num(num)
{
    sh_name = name;
    sh_type = type;
    sh_flags = flags;
    sh_addr = address;
    sh_offset = 0;
    sh_size = size;
    sh_link = link;
    sh_info = info;
    sh_addralign = alignment;
    sh_entsize = entrySize;
}

ElfSectionHeader::ElfSectionHeader(unsigned num, std::istream& in)
    : Elf32_Shdr()
    , m_num(num)
{
    readElfField(in, sh_name);
    readElfField(in, sh_type);
    readElfField(in, sh_flags);
    readElfField(in, sh_addr);
    readElfField(in, sh_offset);
    readElfField(in, sh_size);
    readElfField(in, sh_link);
    readElfField(in, sh_info);
    readElfField(in, sh_addralign);
    readElfField(in, sh_entsize);
}

ElfSectionHeader::~ElfSectionHeader() = default;

std::string ElfSectionHeader::getName(const ElfStrings* strings) const
{
    const char* name = strings ? strings->getEntry(sh_name) : nullptr;
    return name ? std::string(name) : std::string();
}

void ElfSectionHeader::write(std::ostream& out) const
{
    writeElfField(out, sh_name);
    writeElfField(out, sh_type);
    writeElfField(out, sh_flags);
    writeElfField(out, sh_addr);
    writeElfField(out, sh_offset);
    writeElfField(out, sh_size);
    writeElfField(out, sh_link);
    writeElfField(out, sh_info);
    writeElfField(out, sh_addralign);
    writeElfField(out, sh_entsize);
}

void ElfSectionHeader::display(const ElfStrings* strings, FILE* out) const
{
    fprintf(out, "Section name: %s\n", getName(strings).c_str());
    fprintf(out, "Elf32_Shdr.sh_name = %08x\n", sh_name);
    fprintf(out, "Elf32_Shdr.sh_type = %08x\n", sh_type);
    fprintf(out, "Elf32_Shdr.sh_flags = %08x\n", sh_flags);
    fprintf(out, "Elf32_Shdr.sh_addr = %08x\n", sh_addr);
    fprintf(out, "Elf32_Shdr.sh_offset = %08x\n", sh_offset);
    fprintf(out, "Elf32_Shdr.sh_size = %08x\n", sh_size);
    fprintf(out, "Elf32_Shdr.sh_link = %08x\n", sh_link);
    fprintf(out, "Elf32_Shdr.sh_info = %08x\n", sh_info);
    fprintf(out, "Elf32_Shdr.sh_addralign = %08x\n", sh_addralign);
    fprintf(out, "Elf32_Shdr.sh_entsize = %08x\n", sh_entsize);
}

} // namespace vorp
