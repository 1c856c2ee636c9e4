#include "elf/ElfSymbol.h"

#include "elf/ElfStrings.h"

#include <cstring>

namespace vorp {

ElfSymbol::ElfSymbol(Elf32_Word nameOffset, Elf32_Addr value, Elf32_Half section, unsigned char binding,
                     unsigned char type, Elf32_Word size)
    : Elf32_Sym()
{
    st_name = nameOffset;
    st_value = value;
    st_size = size;
    st_info = static_cast<unsigned char>((type & 0xF) + (binding << 4));
    st_other = 0;
    st_shndx = section;
}

ElfSymbol::ElfSymbol(const unsigned char* record)
    : Elf32_Sym()
{
    std::memcpy(&st_name, record + 0, 4);
    std::memcpy(&st_value, record + 4, 4);
    std::memcpy(&st_size, record + 8, 4);
    st_info = record[12];
    st_other = record[13];
    std::memcpy(&st_shndx, record + 14, 2);
}

ElfSymbol::~ElfSymbol() = default;

void ElfSymbol::encode(unsigned char* out) const
{
    std::memcpy(out + 0, &st_name, 4);
    std::memcpy(out + 4, &st_value, 4);
    std::memcpy(out + 8, &st_size, 4);
    out[12] = st_info;
    out[13] = st_other;
    std::memcpy(out + 14, &st_shndx, 2);
}

void ElfSymbol::display(const ElfStrings* strings, FILE* out) const
{
    const char* name = strings ? strings->getEntry(st_name) : nullptr;
    fprintf(out, "name: %s, ", name ? name : "");
    fprintf(out, "st_name = %08x, ", st_name);
    fprintf(out, "st_value = %08x, ", st_value);
    fprintf(out, "st_size = %08x, ", st_size);
    fprintf(out, "st_info = %02x, ", st_info);
    fprintf(out, "st_other = %02x, ", st_other);
    fprintf(out, "st_shndx = %08x\n", st_shndx);
}

} // namespace vorp
