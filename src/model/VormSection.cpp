#include "model/VormSection.h"

#include "model/VormLine.h"

#include <iostream>

namespace vorp {

VormSection::VormSection(std::string name, std::uint32_t flags, std::uint32_t type, std::uint32_t entrySize,
                         std::string group, bool comdat)
    : m_name(std::move(name)), m_flags(flags), m_type(type), m_entrySize(entrySize), m_group(std::move(group)),
      m_comdat(comdat)
{
}

void VormSection::setSize(std::uint32_t size)
{
    if (size > MAX_ADDRESS) {
        const LineLocation location = m_lines.empty() ? LineLocation(nullptr, 0) : m_lines.back()->getLocation();
        addressRangeExceeded(location.getFile(), location.getLine());
    }
    m_size = size;
}

VormSection::~VormSection()
{
    for (VormLine* line : m_lines)
        delete line;
}

LinePosition VormSection::getFirstNonZeroSizedLine()
{
    for (auto position = m_lines.begin(); position != m_lines.end(); ++position) {
        std::uint32_t minBytes = 0;
        std::uint32_t maxBytes = 0;
        (*position)->getByteRange(minBytes, maxBytes);
        if (maxBytes != 0)
            return position;
    }
    return m_lines.end();
}

void VormSection::dump(std::ostream& out) const
{
    out << ".section " << m_name << '\n';
    for (const VormLine* line : m_lines) {
        line->dump(out);
        out << '\n';
    }
}

void VormSection::dump() const
{
    dump(std::cerr);
}

} // namespace vorp
