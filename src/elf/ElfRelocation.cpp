#include "elf/ElfRelocation.h"

#include <cstring>

namespace vorp {

ElfRelocation::ElfRelocation(Elf32_Addr offset, unsigned char type, Elf32_Word symbol, Elf32_Sword addend)
    : r_offset(offset)
    , r_info((symbol << 8) | type)
    , r_addend(addend)
{
}

ElfRelocation::ElfRelocation(bool hasAddend, const unsigned char* entry)
    : r_offset(0)
    , r_info(0)
    , r_addend(0)
{
    std::memcpy(&r_offset, entry, 4);
    std::memcpy(&r_info, entry + 4, 4);
    if (hasAddend)
        std::memcpy(&r_addend, entry + 8, 4);
}

ElfRelocation::~ElfRelocation() = default;

void ElfRelocation::encode(bool writeAddend, unsigned char* out) const
{
    std::memcpy(out, &r_offset, 4);
    std::memcpy(out + 4, &r_info, 4);
    if (writeAddend)
        std::memcpy(out + 8, &r_addend, 4);
}

void ElfRelocation::display(FILE* out) const
{
    fprintf(out, "Offset: %08x\n", r_offset);
    fprintf(out, "Type: %08x\n", static_cast<unsigned>(getType()));
    fprintf(out, "Symbol: %08x\n", getSymbol());
    fprintf(out, "Addend: %08x\n", static_cast<unsigned>(r_addend));
}

} // namespace vorp
