#pragma once

#include "elf/ElfTypes.h"

namespace vorp {

// The objects are little-endian whatever the host is: words are read byte by byte.
inline Elf32_Word littleWord(const unsigned char* at)
{
    return Elf32_Word(at[0]) | Elf32_Word(at[1]) << 8 | Elf32_Word(at[2]) << 16 | Elf32_Word(at[3]) << 24;
}

} // namespace vorp
