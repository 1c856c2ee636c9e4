#pragma once

#include "elf/ElfTypes.h"

#include <string>

namespace vorp {

class ElfHandler;
class ElfSectionHeader;

// Renders a loaded object as text, in a fixed order: the header, the section headers, the raw
// contents of code and data sections, then the decoded tables (symbols, relocations, linker
// expressions, notes, groups). The text is the golden form of the end-to-end tests, so it depends
// on nothing but the file's contents: no file offsets, no widths taken from the data, no locale.
class ObjectDumper {
public:
    explicit ObjectDumper(const ElfHandler& elf);
    ObjectDumper(const ObjectDumper&) = delete;
    ObjectDumper& operator=(const ObjectDumper&) = delete;

    std::string dump() const;

    // Shared by the renderers; public so that they can be tested on their own.
    static std::string quoted(const std::string& text);
    // A name as it is when it needs no quoting, else quoted().
    static std::string nameText(const std::string& name);
    static std::string sectionTypeName(Elf32_Word type);
    static std::string sectionFlagLetters(Elf32_Word flags);

private:
    void dumpHeader(std::string& out) const;
    void dumpSections(std::string& out) const;
    void dumpContents(std::string& out) const;
    void dumpSymbols(std::string& out) const;
    void dumpRelocations(std::string& out) const;
    void dumpExpressions(std::string& out) const;
    void dumpNotes(std::string& out) const;
    void dumpGroups(std::string& out) const;

    unsigned numSections() const;
    std::string sectionName(unsigned sectionNo) const;
    // The section's bytes, or null when it has none in the file (nobits, or not loaded).
    const unsigned char* sectionBytes(const ElfSectionHeader* header) const;
    std::string symbolName(Elf32_Word symbolNo) const;
    std::string symbolSection(Elf32_Half sectionIndex) const;
    std::string stringAt(Elf32_Word offset) const;

    const ElfHandler& m_elf;
};

} // namespace vorp
