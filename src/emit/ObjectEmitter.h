#pragma once

#include <cstdint>
#include <vector>

namespace vorp {

class ElfHandler;
class NoteMemo;
class ObjectWriter;
class VormAssembler;
class VormLabel;
class VormSection;

// Writes the assembled model as one relocatable ELF object: sections and their bytes, symbols for
// every label that isn't merely mentioned, relocation tables, ".expr", notes and groups.
class ObjectEmitter {
public:
    ObjectEmitter(VormAssembler& assembler, const std::vector<NoteMemo>& notes) : m_assembler(assembler), m_notes(notes)
    {
    }

    // `sourceName` names the file symbol when no .file did; null for none. The object's bytes go
    // to `writer`, or without one into `object`. False, with the reason reported, when the model
    // can't be written as an ELF file or the writer refuses the bytes.
    bool dumpBinary(const char* sourceName, std::vector<std::uint8_t>& object, ObjectWriter* writer = nullptr);

private:
    // An empty section is left out unless a label stands in it.
    bool addSectionToElfFile(const VormSection* section) const;
    void addLabelSymbol(ElfHandler& elf, VormLabel* label, unsigned sectionNumber);

    VormAssembler& m_assembler;
    const std::vector<NoteMemo>& m_notes;
};

} // namespace vorp
