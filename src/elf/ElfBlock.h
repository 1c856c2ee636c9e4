#pragma once

#include <cstdio>
#include <utility>
#include <vector>

namespace vorp {

class ElfProgramHeader;
class ElfSectionHeader;

// One run of bytes in the file: the contents of a segment, of a section, or of a segment with the
// sections that lie in it. Blocks follow one another in the file without any padding.
class ElfBlock {
public:
    using SectionEntry = std::pair<unsigned, ElfSectionHeader*>;

    // Takes ownership of `data`, an array of `size` bytes (also for size 0).
    ElfBlock(unsigned size, unsigned char* data);
    ElfBlock(const ElfBlock&) = delete;
    ElfBlock& operator=(const ElfBlock&) = delete;
    virtual ~ElfBlock();

    unsigned getSize() const { return m_size; }
    unsigned getOffset() const { return m_offset; }
    unsigned char* getData() const { return m_data; }
    ElfProgramHeader* getProgramHeader() const { return m_phdr; }
    const std::vector<SectionEntry>& getSectionHeaders() const { return m_sections; }
    // The offset of the section in this block, or false if it doesn't lie here.
    bool findSection(const ElfSectionHeader* header, unsigned& offset) const;

    // A block holds at most one segment, given once.
    void setProgramHeader(ElfProgramHeader* phdr);
    void addSectionHeader(unsigned offsetInBlock, ElfSectionHeader* header);
    // Gives the block a file offset and passes it on to its segment and sections.
    void updateOffsets(unsigned offset);
    // Grows the block by `bytes`; the new bytes are left as they come. False if there is no memory.
    bool extendData(unsigned bytes);
    // Swaps in new contents, for instance a symbol table encoded afresh. Takes ownership of `data`.
    void replaceData(unsigned size, unsigned char* data);

    void display(FILE* out = stdout) const;

private:
    unsigned m_size;
    unsigned m_offset = 0;
    unsigned char* m_data;
    ElfProgramHeader* m_phdr = nullptr;
    std::vector<SectionEntry> m_sections;
};

} // namespace vorp
