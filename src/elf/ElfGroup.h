#pragma once

#include "elf/ElfTypes.h"

#include <istream>
#include <vector>

namespace vorp {

class ElfHandler;
class ElfSectionHeader;
class ElfSymbol;
class ErrorHandler;

// A ".group" section read from a file: a flags word, then the numbers of the member sections. The
// signature symbol is sh_info in the file's one symbol table (sh_link is not consulted).
class ElfGroup {
public:
    // Reads sh_size bytes at the stream's position.
    ElfGroup(ErrorHandler* errorHandler, std::istream& in, const ElfSectionHeader* header);
    ElfGroup(const ElfGroup&) = delete;
    ElfGroup& operator=(const ElfGroup&) = delete;
    virtual ~ElfGroup();

    // Resolves the flags word, the signature symbol and the member sections.
    void postProcess(ElfHandler* elfHandler);

    unsigned getNumSections() const { return m_numSections; }
    Elf32_Word getSignature() const { return m_signature; }
    Elf32_Word getWord(unsigned index) const { return index < m_numWords ? m_data[index] : 0; }
    // Null if the signature's number lies past the end of the symbol table.
    ElfSymbol* getSignatureSymbol() const { return m_signatureSymbol; }
    // One entry per member word; null where the word names no section of the file.
    const std::vector<ElfSectionHeader*>& getSections() const { return m_sections; }
    bool isComdat() const { return m_comdat; }

private:
    Elf32_Word* m_data = nullptr;
    unsigned m_numWords = 0;
    unsigned m_numSections = 0;
    Elf32_Word m_signature;
    ElfSymbol* m_signatureSymbol = nullptr;
    std::vector<ElfSectionHeader*> m_sections;
    bool m_comdat = false;
};

} // namespace vorp
