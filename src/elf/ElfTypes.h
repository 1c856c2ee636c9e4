#pragma once

#include <cstdint>
#include <istream>
#include <ostream>

namespace vorp {

// The ELF32 records as they stand in a file. Only the little-endian 32-bit form is handled, and
// the host is little-endian too, so every field goes to and from the file as it is in memory.
using Elf32_Half = std::uint16_t;
using Elf32_Word = std::uint32_t;
using Elf32_Sword = std::int32_t;
using Elf32_Addr = std::uint32_t;
using Elf32_Off = std::uint32_t;

constexpr unsigned EI_NIDENT = 16;

struct Elf32_Ehdr {
    unsigned char e_ident[EI_NIDENT];
    Elf32_Half e_type;
    Elf32_Half e_machine;
    Elf32_Word e_version;
    Elf32_Addr e_entry;
    Elf32_Off e_phoff;
    Elf32_Off e_shoff;
    Elf32_Word e_flags;
    Elf32_Half e_ehsize;
    Elf32_Half e_phentsize;
    Elf32_Half e_phnum;
    Elf32_Half e_shentsize;
    Elf32_Half e_shnum;
    Elf32_Half e_shstrndx;
};

struct Elf32_Phdr {
    Elf32_Word p_type;
    Elf32_Off p_offset;
    Elf32_Addr p_vaddr;
    Elf32_Addr p_paddr;
    Elf32_Word p_filesz;
    Elf32_Word p_memsz;
    Elf32_Word p_flags;
    Elf32_Word p_align;
};

struct Elf32_Shdr {
    Elf32_Word sh_name;
    Elf32_Word sh_type;
    Elf32_Word sh_flags;
    Elf32_Addr sh_addr;
    Elf32_Off sh_offset;
    Elf32_Word sh_size;
    Elf32_Word sh_link;
    Elf32_Word sh_info;
    Elf32_Word sh_addralign;
    Elf32_Word sh_entsize;
};

struct Elf32_Sym {
    Elf32_Word st_name;
    Elf32_Addr st_value;
    Elf32_Word st_size;
    unsigned char st_info;
    unsigned char st_other;
    Elf32_Half st_shndx;
};

// Sizes of the records in the file; the structures above may carry padding, the file never does.
constexpr unsigned ELF32_EHDR_BYTES = 52;
constexpr unsigned ELF32_PHDR_BYTES = 32;
constexpr unsigned ELF32_SHDR_BYTES = 40;
constexpr unsigned ELF32_SYM_BYTES = 16;
constexpr unsigned ELF32_RELA_BYTES = 12;
constexpr unsigned ELF32_REL_BYTES = 8;

// Field-by-field transfer, so that no structure padding ever reaches the file.
template <typename T>
inline void writeElfField(std::ostream& out, const T& field)
{
    out.write(reinterpret_cast<const char*>(&field), sizeof(T));
}

template <typename T>
inline void readElfField(std::istream& in, T& field)
{
    in.read(reinterpret_cast<char*>(&field), sizeof(T));
}

} // namespace vorp
