#include "model/VormBasicBlock.h"

#include "model/VormLine.h"

namespace vorp {

VormBasicBlock VormBasicBlock::split(LinePosition position)
{
    VormBasicBlock head(m_section, m_begin, position);
    m_begin = position;
    return head;
}

void VormBasicBlock::erase(LinePosition first, LinePosition last)
{
    const bool atBegin = first == m_begin;
    const LinePosition after = m_section->getLines().erase(first, last);
    if (atBegin)
        m_begin = after;
}

void VormBasicBlock::erase(LinePosition position)
{
    erase(position, std::next(position));
}

void VormBasicBlock::insert(LinePosition position, VormLine* line)
{
    line->setSection(m_section);
    const LinePosition inserted = m_section->getLines().insert(position, line);
    if (position == m_begin)
        m_begin = inserted;
}

void VormBasicBlock::dump() const
{
    for (auto position = m_begin; position != m_end; ++position)
        (*position)->dump();
}

} // namespace vorp
