#pragma once

#include "elf/ElfTypes.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vorp {

class ElfHandler;

// Applies the data relocations of an object to a copy of its bytes, as a linker would for an image
// in which every section starts at address 0: symbols are their section offsets and labels that the
// linker computes take the value of their arithmetic ".expr" record. The result lets standard DWARF
// readers decode the debug sections of an object that hasn't been linked. Relocations of
// instruction fields, and records with other operations, are left alone.
class RelocationResolver {
public:
    RelocationResolver(const ElfHandler& elf, std::vector<unsigned char> fileBytes);

    // Patches the bytes; returns how many relocations were left unapplied.
    unsigned resolve();
    const std::vector<unsigned char>& getBytes() const { return m_bytes; }

private:
    struct Record {
        Elf32_Word kind;
        Elf32_Word ops[3];
    };

    // The value of a symbol, through its record when it has one; false when it can't be known.
    bool symbolValue(Elf32_Word symbol, std::int64_t& value, unsigned depth) const;
    bool recordValue(const Record& record, std::int64_t& value, unsigned depth) const;
    void readRecords();

    const ElfHandler& m_elf;
    std::vector<unsigned char> m_bytes;
    std::map<Elf32_Word, Record> m_records; // by the symbol they define
};

} // namespace vorp
