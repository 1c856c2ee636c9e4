#include "elf/ElfGroup.h"

#include "diag/ErrorHandler.h"
#include "elf/ElfHandler.h"
#include "elf/ElfSectionHeader.h"
#include "elf/ElfSymbolTable.h"

#include <cstring>
#include <new>

namespace vorp {

ElfGroup::ElfGroup(ErrorHandler* errorHandler, std::istream& in, const ElfSectionHeader* header)
    : m_signature(header->sh_info)
{
    const unsigned words = header->sh_size / 4;
    m_data = new (std::nothrow) Elf32_Word[words == 0 ? 1 : words];
    if (!m_data) {
        errorHandler->fatalError(true, "ERROR: Failed to allocate memory for data section\n");
        return;
    }
    std::memset(m_data, 0, 4 * (words == 0 ? 1 : words));
    in.read(reinterpret_cast<char*>(m_data), 4 * words);
    m_numWords = words;
    m_numSections = words == 0 ? 0 : words - 1;
}

ElfGroup::~ElfGroup()
{
    delete[] m_data;
}

void ElfGroup::postProcess(ElfHandler* elfHandler)
{
    m_comdat = (getWord(0) & 1) != 0;
    m_signatureSymbol = elfHandler->getSymbolTable() ? elfHandler->getSymbolTable()->getSymbol(m_signature) : nullptr;
    m_sections.clear();
    // A word past the last section stays visible as a null entry rather than being dropped.
    for (unsigned i = 1; i < m_numWords; ++i)
        m_sections.push_back(elfHandler->getSectionHeader(m_data[i]));
}

} // namespace vorp
