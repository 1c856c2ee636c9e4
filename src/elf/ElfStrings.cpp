#include "elf/ElfStrings.h"

#include "diag/ErrorHandler.h"
#include "elf/ElfSectionHeader.h"
#include "elf/ElfString.h"

#include <cassert>
#include <cstdlib>
#include <new>

namespace vorp {

ElfStrings::ElfStrings(ErrorHandler* errorHandler)
    : m_errorHandler(errorHandler)
{
    add("");
}

ElfStrings::ElfStrings(ErrorHandler* errorHandler, std::istream& in, const ElfSectionHeader* header)
    : m_errorHandler(errorHandler)
{
    const unsigned size = header->sh_size;
    // One spare byte, so that an unterminated table can still be walked.
    m_buffer = new (std::nothrow) unsigned char[static_cast<std::size_t>(size) + 1];
    if (!m_buffer) {
        m_errorHandler->fatalError(true, "ERROR: Failed to allocate memory for reading strings\n");
        add("");
        return;
    }
    in.read(reinterpret_cast<char*>(m_buffer), size);
    m_numBytes = size;
    m_bufferSize = size + 1;
    if (size == 0 || m_buffer[size - 1] != 0) {
        m_errorHandler->fatalError(true, "ERROR: Strings not correctly terminated\n");
        m_buffer[size] = 0;
        m_numBytes = size + 1;
    }
    for (unsigned offset = 0; offset < m_numBytes;) {
        const char* name = reinterpret_cast<const char*>(m_buffer + offset);
        auto str = std::make_unique<ElfString>(name, offset);
        if (!str->getName()) {
            m_errorHandler->fatalError(true, "ERROR: Failed to allocate memory for reading strings\n");
            return;
        }
        m_stringMap.emplace(str->getName(), str.get());
        offset += static_cast<unsigned>(std::strlen(name)) + 1;
        m_stringOrder.push_back(std::move(str));
    }
}

ElfStrings::~ElfStrings()
{
    delete[] m_buffer;
}

ElfString* ElfStrings::add(const char* name)
{
    auto found = m_stringMap.find(name);
    if (found != m_stringMap.end())
        return found->second;

    auto str = std::unique_ptr<ElfString>(new (std::nothrow) ElfString(name, m_numBytes));
    if (!str || !str->getName()) {
        m_errorHandler->fatalError(true, "ERROR: Failed to allocate memory for string constant '%s'\n", name);
        return nullptr;
    }
    ElfString* result = str.get();
    m_stringMap.emplace(result->getName(), result);
    m_stringOrder.push_back(std::move(str));
    const unsigned length = static_cast<unsigned>(std::strlen(name)) + 1;
    m_numBytes += length;
    if (m_numBytes <= m_bufferSize)
        std::memcpy(m_buffer + result->getOffset(), name, length);
    else
        createBuffer(false);
    return result;
}

ElfString* ElfStrings::find(const char* name) const
{
    auto found = m_stringMap.find(name);
    return found == m_stringMap.end() ? nullptr : found->second;
}

std::string ElfStrings::getString(unsigned offset) const
{
    const char* entry = getEntry(offset);
    return entry ? std::string(entry) : std::string();
}

const char* ElfStrings::getEntry(unsigned offset) const
{
    if (offset >= m_numBytes || !m_buffer)
        return nullptr;
    return reinterpret_cast<const char*>(m_buffer + offset);
}

void ElfStrings::fillBuffer(unsigned char* buffer) const
{
    for (const auto& str : m_stringOrder)
        std::memcpy(buffer + str->getOffset(), str->getName(), std::strlen(str->getName()) + 1);
}

unsigned char* ElfStrings::createBuffer(bool forFile)
{
    const unsigned size = forFile ? m_numBytes : 2 * m_numBytes;
    unsigned char* buffer = new (std::nothrow) unsigned char[size];
    if (!buffer) {
        m_errorHandler->fatalError(true, "ERROR: Failed to allocate memory\n");
        return nullptr;
    }
    fillBuffer(buffer);
    if (forFile)
        return buffer;
    delete[] m_buffer;
    m_buffer = buffer;
    m_bufferSize = size;
    return m_buffer;
}

void ElfStrings::display(FILE* out) const
{
    fprintf(out, "\nStrings:");
    for (const auto& entry : m_stringOrder) {
        const char* str = entry->getName();
        assert(str != __null);
        fprintf(out, "%08x %s\n", entry->getOffset(), str);
    }
}

} // namespace vorp
