#pragma once

#include "elf/ElfBlock.h"
#include "elf/ElfHandler.h"
#include "elf/ElfSectionHeader.h"

#include <cstdint>

namespace vorp {

// A section's bytes, or null when it has none in the file (nobits, or not loaded).
inline const unsigned char* sectionBytes(const ElfHandler& elf, const ElfSectionHeader* header)
{
    if (header->sh_type == ElfHandler::SHT_NOBITS)
        return nullptr;
    unsigned offset = 0;
    const ElfBlock* block = elf.findBlock(header, offset);
    if (!block || !block->getData() || std::uint64_t(offset) + header->sh_size > block->getSize())
        return nullptr;
    return block->getData() + offset;
}

} // namespace vorp
