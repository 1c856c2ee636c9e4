#include "model/VormSection.h"

#include "encoding/VormCodeLine.h"
#include "model/VormBasicBlock.h"
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

void VormSection::getBlocks(std::vector<VormBasicBlock>& blocks)
{
    LinePosition start = m_lines.begin();
    LinePosition end = m_lines.begin();
    auto close = [&] {
        if (start != end)
            blocks.emplace_back(this, start, end);
        start = end;
    };
    for (auto position = m_lines.begin(); position != m_lines.end();) {
        VormLine* line = *position++;
        bool closes = false;
        if (line->getType() == CODE_LINE) {
            const auto* code = static_cast<const VormCodeLine*>(line);
            end = position;
            closes = (code->isBranch() && !code->isLink()) || !code->isDone();
        } else {
            std::uint32_t minBytes = 0;
            std::uint32_t maxBytes = 0;
            line->getByteRange(minBytes, maxBytes);
            closes = maxBytes != 0 || line->isTargetLine();
        }
        if (closes)
            close();
    }
    close();
    if (start != m_lines.end())
        blocks.emplace_back(this, end, m_lines.end());
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
