#include "elf/ElfString.h"

#include <cstring>
#include <new>

namespace vorp {

ElfString::ElfString(const char* name, unsigned offset)
    : m_name(new (std::nothrow) char[std::strlen(name) + 1])
    , m_offset(offset)
{
    if (m_name)
        std::strcpy(m_name, name);
}

ElfString::~ElfString()
{
    delete[] m_name;
}

} // namespace vorp
