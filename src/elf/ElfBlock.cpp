#include "elf/ElfBlock.h"

#include "elf/ElfProgramHeader.h"
#include "elf/ElfSectionHeader.h"

#include <cassert>
#include <cstring>
#include <new>

namespace vorp {

ElfBlock::ElfBlock(unsigned size, unsigned char* data)
    : m_size(size)
    , m_data(data)
{
    // Even an empty block owns an allocation; catch a missing one here rather than at release.
    assert(m_data != __null);
}

ElfBlock::~ElfBlock()
{
    assert(m_data != __null);
    delete[] m_data;
}

bool ElfBlock::findSection(const ElfSectionHeader* header, unsigned& offset) const
{
    for (const SectionEntry& entry : m_sections) {
        if (entry.second == header) {
            offset = entry.first;
            return true;
        }
    }
    return false;
}

void ElfBlock::setProgramHeader(ElfProgramHeader* phdr)
{
    assert(m_phdr == __null);
    m_phdr = phdr;
}

void ElfBlock::addSectionHeader(unsigned offsetInBlock, ElfSectionHeader* header)
{
    m_sections.emplace_back(offsetInBlock, header);
}

void ElfBlock::updateOffsets(unsigned offset)
{
    m_offset = offset;
    if (m_phdr)
        m_phdr->p_offset = offset;
    for (const SectionEntry& entry : m_sections)
        entry.second->sh_offset = offset + entry.first;
}

bool ElfBlock::extendData(unsigned bytes)
{
    unsigned char* data = new (std::nothrow) unsigned char[m_size + bytes];
    if (!data)
        return false;
    std::memcpy(data, m_data, m_size);
    delete[] m_data;
    m_data = data;
    m_size += bytes;
    return true;
}

void ElfBlock::replaceData(unsigned size, unsigned char* data)
{
    assert(data != __null);
    delete[] m_data;
    m_data = data;
    m_size = size;
}

void ElfBlock::display(FILE* out) const
{
    fprintf(out, "Block of data at 0x%08x, size %u bytes\n", m_offset, m_size);
    if (m_phdr)
        fprintf(out, "Program segment %d\n", static_cast<int>(m_phdr->getNum()));
    else
        fprintf(out, "Not a program segment");
    const ElfSectionHeader* first = nullptr;
    for (const SectionEntry& entry : m_sections) {
        if (entry.first == 0) {
            first = entry.second;
            break;
        }
    }
    if (first)
        fprintf(out, "Section %d\n", static_cast<int>(first->getNum()));
    else
        fprintf(out, "Not a section");
    // Sixteen bytes to a line, headed by the line's file offset, in groups of four.
    for (unsigned i = 0; i < m_size; ++i) {
        if (i % 16 == 0)
            fprintf(out, "\n0x%08x:", m_offset + i);
        if (i % 4 == 0)
            fprintf(out, " ");
        fprintf(out, "%02x", m_data[i]);
    }
    fprintf(out, "\n");
}

} // namespace vorp
